; family: chains
; expected: sat
(set-logic QF_NRA)
(declare-const x Real)
(declare-fun y () Real)
(declare-const z Real)
(assert (<= 0.5 x 2.0))
(assert (>= y 0.5))
(assert (<= y 2.0))
(assert (<= 0.5 z 2.0))
(assert (<= 0.5 x y z 2.0))
(assert (= (* x y z) 0.125))
(check-sat)
(exit)
