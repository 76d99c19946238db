; family: circles
; expected: unsat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-fun y () Real)
(assert (<= (- 10.0) x 10.0))
(assert (<= (- 10.0) y 10.0))
(assert (= y (+ (* x x) (- 6.0))))
(assert (= (+ (* x x) (* (- y 2.0) (- y 2.0))) 1.0))
(check-sat)
(exit)
