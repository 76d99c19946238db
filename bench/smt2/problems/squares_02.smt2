; family: squares
; expected: sat
; squares written expanded
(set-logic QF_NRA)
(declare-const x Real)
(declare-const y Real)
(assert (<= (- 2.0) x 2.0))
(assert (and (>= y (- 2.0)) (<= y 2.0)))
(assert (<= (+ 1.5 (* (- 1.0) x) (* (- 1.0) (* x x)) (* 4.0 (* x x x x)) (* 4.0 (* x x y y)) (* (- 4.0) (* x y))) 0.0))
(check-sat)
(exit)
