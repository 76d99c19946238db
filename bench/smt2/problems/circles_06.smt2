; family: circles
; expected: sat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-fun y () Real)
(assert (and (>= x (- 10.0)) (<= x 10.0)))
(assert (and (>= y (- 10.0)) (<= y 10.0)))
(assert (= (+ (* (- x (- 2.0)) (- x (- 2.0))) (* (- y (- 3.0)) (- y (- 3.0)))) 25.0))
(assert (= (+ (* (- x 3.0) (- x 3.0)) (* (- y 2.0) (- y 2.0))) 16.0))
(check-sat)
(exit)
