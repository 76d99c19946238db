; family: chains
; expected: sat
(set-logic QF_NRA)
(declare-const x Real)
(declare-const y Real)
(declare-fun z () Real)
(assert (>= x 0.75))
(assert (<= x 3.0))
(assert (and (>= y 0.75) (<= y 3.0)))
(assert (and (>= z 0.75) (<= z 3.0)))
(assert (distinct x y z))
(assert (= (* x y z) 16.36875))
(check-sat)
(exit)
