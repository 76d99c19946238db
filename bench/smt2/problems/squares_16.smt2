; family: squares
; expected: sat
; squares written expanded
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(assert (>= x (- 2.0)))
(assert (<= x 2.0))
(assert (and (>= y (- 2.0)) (<= y 2.0)))
(assert (<= (+ 926.0 (* (- 370.0) (* x x)) (* 37.0 (* x x x x)) (* 34.0 (* x x x y)) (* 6.0 (* x x y)) (* 10.0 (* x x y y)) (* (- 170.0) (* x y)) (* (- 6.0) (* x y y)) (* (- 30.0) y) (* 7.0 (* y y)) (* y y y y)) 0.0))
(check-sat)
(exit)
