; family: squares
; expected: sat
; squares written as products
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(assert (>= x (- 3.0)))
(assert (<= x 3.0))
(assert (<= (- 3.0) y 3.0))
(assert (= (+ (* (+ (- 0.75) (* (- 1.0) y) (* y y)) (+ (- 0.75) (* (- 1.0) y) (* y y))) (* (+ 0.5 y) (+ 0.5 y))) 0.0))
(check-sat)
(exit)
