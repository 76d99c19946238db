; family: pigeons
; expected: sat
; 3 pigeons, 3 holes, distinct by square
(set-logic QF_NIA)
(declare-fun h0 () Int)
(declare-const h1 Int)
(declare-fun h2 () Int)
(assert (>= h0 1))
(assert (<= h0 3))
(assert (>= h1 1))
(assert (<= h1 3))
(assert (<= 1 h2 3))
(assert (> (* (- h0 h1) (- h0 h1)) 0))
(assert (> (* (- h0 h2) (- h0 h2)) 0))
(assert (> (* (- h1 h2) (- h1 h2)) 0))
(check-sat)
(exit)
