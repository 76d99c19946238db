; family: chains
; expected: unsat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(declare-const z Real)
(assert (< 1.0 x y z 1.75))
(assert (= (* x y z) 5.360375))
(check-sat)
(exit)
