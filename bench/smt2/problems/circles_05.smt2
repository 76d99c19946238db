; family: circles
; expected: unsat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(assert (>= x (- 10.0)))
(assert (<= x 10.0))
(assert (and (>= y (- 10.0)) (<= y 10.0)))
(assert (= y (+ (* x x) (- 3.0))))
(assert (= (+ (* x x) (* (- y 3.0) (- y 3.0))) 4.0))
(check-sat)
(exit)
