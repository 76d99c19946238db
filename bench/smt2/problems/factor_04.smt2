; family: factor
; expected: sat
(set-logic QF_NIA)
(declare-const a Int)
(declare-fun b () Int)
(assert (<= 6 a 39))
(assert (>= b 6))
(assert (<= b 39))
(assert (= (* a b) 551))
(assert (<= a b))
(check-sat)
(exit)
