; family: squares
; expected: sat
; squares written as products
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(assert (>= x (- 2.0)))
(assert (<= x 2.0))
(assert (and (>= y (- 2.0)) (<= y 2.0)))
(assert (<= (+ (* (+ 3.0 (* 3.0 x) (* (- 2.0) (* y y))) (+ 3.0 (* 3.0 x) (* (- 2.0) (* y y)))) (* (+ (- 2.0) x (* 2.0 (* x y))) (+ (- 2.0) x (* 2.0 (* x y))))) 0.0))
(check-sat)
(exit)
