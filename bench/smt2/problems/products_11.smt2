; family: products
; expected: unsat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(declare-const z Real)
(assert (>= x 1.25))
(assert (<= x 2.5))
(assert (>= y 1.75))
(assert (<= y 3.5))
(assert (<= 2.0 z 3.75))
(assert (= (* (+ x y 3.0) (+ y z 1.0) (+ z x 0.0)) 92.6157375))
(check-sat)
(exit)
