; family: products
; expected: unsat
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(declare-fun z () Real)
(assert (>= x 2.0))
(assert (<= x 2.25))
(assert (>= y 2.0))
(assert (<= y 2.75))
(assert (and (>= z 1.25) (<= z 2.0)))
(assert (= (* (* (+ x y 0.0) (+ y z 0.0)) (+ z x 1.0)) 54.6975))
(check-sat)
(exit)
