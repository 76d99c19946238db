; family: squares
; expected: unsat
; squares written expanded
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(declare-fun z () Real)
(assert (>= x (- 2.0)))
(assert (<= x 2.0))
(assert (>= y (- 2.0)))
(assert (<= y 2.0))
(assert (>= z (- 2.0)))
(assert (<= z 2.0))
(assert (= (+ (+ 17.0 (* 4.0 (* y y z z)) (* (- 16.0) (* y z)) (* (- 2.0) z) (* z z)) 1.0) 0.0))
(check-sat)
(exit)
