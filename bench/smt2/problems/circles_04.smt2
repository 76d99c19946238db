; family: circles
; expected: sat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(assert (>= x (- 10.0)))
(assert (<= x 10.0))
(assert (<= (- 10.0) y 10.0))
(assert (= y (+ (* x x) (- 1.0))))
(assert (= (+ (* x x) (* (- y (- 1.0)) (- y (- 1.0)))) 9.0))
(check-sat)
(exit)
