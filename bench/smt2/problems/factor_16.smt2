; family: factor
; expected: sat
(set-logic QF_NIA)
(declare-fun a () Int)
(declare-const b Int)
(declare-fun c () Int)
(assert (and (>= a 4) (<= a 24)))
(assert (<= 4 b 24))
(assert (and (>= c 4) (<= c 24)))
(assert (= (* a b c) 2448))
(assert (<= a b c))
(check-sat)
(exit)
