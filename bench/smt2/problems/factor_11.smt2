; family: factor
; expected: unsat
(set-logic QF_NIA)
(declare-fun a () Int)
(declare-fun b () Int)
(declare-const c Int)
(assert (>= a 4))
(assert (<= a 35))
(assert (<= 4 b 35))
(assert (and (>= c 4) (<= c 35)))
(assert (= (* a b c) 2216))
(check-sat)
(exit)
