; family: diophantine
; expected: sat
(set-logic QF_NIA)
(declare-fun x () Int)
(declare-const y Int)
(assert (>= x (- 8)))
(assert (<= x 8))
(assert (>= y (- 8)))
(assert (<= y 8))
(assert (= (+ (* 3 x x) (* 5 y y)) 107))
(check-sat)
(exit)
