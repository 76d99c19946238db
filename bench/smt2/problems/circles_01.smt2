; family: circles
; expected: unsat
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(assert (>= x (- 10.0)))
(assert (<= x 10.0))
(assert (<= (- 10.0) y 10.0))
(assert (= (+ (* (- x (- 1.0)) (- x (- 1.0))) (* (- y 4.0) (- y 4.0))) 9.0))
(assert (= (+ (* (- x (- 2.0)) (- x (- 2.0))) (* (- y (- 3.0)) (- y (- 3.0)))) 4.0))
(check-sat)
(exit)
