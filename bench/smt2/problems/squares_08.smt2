; family: squares
; expected: sat
; squares written as products
(set-logic QF_NRA)
(declare-const x Real)
(declare-const y Real)
(assert (<= (- 5.0) x 5.0))
(assert (<= (- 5.0) y 5.0))
(assert (<= (+ (* (+ (- 7.5) (* 3.0 y)) (+ (- 7.5) (* 3.0 y))) (* (+ (- 0.5) x (* 2.0 y)) (+ (- 0.5) x (* 2.0 y))) (* (+ (- 7.5) (* 3.0 y)) (+ (- 7.5) (* 3.0 y)))) 626.375))
(check-sat)
(exit)
