; family: products
; expected: unsat
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(declare-const z Real)
(assert (and (>= x 1.5) (<= x 3.25)))
(assert (<= 0.5 y 1.5))
(assert (and (>= z 1.5) (<= z 3.25)))
(assert (= (* (+ x y 3.0) (+ y z 0.0) (+ z x 0.0)) 29.999999))
(check-sat)
(exit)
