(declare-const x Real)(assert (and (<= 0 x 2) (= (* x x) 2)))(check-sat)(get-model)
