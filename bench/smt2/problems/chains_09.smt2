; family: chains
; expected: unsat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-fun y () Real)
(declare-const z Real)
(assert (and (>= x 0.75) (<= x 1.5)))
(assert (and (>= y 0.75) (<= y 1.5)))
(assert (and (>= z 0.75) (<= z 1.5)))
(assert (distinct x y z))
(assert (= (* x y z) 3.375))
(check-sat)
(exit)
