"""What a case means, evaluated over boxes with exact rationals and outward-rounded enclosures.

A box maps variable instances (name, step) to closed intervals of Fractions; a point is a box of
zero width. Sums, products and powers are exact; exp, cos and nrt are enclosed with mpmath and
widened. Relations are three-valued: True or False only where the answer is certain.

Krait folds and moves constants in double arithmetic before it solves, so a relation that holds
or fails by a few rounding errors is not decided either way in robust mode: there it counts as
decided only with a margin of TAU relative to the largest magnitude met in the relation. A
relation over integers alone with integral constants is exact and gets no margin.
"""
from fractions import Fraction

import mpmath
from mpmath import iv

from lang import value

TAU = Fraction(1, 2**36)
PREC = 120
HUGE = Fraction(2) ** 4000     # beyond this nothing is decided: enclosures would grow without end
ZERO = ('num', '0')
SLACK_FACTOR = 4              # subterms per input node that Krait may create, at most (a guess)
SIN_SHIFT = Fraction(-1.5707963267948966)   # sin x is solved as cos(x + this double)
mpmath.mp.prec = PREC
iv.prec = PREC


class Unbounded(Exception):
    """An enclosure too large to be worth computing; the relation it feeds stays undecided."""


def to_fraction(x):
    man, exp = x.man_exp
    return Fraction(man) * Fraction(2) ** exp if man else Fraction(0)


def end(x, upper):
    """An endpoint of an mpmath interval as a Fraction."""
    sign, man, exp, _ = x._mpi_[1 if upper else 0]
    if not man:
        if exp:
            raise Unbounded   # an infinite end
        return Fraction(0)
    return (-1) ** sign * Fraction(man) * Fraction(2) ** exp


def iv_of(lo, hi):
    a = iv.mpf(lo.numerator) / lo.denominator
    b = iv.mpf(hi.numerator) / hi.denominator
    return iv.mpf([a.a, b.b])


def root(x, n, upward):
    """An n-th root of x (x >= 0, or odd n) on the requested side, checked exactly."""
    if x < 0:
        return -root(-x, n, not upward)
    if x == 0:
        return Fraction(0)
    r = to_fraction(mpmath.root(mpmath.mpf(x.numerator) / x.denominator, n))
    step = Fraction(1, 2**(PREC - 8))
    while (r ** n < x) if upward else (r ** n > x):
        r = r * (1 + step) if upward else r * (1 - step)
    return r


def nrt(a, n, loose):
    """Krait's nrt for even n stands for any value whose n-th power is the radicand: both signs
    (loose). Its folded constants and our witnesses use the non-negative root (not loose)."""
    lo, hi = a
    if n % 2:
        return root(lo, n, False), root(hi, n, True)
    if hi < 0:
        return None
    r = root(max(lo, Fraction(0)), n, False), root(hi, n, True)
    return (-r[1], r[1]) if loose else r


def power(a, n):
    lo, hi = a
    if n == 0:
        return Fraction(1), Fraction(1)
    if n % 2 or lo >= 0:
        return lo ** n, hi ** n
    if hi <= 0:
        return hi ** n, lo ** n
    return Fraction(0), max(lo ** n, hi ** n)


def exp(a):
    lo, hi = a
    if hi > 5000:
        raise Unbounded
    lo, hi = max(lo, Fraction(-5000)), max(hi, Fraction(-5000))
    e = iv.exp(iv_of(lo, hi))
    return end(e, False), end(e, True)


def cos(a):
    lo, hi = a
    if hi - lo > 7 or max(abs(lo), abs(hi)) > 10**6:
        return Fraction(-1), Fraction(1)
    c = iv.cos(iv_of(lo, hi))
    lo, hi = end(c, False), end(c, True)
    return max(lo, Fraction(-1)), min(hi, Fraction(1))


def product(a, b):
    ps = [x * y for x in a for y in b]
    return min(ps), max(ps)


