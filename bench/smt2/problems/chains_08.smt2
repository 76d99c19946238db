; family: chains
; expected: sat
(set-logic QF_NIA)
(declare-fun a () Int)
(declare-const b Int)
(declare-const c Int)
(declare-fun d () Int)
(assert (>= a 2))
(assert (<= a 8))
(assert (<= 2 a b c d 8))
(assert (distinct a b c d))
(assert (= (* a b c d) 120))
(check-sat)
(exit)
