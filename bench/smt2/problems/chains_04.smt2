; family: chains
; expected: sat
(set-logic QF_NIA)
(declare-const a Int)
(declare-const b Int)
(declare-const c Int)
(declare-const d Int)
(assert (and (>= a 2) (<= a 10)))
(assert (<= 2 a b c d 10))
(assert (distinct a b c d))
(assert (= (* a b c d) 252))
(check-sat)
(exit)
