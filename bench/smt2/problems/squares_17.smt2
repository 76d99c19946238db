; family: squares
; expected: unsat
; squares written expanded
(set-logic QF_NRA)
(declare-const x Real)
(declare-const y Real)
(assert (and (>= x (- 5.0)) (<= x 5.0)))
(assert (>= y (- 5.0)))
(assert (<= y 5.0))
(assert (<= (+ 981.0 (* 60.0 y) (* (- 197.0) (* y y)) (* (- 6.0) (* y y y)) (* 10.0 (* y y y y))) (- 0.001)))
(check-sat)
(exit)
