; family: squares
; expected: unsat
; squares written expanded
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(assert (and (>= x (- 2.0)) (<= x 2.0)))
(assert (and (>= y (- 2.0)) (<= y 2.0)))
(assert (= (+ (+ 45.25 (* 40.0 x) (* 16.0 (* x x)) (* 9.0 (* x x y y)) (* 35.0 (* x y)) (* 10.0 y) (* y y)) 1.0) 0.0))
(check-sat)
(exit)
