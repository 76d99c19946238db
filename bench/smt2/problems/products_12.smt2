; family: products
; expected: sat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(declare-fun z () Real)
(assert (>= x 1.75))
(assert (<= x 3.25))
(assert (and (>= y 1.5) (<= y 2.0)))
(assert (>= z 0.5))
(assert (<= z 1.5))
(assert (= (* (* (+ x y 3.0) (+ y z 0.0)) (+ z x 1.0)) 140.95))
(check-sat)
(exit)
