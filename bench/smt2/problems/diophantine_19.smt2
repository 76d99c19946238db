; family: diophantine
; expected: unsat
(set-logic QF_NIA)
(declare-const x Int)
(declare-const y Int)
(assert (<= (- 8) x 8))
(assert (and (>= y (- 8)) (<= y 8)))
(assert (= (- (* x x) (* 5 y y)) 235))
(check-sat)
(exit)
