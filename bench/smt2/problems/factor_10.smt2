; family: factor
; expected: sat
(set-logic QF_NIA)
(declare-const a Int)
(declare-const b Int)
(assert (<= 5 a 30))
(assert (and (>= b 5) (<= b 30)))
(assert (= (* a b) 147))
(assert (<= a b))
(check-sat)
(exit)