class Evaluator:
    """Evaluates one case's trees over a box. `loose` gives even roots both signs."""

    def __init__(self, case, box, loose=False, robust=True, slack=0):
        self.case, self.box, self.loose, self.robust, self.slack = case, box, loose, robust, slack
        self.declared = {v.name: v for v in case.vars}

    def instance(self, name, primed, step):
        v = self.declared[name]
        key = (name, 0 if v.static else step + int(primed))
        if key in self.box:
            return self.box[key]
        lo, hi = v.bounds()
        return Fraction(lo), Fraction(hi)

    def arith(self, t, step):
        """Enclosure of a term, or None when it has no value (even root of a negative)."""
        op = t[0]
        if op == 'var':
            return self.instance(t[1], t[2], step)
        if op == 'num':
            v = self.case_value(t[1])
            return v, v
        if op == '^' and t[2] == 0 or op == '*' and ZERO in t[1:]:
            # Krait folds these to a constant before it looks at the other operand, so an even
            # root of a negative radicand in there never has to exist.
            return (Fraction(1),) * 2 if op == '^' else (Fraction(0),) * 2
        args = [self.arith(c, step) if isinstance(c, tuple) else c for c in t[1:]]
        if any(a is None for a in args):
            return None
        a = args[0]
        if op == 'neg':
            r = -a[1], -a[0]
        elif op == '+':
            r = a[0] + args[1][0], a[1] + args[1][1]
        elif op == '-':
            r = a[0] - args[1][1], a[1] - args[1][0]
        elif op == '*':
            r = product(a, args[1])
        elif op == '^':
            r = power(a, args[1])
        elif op == 'nrt':
            r = nrt(a, args[1], self.loose)
        elif op == 'exp':
            r = exp(a)
        elif op == 'cos':
            r = cos(a)
        elif op == 'sin':
            r = cos((a[0] + SIN_SHIFT, a[1] + SIN_SHIFT))
        elif op == 'abs':
            r = (Fraction(0) if a[0] <= 0 <= a[1] else min(abs(a[0]), abs(a[1])), max(abs(a[0]), abs(a[1])))
        elif op == 'min':
            r = min(a[0], args[1][0]), min(a[1], args[1][1])
        elif op == 'max':
            r = max(a[0], args[1][0]), max(a[1], args[1][1])
        else:
            raise ValueError(op)
        if r is not None:
            r = r[0] - self.slack, r[1] + self.slack
            self.magnitude = max(self.magnitude, abs(r[0]), abs(r[1]))
            if self.magnitude > HUGE:
                raise Unbounded
        return r

    def case_value(self, text):
        return value(self.case, text)

    def relation(self, op, lhs, rhs, step):
        """True, False or None (undecided)."""
        self.magnitude = Fraction(1)
        try:
            a, b = self.arith(lhs, step), self.arith(rhs, step)
        except Unbounded:
            return None
        if a is None or b is None:
            return False
        m = self.margin((op, lhs, rhs))
        lo, hi = a[0] - b[1], a[1] - b[0]     # lhs - rhs
        if op in ('>', '>='):
            op, lo, hi = {'>': '<', '>=': '<='}[op], -hi, -lo
        if op == '<=':
            return True if hi <= -m else False if lo > m else None
        if op == '<':
            return True if hi < -m else False if (lo > m if m else lo >= 0) else None
        equal = True if lo == hi == 0 and m == 0 else False if lo > m or hi < -m else None
        return equal if op == '=' else None if equal is None else not equal

    def margin(self, atom):
        if not self.robust or exact_atom(self.case, atom):
            return 0
        return TAU * self.magnitude

    def truth(self, f, step):
        op = f[0]
        if op == 'true':
            return True
        if op == 'false':
            return False
        if op == 'lit':
            return self.relation('>=', ('var', f[1], f[2]), ('num', '1'), step)
        if op == 'rel':
            return self.relation(f[1], f[2], f[3], step)
        if op == 'not':
            return kleene_not(self.truth(f[2], step))
        return CONNECTIVE[op](self.truth(f[1], step), self.truth(f[2], step))


def kleene_not(a):
    return None if a is None else not a


