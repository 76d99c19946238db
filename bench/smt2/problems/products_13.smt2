; family: products
; expected: unsat
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(declare-const z Real)
(assert (and (>= x 1.5) (<= x 2.0)))
(assert (and (>= y 1.0) (<= y 2.75)))
(assert (<= 0.75 z 2.0))
(assert (= (* (* (+ x y 2.0) (+ y z 3.0)) (+ z x 0.0)) 48.088940625))
(check-sat)
(exit)
