; family: diophantine
; expected: sat
(set-logic QF_NIA)
(declare-const x Int)
(declare-const y Int)
(declare-const z Int)
(assert (>= x (- 11)))
(assert (<= x 11))
(assert (and (>= y (- 11)) (<= y 11)))
(assert (and (>= z (- 11)) (<= z 11)))
(assert (= (+ (* x x) (* y y) (* z z)) 132))
(check-sat)
(exit)