def kleene_and(a, b):
    if a is False or b is False:
        return False
    return None if a is None or b is None else True


def kleene_or(a, b):
    return kleene_not(kleene_and(kleene_not(a), kleene_not(b)))


def kleene_xor(a, b):
    return None if a is None or b is None else a != b


CONNECTIVE = {
    'and': kleene_and, 'or': kleene_or, 'xor': kleene_xor,
    'impl': lambda a, b: kleene_or(kleene_not(a), b),
    'nxor': lambda a, b: kleene_not(kleene_xor(a, b)),
    'nand': lambda a, b: kleene_not(kleene_and(a, b)),
    'nor': lambda a, b: kleene_not(kleene_or(a, b)),
}
CONNECTIVE['->'] = CONNECTIVE['impl']
CONNECTIVE['<->'] = CONNECTIVE['nxor']


def exact_atom(case, atom):
    """Integer variables and integral constants only: Krait's preprocessing cannot round it."""
    def walk(t):
        if t[0] == 'var':
            return case.var(t[1]).is_int
        if t[0] == 'num':
            v = value(case, t[1])
            return v.denominator == 1 and abs(v) < 2**50
        if t[0] in ('nrt', 'exp', 'cos', 'sin'):
            return False
        return all(walk(c) for c in t[1:] if isinstance(c, tuple))
    return all(walk(t) for t in atom[1:])


def unwind(case, k):
    """The conjuncts that depth k asks for, each with its step: INIT at 0, TRANS at 0..k-1,
    TARGET at k (a plain formula: its conjuncts at 0)."""
    if not case.bmc:
        return [(c, 0) for c in case.expr]
    return ([(c, 0) for c in case.init] + [(c, i) for i in range(k) for c in case.trans] +
            [(c, k) for c in case.target])


def root_domains(conjuncts):
    """Krait asserts the radicand of every even root non-negative on its own, wherever the root
    occurs: (radicand >= 0, step) for each such root."""
    out = []

    def walk(t, step):
        if t[0] == 'nrt' and t[2] % 2 == 0:
            out.append((('rel', '>=', t[1], ('num', '0')), step))
        for c in t[1:]:
            if isinstance(c, tuple):
                walk(c, step)
    for f, step in conjuncts:
        walk(f, step)
    return out


def holds(case, k, box, loose=False, robust=True, with_domains=True):
    """Three-valued truth of depth k's formula over the box (None: undecided)."""
    ev = Evaluator(case, box, loose, robust)
    conjuncts = unwind(case, k)
    if with_domains:
        conjuncts = conjuncts + root_domains(conjuncts)
    result = True
    for f, step in conjuncts:
        result = kleene_and(result, ev.truth(f, step))
        if result is False:
            return False
    return result


def false_conjunct(case, k, box, robust=True):
    """The first conjunct of depth k that is false at every point of the box, or None. Even roots
    take both signs and the radicand conditions are left out, so only a sure failure counts.

    Krait drops a derived bound that improves on the current one by no more than min_bound_delta
    (an absolute distance), so the range of every subterm may stay that much too wide. In robust
    mode each subterm is widened by a few times that slack before anything is called false."""
    slack = SLACK_FACTOR * bound_delta(case) if robust else 0
    ev = Evaluator(case, box, loose=True, robust=robust, slack=slack)
    for f, step in unwind(case, k):
        if ev.truth(f, step) is False:
            return f, step
    return None


def bound_delta(case):
    opts = case.options
    return Fraction(float(opts[opts.index('--mbd') + 1])) if '--mbd' in opts else Fraction(1, 100)


def instances(case, k):
    """Every (name, step) that depth k's formula mentions."""
    seen = set()

    def walk(t, step):
        if t[0] in ('var', 'lit'):
            v = case.var(t[1])
            seen.add((t[1], 0 if v.static else step + int(t[2])))
        for c in t[1:]:
            if isinstance(c, tuple):
                walk(c, step)
    for f, step in unwind(case, k):
        walk(f, step)
    return sorted(seen)
