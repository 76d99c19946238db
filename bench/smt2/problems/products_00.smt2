; family: products
; expected: sat
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(declare-fun z () Real)
(assert (and (>= x 2.0) (<= x 3.0)))
(assert (>= y 0.5))
(assert (<= y 1.0))
(assert (>= z 2.0))
(assert (<= z 3.75))
(assert (= (* (* (+ x y 1.0) (+ y z 0.0)) (+ z x 0.0)) 35.0))
(check-sat)
(exit)
