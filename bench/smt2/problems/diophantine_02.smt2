; family: diophantine
; expected: sat
(set-logic QF_NIA)
(declare-fun x () Int)
(declare-const y Int)
(declare-fun z () Int)
(assert (and (>= x (- 9)) (<= x 9)))
(assert (<= (- 9) y 9))
(assert (and (>= z (- 9)) (<= z 9)))
(assert (= (+ (* x y) (* y z) (* z x)) (- 24)))
(check-sat)
(exit)
