; family: products
; expected: sat
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(declare-const z Real)
(assert (and (>= x 2.0) (<= x 4.0)))
(assert (<= 2.0 y 3.0))
(assert (>= z 0.75))
(assert (<= z 1.0))
(assert (= (* (* (+ x y 2.0) (+ y z 1.0)) (+ z x 0.0)) 208.6875))
(check-sat)
(exit)
