; family: factor
; expected: unsat
(set-logic QF_NIA)
(declare-const a Int)
(declare-const b Int)
(assert (<= 3 a 29))
(assert (<= 3 b 29))
(assert (= (* a b) 683))
(assert (<= a b))
(check-sat)
(exit)
