; family: squares
; expected: sat
; squares written as products
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(declare-const z Real)
(assert (>= x (- 3.0)))
(assert (<= x 3.0))
(assert (and (>= y (- 3.0)) (<= y 3.0)))
(assert (and (>= z (- 3.0)) (<= z 3.0)))
(assert (<= (+ (* (+ 1.0 (* 2.0 x) y) (+ 1.0 (* 2.0 x) y)) (* (+ (* 3.0 x) (* (- 2.0) (* x x)) (* (- 2.0) (* x z))) (+ (* 3.0 x) (* (- 2.0) (* x x)) (* (- 2.0) (* x z)))) (* (+ (- 2.0) (* 3.0 (* x z)) (* (- 2.0) y)) (+ (- 2.0) (* 3.0 (* x z)) (* (- 2.0) y)))) 2745.0))
(check-sat)
(exit)
