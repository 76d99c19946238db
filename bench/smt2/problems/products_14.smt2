; family: products
; expected: sat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(declare-fun z () Real)
(assert (and (>= x 2.0) (<= x 2.75)))
(assert (>= y 0.5))
(assert (<= y 0.75))
(assert (and (>= z 0.5) (<= z 2.5)))
(assert (= (* (+ x y 0.0) (+ y z 3.0) (+ z x 3.0)) 180.46875))
(check-sat)
(exit)
