; family: factor
; expected: sat
(set-logic QF_NIA)
(declare-const a Int)
(declare-fun b () Int)
(assert (and (>= a 4) (<= a 50)))
(assert (>= b 4))
(assert (<= b 50))
(assert (= (* a b) 1326))
(assert (<= a b))
(check-sat)
(exit)
