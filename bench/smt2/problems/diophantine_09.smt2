; family: diophantine
; expected: unsat
(set-logic QF_NIA)
(declare-fun x () Int)
(declare-const y Int)
(declare-fun z () Int)
(assert (and (>= x (- 5)) (<= x 5)))
(assert (and (>= y (- 5)) (<= y 5)))
(assert (and (>= z (- 5)) (<= z 5)))
(assert (= (+ (* x x) (* y y) (* z z)) (- 5)))
(check-sat)
(exit)
