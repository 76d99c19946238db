; family: squares
; expected: sat
; squares written expanded
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-fun y () Real)
(declare-fun z () Real)
(assert (>= x (- 5.0)))
(assert (<= x 5.0))
(assert (and (>= y (- 5.0)) (<= y 5.0)))
(assert (>= z (- 5.0)))
(assert (<= z 5.0))
(assert (<= (+ 459.25 (* (- 134.0) x) (* 10.0 (* x x)) (* (- 12.0) (* x x y)) (* 4.0 (* x x y y)) (* 84.0 (* x y)) (* (- 4.0) (* x y y z)) (* 6.0 (* x y z)) (* 3.0 y) (* y y) (* y y z z) (* (- 42.0) (* y z))) 2482.85))
(check-sat)
(exit)
