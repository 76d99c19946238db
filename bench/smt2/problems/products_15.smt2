; family: products
; expected: unsat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(declare-const z Real)
(assert (>= x 1.5))
(assert (<= x 3.5))
(assert (>= y 0.5))
(assert (<= y 2.5))
(assert (<= 1.5 z 3.0))
(assert (= (* (+ x y 0.0) (+ y z 1.0) (+ z x 1.0)) 292.500001))
(check-sat)
(exit)
