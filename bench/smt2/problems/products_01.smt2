; family: products
; expected: unsat
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(declare-fun z () Real)
(assert (>= x 1.25))
(assert (<= x 1.75))
(assert (<= 1.75 y 3.0))
(assert (and (>= z 0.75) (<= z 2.5)))
(assert (= (* (+ x y 1.0) (+ y z 3.0) (+ z x 0.0)) 415.4375))
(check-sat)
(exit)
