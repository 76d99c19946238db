; family: diophantine
; expected: unsat
(set-logic QF_NIA)
(declare-const x Int)
(declare-const y Int)
(assert (<= (- 20) x 20))
(assert (and (>= y (- 20)) (<= y 20)))
(assert (= (- (* x x) (* 7 y y)) 127))
(check-sat)
(exit)
