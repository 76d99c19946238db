; family: squares
; expected: unsat
; squares written as products
(set-logic QF_NRA)
(declare-const x Real)
(declare-const y Real)
(declare-const z Real)
(assert (>= x (- 3.0)))
(assert (<= x 3.0))
(assert (and (>= y (- 3.0)) (<= y 3.0)))
(assert (and (>= z (- 3.0)) (<= z 3.0)))
(assert (= (+ (+ (* (* 3.0 (* x y)) (* 3.0 (* x y))) (* (* (- 1.0) (* y z)) (* (- 1.0) (* y z)))) 0.1) 0.0))
(check-sat)
(exit)
