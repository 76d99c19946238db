; family: products
; expected: unsat
(set-logic QF_NRA)
(declare-const x Real)
(declare-const y Real)
(declare-const z Real)
(assert (>= x 2.0))
(assert (<= x 2.5))
(assert (>= y 1.0))
(assert (<= y 1.5))
(assert (<= 0.5 z 1.0))
(assert (= (* (+ x y 3.0) (+ y z 3.0) (+ z x 0.0)) 67.499999))
(check-sat)
(exit)
