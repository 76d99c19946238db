; family: pigeons
; expected: unsat
; 5 pigeons, 4 holes, distinct by product
(set-logic QF_NIA)
(declare-const h0 Int)
(declare-const h1 Int)
(declare-const h2 Int)
(declare-fun h3 () Int)
(declare-fun h4 () Int)
(assert (and (>= h0 1) (<= h0 4)))
(assert (<= 1 h1 4))
(assert (>= h2 1))
(assert (<= h2 4))
(assert (and (>= h3 1) (<= h3 4)))
(assert (<= 1 h4 4))
(assert (not (= (* (- h0 h1) (- h0 h2) (- h0 h3) (- h0 h4) (- h1 h2) (- h1 h3) (- h1 h4) (- h2 h3) (- h2 h4) (- h3 h4)) 0)))
(check-sat)
(exit)
