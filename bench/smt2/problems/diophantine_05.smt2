; family: diophantine
; expected: unsat
(set-logic QF_NIA)
(declare-fun x () Int)
(declare-fun y () Int)
(assert (and (>= x (- 22)) (<= x 22)))
(assert (>= y (- 22)))
(assert (<= y 22))
(assert (= (- (* x x) (* 3 y y)) 201))
(check-sat)
(exit)
