; family: circles
; expected: unsat
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(assert (<= (- 10.0) x 10.0))
(assert (and (>= y (- 10.0)) (<= y 10.0)))
(assert (= (+ (* (- x 1.0) (- x 1.0)) (* (- y 3.0) (- y 3.0))) 4.0))
(assert (= (+ (* (- x 2.0) (- x 2.0)) (* (- y (- 1.0)) (- y (- 1.0)))) 4.0))
(check-sat)
(exit)
