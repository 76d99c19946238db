; family: chains
; expected: unsat
(set-logic QF_NIA)
(declare-fun x () Int)
(declare-const y Int)
(declare-fun z () Int)
(assert (<= 5 x 8))
(assert (<= 5 y 8))
(assert (>= z 5))
(assert (<= z 8))
(assert (< x y z))
(assert (= (+ (* x x) (* y y)) (* z z)))
(check-sat)
(exit)
