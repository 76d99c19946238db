; family: factor
; expected: unsat
(set-logic QF_NIA)
(declare-const a Int)
(declare-fun b () Int)
(assert (<= 5 a 44))
(assert (>= b 5))
(assert (<= b 44))
(assert (= (* a b) 1603))
(check-sat)
(exit)
