; family: pigeons
; expected: unsat
; 4 pigeons, 3 holes, distinct by product
(set-logic QF_NIA)
(declare-const h0 Int)
(declare-const h1 Int)
(declare-const h2 Int)
(declare-fun h3 () Int)
(assert (and (>= h0 1) (<= h0 3)))
(assert (<= 1 h1 3))
(assert (and (>= h2 1) (<= h2 3)))
(assert (and (>= h3 1) (<= h3 3)))
(assert (not (= (* (- h0 h1) (- h0 h2) (- h0 h3) (- h1 h2) (- h1 h3) (- h2 h3)) 0)))
(check-sat)
(exit)
