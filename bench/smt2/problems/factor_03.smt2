; family: factor
; expected: unsat
(set-logic QF_NIA)
(declare-fun a () Int)
(declare-fun b () Int)
(declare-const c Int)
(assert (<= 4 a 38))
(assert (and (>= b 4) (<= b 38)))
(assert (<= 4 c 38))
(assert (= (* a b c) 1589))
(assert (<= a b c))
(check-sat)
(exit)
