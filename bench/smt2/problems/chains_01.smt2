; family: chains
; expected: unsat
(set-logic QF_NRA)
(declare-const x Real)
(declare-const y Real)
(declare-const z Real)
(assert (<= 0.0 x y z 2.25))
(assert (= (* x y z) 11.391625))
(check-sat)
(exit)
