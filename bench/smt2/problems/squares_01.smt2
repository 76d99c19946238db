; family: squares
; expected: unsat
; squares written as products
(set-logic QF_NRA)
(declare-const x Real)
(declare-const y Real)
(declare-fun z () Real)
(assert (>= x (- 2.0)))
(assert (<= x 2.0))
(assert (and (>= y (- 2.0)) (<= y 2.0)))
(assert (>= z (- 2.0)))
(assert (<= z 2.0))
(assert (= (+ (+ (* (+ (- 2.0) (* (- 2.0) x)) (+ (- 2.0) (* (- 2.0) x))) (* (+ (- 2.0) (* (- 2.0) (* x y))) (+ (- 2.0) (* (- 2.0) (* x y)))) (* (+ (- 2.0) (* (- 1.0) (* x x)) (* (- 2.0) z)) (+ (- 2.0) (* (- 1.0) (* x x)) (* (- 2.0) z)))) 1.0) 0.0))
(check-sat)
(exit)
