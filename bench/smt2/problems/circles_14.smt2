; family: circles
; expected: sat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(assert (>= x (- 10.0)))
(assert (<= x 10.0))
(assert (>= y (- 10.0)))
(assert (<= y 10.0))
(assert (= y (+ (* x x) 0.0)))
(assert (= (+ (* x x) (* (- y (- 3.0)) (- y (- 3.0)))) 9.0))
(check-sat)
(exit)
