; family: chains
; expected: unsat
(set-logic QF_NIA)
(declare-fun a () Int)
(declare-const b Int)
(declare-const c Int)
(declare-fun d () Int)
(assert (>= a 1))
(assert (<= a 10))
(assert (<= 1 a b c d 10))
(assert (distinct a b c d))
(assert (= (* a b c d) 2350))
(check-sat)
(exit)
