; family: chains
; expected: sat
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-fun y () Real)
(declare-const z Real)
(assert (< 0.5 x y z 2.5))
(assert (= (* x y z) 6.325))
(check-sat)
(exit)
