; family: factor
; expected: unsat
(set-logic QF_NIA)
(declare-const a Int)
(declare-const b Int)
(assert (<= 5 a 29))
(assert (and (>= b 5) (<= b 29)))
(assert (= (* a b) 1820))
(check-sat)
(exit)
