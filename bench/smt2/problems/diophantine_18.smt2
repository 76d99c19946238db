; family: diophantine
; expected: sat
(set-logic QF_NIA)
(declare-const x Int)
(declare-const y Int)
(declare-const z Int)
(assert (and (>= x (- 9)) (<= x 9)))
(assert (<= (- 9) y 9))
(assert (<= (- 9) z 9))
(assert (= (+ (* x y) (* y z) (* z x)) (- 3)))
(check-sat)
(exit)
