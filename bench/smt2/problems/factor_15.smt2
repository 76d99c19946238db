; family: factor
; expected: unsat
(set-logic QF_NIA)
(declare-const a Int)
(declare-fun b () Int)
(assert (and (>= a 2) (<= a 44)))
(assert (>= b 2))
(assert (<= b 44))
(assert (= (* a b) 1944))
(assert (<= a b))
(check-sat)
(exit)
