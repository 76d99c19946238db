; The parabola y = x^2 + 4 meets the circle of radius 3 about (0, 3) where y^2 - 5y - 4 = 0:
; y = (5 + sqrt 41)/2 and x^2 = y - 4, at two points mirrored in the y axis. The first search's
; box at the default width holds no point the certifier can settle; the finer searches that
; follow find a solution (either one: the values asked for are the same for both). With a width
; set by the script there is one search only, and its box stays unknown.
(set-logic QF_NRA)
(declare-fun x () Real)
(declare-const y Real)
(assert (<= (- 10.0) x 10.0))
(assert (and (>= y (- 10.0)) (<= y 10.0)))
(assert (= y (+ (* x x) 4.0)))
(assert (= (+ (* x x) (* (- y 3.0) (- y 3.0))) 9.0))
(check-sat)
(get-value ((* x x) y))
(set-option :precision 0.1)
(check-sat)
