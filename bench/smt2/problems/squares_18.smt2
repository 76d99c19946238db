; family: squares
; expected: sat
; squares written expanded
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-fun y () Real)
(assert (>= x (- 5.0)))
(assert (<= x 5.0))
(assert (>= y (- 5.0)))
(assert (<= y 5.0))
(assert (= (+ 148.0 (* 4.0 y) (* (- 71.0) (* y y)) (* 9.0 (* y y y y))) 3616.2))
(check-sat)
(exit)
