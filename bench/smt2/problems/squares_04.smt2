; family: squares
; expected: sat
; squares written as products
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(assert (and (>= x (- 5.0)) (<= x 5.0)))
(assert (and (>= y (- 5.0)) (<= y 5.0)))
(assert (= (+ (* (+ 1.5 (* (- 1.0) x) (* (- 1.0) (* x y))) (+ 1.5 (* (- 1.0) x) (* (- 1.0) (* x y)))) (* (+ (- 7.5) (* 3.0 (* x y))) (+ (- 7.5) (* 3.0 (* x y))))) 0.0))
(check-sat)
(exit)
