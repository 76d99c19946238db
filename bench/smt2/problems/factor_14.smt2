; family: factor
; expected: sat
(set-logic QF_NIA)
(declare-const a Int)
(declare-fun b () Int)
(declare-fun c () Int)
(assert (<= 6 a 58))
(assert (<= 6 b 58))
(assert (<= 6 c 58))
(assert (= (* a b c) 1001))
(check-sat)
(exit)
