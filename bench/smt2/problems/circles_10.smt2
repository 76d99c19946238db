; family: circles
; expected: sat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(assert (>= x (- 10.0)))
(assert (<= x 10.0))
(assert (>= y (- 10.0)))
(assert (<= y 10.0))
(assert (= (+ (* (- x (- 1.0)) (- x (- 1.0))) (* (- y 1.0) (- y 1.0))) 4.0))
(assert (= (+ (* (- x (- 1.0)) (- x (- 1.0))) (* (- y (- 4.0)) (- y (- 4.0)))) 25.0))
(check-sat)
(exit)
