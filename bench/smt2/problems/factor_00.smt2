; family: factor
; expected: sat
(set-logic QF_NIA)
(declare-fun a () Int)
(declare-fun b () Int)
(assert (and (>= a 3) (<= a 56)))
(assert (and (>= b 3) (<= b 56)))
(assert (= (* a b) 2067))
(assert (<= a b))
(check-sat)
(exit)
