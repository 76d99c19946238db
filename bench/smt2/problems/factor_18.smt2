; family: factor
; expected: sat
(set-logic QF_NIA)
(declare-const a Int)
(declare-const b Int)
(declare-const c Int)
(assert (and (>= a 5) (<= a 52)))
(assert (<= 5 b 52))
(assert (and (>= c 5) (<= c 52)))
(assert (= (* a b c) 945))
(assert (<= a b c))
(check-sat)
(exit)
