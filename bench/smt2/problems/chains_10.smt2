; family: chains
; expected: sat
(set-logic QF_NIA)
(declare-const x Int)
(declare-const y Int)
(declare-const z Int)
(assert (and (>= x 3) (<= x 29)))
(assert (and (>= y 3) (<= y 29)))
(assert (<= 3 z 29))
(assert (< x y z))
(assert (= (+ (* x x) (* y y)) (* z z)))
(check-sat)
(exit)
