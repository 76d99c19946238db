; family: products
; expected: sat
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(declare-const z Real)
(assert (>= x 0.5))
(assert (<= x 1.25))
(assert (>= y 1.0))
(assert (<= y 2.5))
(assert (<= 0.5 z 1.5))
(assert (= (* (* (+ x y 1.0) (+ y z 1.0)) (+ z x 0.0)) 6.25))
(check-sat)
(exit)
