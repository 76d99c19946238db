; family: squares
; expected: sat
; squares written as products
(set-logic QF_NRA)
(declare-const x Real)
(declare-const y Real)
(declare-fun z () Real)
(assert (<= (- 5.0) x 5.0))
(assert (and (>= y (- 5.0)) (<= y 5.0)))
(assert (<= (- 5.0) z 5.0))
(assert (= (+ (* (+ 8.5 x (* (- 1.0) (* x z)) (* 2.0 z)) (+ 8.5 x (* (- 1.0) (* x z)) (* 2.0 z))) (* (+ (- 94.5) (* 2.0 (* x z)) (* 3.0 (* y z)) (* (- 1.0) z)) (+ (- 94.5) (* 2.0 (* x z)) (* 3.0 (* y z)) (* (- 1.0) z)))) 41506.0))
(check-sat)
(exit)
