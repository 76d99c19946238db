; family: pigeons
; expected: sat
; 3 pigeons, 3 holes, distinct by abs
(set-logic QF_NIA)
(declare-fun h0 () Int)
(declare-fun h1 () Int)
(declare-fun h2 () Int)
(assert (and (>= h0 1) (<= h0 3)))
(assert (>= h1 1))
(assert (<= h1 3))
(assert (and (>= h2 1) (<= h2 3)))
(assert (>= (abs (- h0 h1)) 1))
(assert (>= (abs (- h0 h2)) 1))
(assert (>= (abs (- h1 h2)) 1))
(check-sat)
(exit)
