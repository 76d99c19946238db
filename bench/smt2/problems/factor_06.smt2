; family: factor
; expected: sat
(set-logic QF_NIA)
(declare-fun a () Int)
(declare-fun b () Int)
(assert (<= 5 a 28))
(assert (<= 5 b 28))
(assert (= (* a b) 187))
(check-sat)
(exit)
