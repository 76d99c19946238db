; family: diophantine
; expected: sat
(set-logic QF_NIA)
(declare-fun x () Int)
(declare-fun y () Int)
(declare-fun z () Int)
(assert (and (>= x (- 12)) (<= x 12)))
(assert (<= (- 12) y 12))
(assert (and (>= z (- 12)) (<= z 12)))
(assert (= (+ (* x y) (* y z) (* z x)) 109))
(check-sat)
(exit)
