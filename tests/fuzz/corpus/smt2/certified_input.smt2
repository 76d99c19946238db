; An identity the certifier's enclosures cannot settle at a point, and a transcendental
; equation it proves to have a solution.
(set-logic QF_NRAT)
(declare-const x Real)
(assert (and (<= 0 x 1) (= (+ (* (sin x) (sin x)) (* (cos x) (cos x))) 1)))
(check-sat)
(get-info :reason-unknown)
(reset-assertions)
(declare-const y Real)
(assert (<= 0 y 1))
(assert (= (cos y) y))
(check-sat)
(get-model)
(get-value ((cos y)))
