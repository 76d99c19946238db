; family: diophantine
; expected: unsat
(set-logic QF_NIA)
(declare-fun x () Int)
(declare-fun y () Int)
(declare-const z Int)
(assert (<= (- 9) x 9))
(assert (>= y (- 9)))
(assert (<= y 9))
(assert (<= (- 9) z 9))
(assert (= (+ (* x y) (* y z) (* z x)) 201))
(check-sat)
(exit)
