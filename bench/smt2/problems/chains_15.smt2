; family: chains
; expected: unsat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-fun y () Real)
(declare-const z Real)
(assert (<= 0.5 x 1.5))
(assert (and (>= y 0.5) (<= y 1.5)))
(assert (and (>= z 0.5) (<= z 1.5)))
(assert (<= 0.5 x y z 1.5))
(assert (= (* x y z) 3.376))
(check-sat)
(exit)
