; family: chains
; expected: unsat
(set-logic QF_NIA)
(declare-fun x () Int)
(declare-const y Int)
(declare-fun z () Int)
(assert (and (>= x 13) (<= x 20)))
(assert (and (>= y 13) (<= y 20)))
(assert (>= z 13))
(assert (<= z 20))
(assert (< x y z))
(assert (= (+ (* x x) (* y y)) (* z z)))
(check-sat)
(exit)
