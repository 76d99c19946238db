; family: products
; expected: sat
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(declare-fun z () Real)
(assert (and (>= x 0.75) (<= x 2.75)))
(assert (>= y 0.75))
(assert (<= y 1.5))
(assert (and (>= z 1.75) (<= z 2.5)))
(assert (= (* (+ x y 0.0) (+ y z 3.0) (+ z x 0.0)) 156.1875))
(check-sat)
(exit)
