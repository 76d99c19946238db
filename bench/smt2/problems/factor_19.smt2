; family: factor
; expected: unsat
(set-logic QF_NIA)
(declare-const a Int)
(declare-const b Int)
(declare-fun c () Int)
(assert (>= a 5))
(assert (<= a 20))
(assert (>= b 5))
(assert (<= b 20))
(assert (and (>= c 5) (<= c 20)))
(assert (= (* a b c) 1423))
(check-sat)
(exit)
