; family: squares
; expected: unsat
; squares written expanded
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(declare-const z Real)
(assert (and (>= x (- 3.0)) (<= x 3.0)))
(assert (and (>= y (- 3.0)) (<= y 3.0)))
(assert (and (>= z (- 3.0)) (<= z 3.0)))
(assert (<= (+ 303.5 (* 16.0 (* x x y y)) (* 136.0 (* x y)) (* 8.0 (* x y z)) (* 2.0 (* y y z z)) (* (- 10.0) (* y z)) (* 4.0 (* y z z z)) (* 34.0 z) (* (- 13.0) (* z z)) (* 4.0 (* z z z z))) (- 0.1)))
(check-sat)
(exit)
