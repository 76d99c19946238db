; family: squares
; expected: unsat
; squares written as products
(set-logic QF_NRA)
(declare-const x Real)
(declare-const y Real)
(declare-const z Real)
(assert (>= x (- 5.0)))
(assert (<= x 5.0))
(assert (>= y (- 5.0)))
(assert (<= y 5.0))
(assert (<= (- 5.0) z 5.0))
(assert (< (+ (* (+ (- 26.25) (* 3.0 (* y z))) (+ (- 26.25) (* 3.0 (* y z)))) (* (+ (- 2.5) (* (- 1.0) z)) (+ (- 2.5) (* (- 1.0) z))) (* (+ (- 17.5) (* (- 2.0) z) (* 2.0 (* z z))) (+ (- 17.5) (* (- 2.0) z) (* 2.0 (* z z))))) 0.0))
(check-sat)
(exit)
