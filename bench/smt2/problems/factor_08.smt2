; family: factor
; expected: sat
(set-logic QF_NIA)
(declare-fun a () Int)
(declare-fun b () Int)
(assert (>= a 2))
(assert (<= a 25))
(assert (<= 2 b 25))
(assert (= (* a b) 285))
(check-sat)
(exit)
