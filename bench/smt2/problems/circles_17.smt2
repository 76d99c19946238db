; family: circles
; expected: unsat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(assert (<= (- 10.0) x 10.0))
(assert (>= y (- 10.0)))
(assert (<= y 10.0))
(assert (= (+ (* (- x 2.0) (- x 2.0)) (* (- y 1.0) (- y 1.0))) 1.0))
(assert (= (+ (* (- x (- 1.0)) (- x (- 1.0))) (* (- y (- 2.0)) (- y (- 2.0)))) 4.0))
(check-sat)
(exit)
