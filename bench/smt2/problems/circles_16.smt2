; family: circles
; expected: sat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-fun y () Real)
(assert (and (>= x (- 10.0)) (<= x 10.0)))
(assert (<= (- 10.0) y 10.0))
(assert (= (+ (* (- x (- 1.0)) (- x (- 1.0))) (* (- y 3.0) (- y 3.0))) 16.0))
(assert (= (+ (* (- x 4.0) (- x 4.0)) (* (- y (- 1.0)) (- y (- 1.0)))) 9.0))
(check-sat)
(exit)
