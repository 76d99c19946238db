; family: factor
; expected: sat
(set-logic QF_NIA)
(declare-const a Int)
(declare-fun b () Int)
(assert (<= 3 a 58))
(assert (<= 3 b 58))
(assert (= (* a b) 1080))
(assert (<= a b))
(check-sat)
(exit)
