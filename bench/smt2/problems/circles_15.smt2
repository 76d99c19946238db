; family: circles
; expected: unsat
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(assert (<= (- 10.0) x 10.0))
(assert (>= y (- 10.0)))
(assert (<= y 10.0))
(assert (= (+ (* (- x 4.0) (- x 4.0)) (* (- y 4.0) (- y 4.0))) 1.0))
(assert (= (+ (* (- x 2.0) (- x 2.0)) (* (- y 3.0) (- y 3.0))) 16.0))
(check-sat)
(exit)
