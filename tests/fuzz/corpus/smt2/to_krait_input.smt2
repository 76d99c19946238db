; Names the input language would not take, a defined function, a quotient, an arithmetic ite
; and a decimal that no double holds.
(set-logic QF_NIRA)
(declare-const |speed limit| Real)
(declare-const int Int)
(declare-const on Bool)
(define-fun twice ((a Real)) Real (* 2 a))
(assert (<= 0 |speed limit| 130))
(assert (and (<= (- 3) int) (<= int 3)))
(assert (=> on (> (twice |speed limit|) (/ int 3))))
(assert (= (ite on |speed limit| 0.5) (+ int 0.1)))
(check-sat)
(assert false)
