; family: pigeons
; expected: sat
; 5 pigeons, 5 holes, distinct by product
(set-logic QF_NIA)
(declare-const h0 Int)
(declare-fun h1 () Int)
(declare-const h2 Int)
(declare-const h3 Int)
(declare-const h4 Int)
(assert (>= h0 1))
(assert (<= h0 5))
(assert (and (>= h1 1) (<= h1 5)))
(assert (>= h2 1))
(assert (<= h2 5))
(assert (<= 1 h3 5))
(assert (<= 1 h4 5))
(assert (not (= (* (- h0 h1) (- h0 h2) (- h0 h3) (- h0 h4) (- h1 h2) (- h1 h3) (- h1 h4) (- h2 h3) (- h2 h4) (- h3 h4)) 0)))
(check-sat)
(exit)
