; family: diophantine
; expected: sat
(set-logic QF_NIA)
(declare-const x Int)
(declare-const y Int)
(assert (<= (- 21) x 21))
(assert (>= y (- 21)))
(assert (<= y 21))
(assert (= (+ (* 3 x x) (* 1 y y)) 121))
(check-sat)
(exit)
