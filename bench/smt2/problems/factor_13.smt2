; family: factor
; expected: unsat
(set-logic QF_NIA)
(declare-fun a () Int)
(declare-const b Int)
(assert (<= 4 a 32))
(assert (>= b 4))
(assert (<= b 32))
(assert (= (* a b) 2423))
(assert (<= a b))
(check-sat)
(exit)
