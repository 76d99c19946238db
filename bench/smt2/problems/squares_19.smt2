; family: squares
; expected: unsat
; squares written expanded
(set-logic QF_NRA)
(declare-const x Real)
(declare-const y Real)
(declare-const z Real)
(assert (>= x (- 5.0)))
(assert (<= x 5.0))
(assert (and (>= y (- 5.0)) (<= y 5.0)))
(assert (and (>= z (- 5.0)) (<= z 5.0)))
(assert (= (+ (+ 296.0 (* 13.0 (* y y z z)) (* (- 124.0) (* y z)) (* (- 6.0) (* y z z z)) (* 28.0 (* z z)) (* z z z z)) 0.1) 0.0))
(check-sat)
(exit)
