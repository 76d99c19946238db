; family: diophantine
; expected: unsat
(set-logic QF_NIA)
(declare-const x Int)
(declare-const y Int)
(declare-const z Int)
(assert (<= (- 7) x 7))
(assert (<= (- 7) y 7))
(assert (>= z (- 7)))
(assert (<= z 7))
(assert (= (+ (* x y) (* y z) (* z x)) 167))
(check-sat)
(exit)
