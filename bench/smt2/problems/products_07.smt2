; family: products
; expected: unsat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-fun y () Real)
(declare-const z Real)
(assert (>= x 0.75))
(assert (<= x 2.0))
(assert (and (>= y 1.25) (<= y 2.25)))
(assert (>= z 1.5))
(assert (<= z 2.0))
(assert (= (* (* (+ x y 1.0) (+ y z 1.0)) (+ z x 1.0)) 36.562499))
(check-sat)
(exit)
