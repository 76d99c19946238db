; A script in the manner of the standard's examples: information, a quoted symbol, a defined
; function, a named assertion, let with a binding that hides a constant, values of terms, and
; the assertion stack.
(set-info :smt-lib-version 2.6)
(set-info :source |Written for Krait's tests;
it spans two lines and holds a ; that is no comment.|)
(set-info :status sat)
(set-option :produce-models true)
(set-logic QF_NIRA)
(declare-fun a () Bool)
(declare-const |p q| Int) ; a quoted symbol
(declare-const r Real)
(define-fun within ((v Real) (lo Real) (hi Real)) Bool (and (<= lo v) (<= v hi)))
(assert (<= 0 |p q| 5))
(assert (<= (- 1) r 1))
(assert (! (=> a (> |p q| 3)) :named big))
(assert (let ((s (+ |p q| 1)) (a (not a))) (and a (= (* r s) 1))))
(assert (= (* |p q| |p q|) 16))
(check-sat)
(get-value (a |p q| r (within r 0 1)))
(get-info :error-behavior)
(push 2)
(assert (xor a (< r 0)))
(check-sat)
(pop 2)
(echo "a ; inside a string")
(reset-assertions)
(check-sat)
(exit)
