; family: products
; expected: sat
(set-logic QF_NRA)
(declare-const x Real)
(declare-const y Real)
(declare-fun z () Real)
(assert (>= x 1.0))
(assert (<= x 2.25))
(assert (>= y 2.0))
(assert (<= y 3.0))
(assert (<= 1.75 z 3.5))
(assert (= (* (* (+ x y 0.0) (+ y z 3.0)) (+ z x 2.0)) 328.4625))
(check-sat)
(exit)
