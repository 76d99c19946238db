; family: diophantine
; expected: sat
(set-logic QF_NIA)
(declare-fun x () Int)
(declare-fun y () Int)
(declare-fun z () Int)
(assert (<= (- 4) x 4))
(assert (>= y (- 4)))
(assert (<= y 4))
(assert (and (>= z (- 4)) (<= z 4)))
(assert (= (+ (* x x) (* y y) (* z z)) 1))
(check-sat)
(exit)
