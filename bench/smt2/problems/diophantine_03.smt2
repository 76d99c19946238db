; family: diophantine
; expected: unsat
(set-logic QF_NIA)
(declare-const x Int)
(declare-fun y () Int)
(declare-fun z () Int)
(assert (>= x (- 7)))
(assert (<= x 7))
(assert (<= (- 7) y 7))
(assert (>= z (- 7)))
(assert (<= z 7))
(assert (= (+ (* x x) (* y y) (* z z)) 266))
(check-sat)
(exit)
