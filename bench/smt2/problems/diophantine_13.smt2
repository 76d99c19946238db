; family: diophantine
; expected: unsat
(set-logic QF_NIA)
(declare-const x Int)
(declare-fun y () Int)
(assert (and (>= x (- 25)) (<= x 25)))
(assert (and (>= y (- 25)) (<= y 25)))
(assert (= (- (* x x) (* 3 y y)) 236))
(check-sat)
(exit)
