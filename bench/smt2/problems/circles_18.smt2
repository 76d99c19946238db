; family: circles
; expected: sat
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(assert (and (>= x (- 10.0)) (<= x 10.0)))
(assert (and (>= y (- 10.0)) (<= y 10.0)))
(assert (= y (+ (* x x) (- 1.0))))
(assert (= (+ (* x x) (* (- y 2.0) (- y 2.0))) 9.0))
(check-sat)
(exit)
