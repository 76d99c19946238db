; family: circles
; expected: unsat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(assert (>= x (- 10.0)))
(assert (<= x 10.0))
(assert (<= (- 10.0) y 10.0))
(assert (= (+ (* x x) (* (- y 3.0) (- y 3.0))) 1.0))
(assert (= (+ (* (- x 1.0) (- x 1.0)) (* (- y (- 4.0)) (- y (- 4.0)))) 4.0))
(check-sat)
(exit)
