; family: squares
; expected: unsat
; squares written as products
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(assert (<= (- 2.0) x 2.0))
(assert (<= (- 2.0) y 2.0))
(assert (= (+ (+ (* (+ (- 5.0) (* 2.0 x) (* 3.0 (* y y))) (+ (- 5.0) (* 2.0 x) (* 3.0 (* y y)))) (* (+ (- 5.0) (* 2.0 (* x y)) y (* 2.0 (* y y))) (+ (- 5.0) (* 2.0 (* x y)) y (* 2.0 (* y y)))) (* (+ (- 2.0) (* 2.0 (* x y))) (+ (- 2.0) (* 2.0 (* x y))))) 1.0) 0.0))
(check-sat)
(exit)
