; family: diophantine
; expected: unsat
(set-logic QF_NIA)
(declare-const x Int)
(declare-fun y () Int)
(declare-const z Int)
(assert (<= (- 4) x 4))
(assert (and (>= y (- 4)) (<= y 4)))
(assert (and (>= z (- 4)) (<= z 4)))
(assert (= (+ (* x y) (* y z) (* z x)) 184))
(check-sat)
(exit)
