; family: diophantine
; expected: sat
(set-logic QF_NIA)
(declare-fun x () Int)
(declare-fun y () Int)
(declare-fun z () Int)
(assert (>= x (- 11)))
(assert (<= x 11))
(assert (>= y (- 11)))
(assert (<= y 11))
(assert (and (>= z (- 11)) (<= z 11)))
(assert (= (+ (* x x) (* y y) (* z z)) 93))
(check-sat)
(exit)
