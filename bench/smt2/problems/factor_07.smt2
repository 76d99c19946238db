; family: factor
; expected: unsat
(set-logic QF_NIA)
(declare-fun a () Int)
(declare-fun b () Int)
(declare-fun c () Int)
(assert (<= 6 a 21))
(assert (<= 6 b 21))
(assert (and (>= c 6) (<= c 21)))
(assert (= (* a b c) 1303))
(assert (<= a b c))
(check-sat)
(exit)
