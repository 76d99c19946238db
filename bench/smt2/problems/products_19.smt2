; family: products
; expected: unsat
(set-logic QF_NRA)
(declare-const x Real)
(declare-const y Real)
(declare-fun z () Real)
(assert (<= 1.25 x 3.0))
(assert (and (>= y 1.75) (<= y 3.5)))
(assert (>= z 1.25))
(assert (<= z 3.0))
(assert (= (* (* (+ x y 0.0) (+ y z 0.0)) (+ z x 1.0)) 298.7075))
(check-sat)
(exit)
