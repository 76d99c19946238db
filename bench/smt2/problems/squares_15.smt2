; family: squares
; expected: unsat
; squares written expanded
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-fun y () Real)
(declare-fun z () Real)
(assert (>= x (- 5.0)))
(assert (<= x 5.0))
(assert (<= (- 5.0) y 5.0))
(assert (and (>= z (- 5.0)) (<= z 5.0)))
(assert (< (+ 101.0 (* 2.0 x) (* x x) (* (- 2.0) (* x y)) (* (- 2.0) y) (* y y) (* 40.0 z) (* 4.0 (* z z))) 0.0))
(check-sat)
(exit)
