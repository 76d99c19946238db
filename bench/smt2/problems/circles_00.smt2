; family: circles
; expected: sat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(assert (>= x (- 10.0)))
(assert (<= x 10.0))
(assert (and (>= y (- 10.0)) (<= y 10.0)))
(assert (= y (+ (* x x) (- 1.0))))
(assert (= (+ (* x x) (* (- y 2.0) (- y 2.0))) 16.0))
(check-sat)
(exit)
