; family: diophantine
; expected: unsat
(set-logic QF_NIA)
(declare-fun x () Int)
(declare-fun y () Int)
(declare-const z Int)
(assert (<= (- 5) x 5))
(assert (<= (- 5) y 5))
(assert (<= (- 5) z 5))
(assert (= (+ (* x x) (* y y) (* z z)) 148))
(check-sat)
(exit)
