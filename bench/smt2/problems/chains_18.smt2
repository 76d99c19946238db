; family: chains
; expected: sat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(declare-fun z () Real)
(assert (<= 1.0 x 2.25))
(assert (and (>= y 1.0) (<= y 2.25)))
(assert (<= 1.0 z 2.25))
(assert (< 1.0 x y z 2.25))
(assert (= (* x y z) 5.15625))
(check-sat)
(exit)
