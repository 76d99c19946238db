; family: diophantine
; expected: sat
(set-logic QF_NIA)
(declare-fun x () Int)
(declare-fun y () Int)
(declare-fun z () Int)
(assert (<= (- 6) x 6))
(assert (<= (- 6) y 6))
(assert (<= (- 6) z 6))
(assert (= (+ (* x y) (* y z) (* z x)) 108))
(check-sat)
(exit)
