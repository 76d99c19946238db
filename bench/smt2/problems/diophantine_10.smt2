; family: diophantine
; expected: sat
(set-logic QF_NIA)
(declare-fun x () Int)
(declare-const y Int)
(declare-const z Int)
(assert (and (>= x (- 11)) (<= x 11)))
(assert (>= y (- 11)))
(assert (<= y 11))
(assert (>= z (- 11)))
(assert (<= z 11))
(assert (= (+ (* x y) (* y z) (* z x)) 174))
(check-sat)
(exit)
