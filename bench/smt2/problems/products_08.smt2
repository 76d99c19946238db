; family: products
; expected: sat
(set-logic QF_NRA)
(declare-const x Real)
(declare-const y Real)
(declare-fun z () Real)
(assert (>= x 1.75))
(assert (<= x 3.0))
(assert (and (>= y 1.5) (<= y 2.75)))
(assert (<= 1.25 z 2.75))
(assert (= (* (+ x y 3.0) (+ y z 2.0) (+ z x 1.0)) 410.546875))
(check-sat)
(exit)
