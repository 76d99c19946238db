; family: products
; expected: sat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-fun y () Real)
(declare-fun z () Real)
(assert (and (>= x 1.5) (<= x 1.75)))
(assert (and (>= y 1.0) (<= y 3.0)))
(assert (>= z 1.25))
(assert (<= z 2.5))
(assert (= (* (* (+ x y 1.0) (+ y z 0.0)) (+ z x 2.0)) 85.48125))
(check-sat)
(exit)
