; family: products
; expected: sat
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(declare-const z Real)
(assert (<= 0.75 x 1.0))
(assert (<= 1.25 y 1.75))
(assert (<= 1.0 z 1.5))
(assert (= (* (+ x y 2.0) (+ y z 2.0) (+ z x 3.0)) 108.953125))
(check-sat)
(exit)
