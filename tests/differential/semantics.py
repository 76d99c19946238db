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

from lang import REWRITE, nodes, value

TAU = Fraction(1, 2**36)
PREC = 120
HUGE = Fraction(2) ** 4000     # beyond this nothing is decided: enclosures would grow without end
ZERO = ('num', '0')
SLACK_FACTOR = 4              # subterms per input node that Krait may create, at most (a guess)
SIN_SHIFT = Fraction(-1.5707963267948966)   # sin x is solved as cos(x + this double)
mpmath.mp.prec = iv.prec = PREC


class Unbounded(Exception):
    """An enclosure too large to be worth computing; the relation it feeds stays undecided."""


def enclose(fn, lo, hi):
    """fn over [lo, hi] in mpmath's interval arithmetic, its ends as Fractions."""
    a, b = iv.mpf(lo.numerator) / lo.denominator, iv.mpf(hi.numerator) / hi.denominator
    ends = []
    for sign, man, e, _ in fn(iv.mpf([a.a, b.b]))._mpi_:
        if not man and e:
            raise Unbounded   # an infinite end
        ends.append((-1) ** sign * Fraction(man) * Fraction(2) ** e if man else Fraction(0))
    return tuple(ends)


def root(x, n, upward):
    """An n-th root of x (x >= 0, or odd n) on the requested side, checked exactly."""
    if x <= 0:
        return -root(-x, n, not upward) if x else Fraction(0)
    man, exp = mpmath.root(mpmath.mpf(x.numerator) / x.denominator, n).man_exp
    r, step = Fraction(man) * Fraction(2) ** exp, Fraction(1, 2**(PREC - 8))
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
    return (hi ** n, lo ** n) if hi <= 0 else (Fraction(0), max(lo ** n, hi ** n))


def exp(a):
    if a[1] > 5000:
        raise Unbounded
    return enclose(iv.exp, max(a[0], Fraction(-5000)), max(a[1], Fraction(-5000)))


def cos(a):
    lo, hi = a
    if hi - lo > 7 or max(abs(lo), abs(hi)) > 10**6:
        return Fraction(-1), Fraction(1)
    lo, hi = enclose(iv.cos, lo, hi)
    return max(lo, Fraction(-1)), min(hi, Fraction(1))


OPS = {'neg': lambda a: (-a[1], -a[0]), '+': lambda a, b: (a[0] + b[0], a[1] + b[1]),
       '-': lambda a, b: (a[0] - b[1], a[1] - b[0]), '^': power, 'exp': exp, 'cos': cos,
       '*': lambda a, b: (min(x * y for x in a for y in b), max(x * y for x in a for y in b)),
       'sin': lambda a: cos((a[0] + SIN_SHIFT, a[1] + SIN_SHIFT)),
       'abs': lambda a: (Fraction(0) if a[0] <= 0 <= a[1] else min(map(abs, a)), max(map(abs, a))),
       'min': lambda a, b: (min(a[0], b[0]), min(a[1], b[1])), 'max': lambda a, b: (max(a[0], b[0]), max(a[1], b[1]))}


class Evaluator:
    """Evaluates one case's trees over a box. `loose` gives even roots both signs."""

    def __init__(self, case, box, loose=False, robust=True, slack=0):
        self.case, self.box, self.loose, self.robust, self.slack = case, box, loose, robust, slack
        self.declared = {v.name: v for v in case.vars}

    def arith(self, t, step):
        """Enclosure of a term, or None when it has no value (even root of a negative)."""
        op = t[0]
        if op == 'var':
            v = self.declared[t[1]]
            return self.box.get((t[1], 0 if v.static else step + int(t[2]))) or v.bounds()
        if op == 'num':
            return (value(self.case, t[1]),) * 2
        if op == '^' and t[2] == 0 or op == '*' and ZERO in t[1:]:
            # Krait folds these to a constant before it looks at the other operand, so an even
            # root of a negative radicand in there never has to exist.
            return (Fraction(int(op == '^')),) * 2
        args = [self.arith(c, step) if isinstance(c, tuple) else c for c in t[1:]]
        if None in args:
            return None
        r = nrt(*args, self.loose) if op == 'nrt' else OPS[op](*args)
        if r is not None:
            r = r[0] - self.slack, r[1] + self.slack
            self.magnitude = max(self.magnitude, abs(r[0]), abs(r[1]))
            if self.magnitude > HUGE:
                raise Unbounded
        return r

    def relation(self, op, lhs, rhs, step):
        """True, False or None (undecided)."""
        self.magnitude = Fraction(1)
        try:
            a, b = self.arith(lhs, step), self.arith(rhs, step)
        except Unbounded:
            return None
        if a is None or b is None:
            return False
        m = TAU * self.magnitude if self.robust and not exact_atom(self.case, (op, lhs, rhs)) else 0
        lo, hi = a[0] - b[1], a[1] - b[0]     # lhs - rhs
        if op in ('>', '>='):
            op, lo, hi = {'>': '<', '>=': '<='}[op], -hi, -lo
        if op == '<=':
            return True if hi <= -m else False if lo > m else None
        if op == '<':
            return True if hi < -m else False if (lo > m if m else lo >= 0) else None
        equal = True if lo == hi == 0 and m == 0 else False if lo > m or hi < -m else None
        return equal if op == '=' else k_not(equal)

    def truth(self, f, step):
        op = f[0]
        if op in ('true', 'false'):
            return op == 'true'
        if op == 'lit':
            return self.relation('>=', ('var', f[1], f[2]), ('num', '1'), step)
        if op == 'rel':
            return self.relation(*f[1:], step)
        if op == 'not':
            return k_not(self.truth(f[2], step))
        if op in REWRITE:
            return self.truth(REWRITE[op](*f[1:]), step)
        return KLEENE[op](self.truth(f[1], step), self.truth(f[2], step))


def k_not(a):
    return None if a is None else not a


# Kleene's connectives: a side that is undecided (None) decides nothing.
KLEENE = {'and': lambda a, b: False if False in (a, b) else None if None in (a, b) else True,
          'or': lambda a, b: True if True in (a, b) else None if None in (a, b) else False,
          'xor': lambda a, b: None if None in (a, b) else a != b}


def exact_atom(case, atom):
    """Integer variables and integral constants only: Krait's preprocessing cannot round it."""
    def exact(s):
        if s[0] == 'var':
            return case.var(s[1]).is_int
        if s[0] == 'num':
            v = value(case, s[1])
            return v.denominator == 1 and abs(v) < 2**50
        return s[0] not in ('nrt', 'exp', 'cos', 'sin')
    return all(exact(s) for t in atom[1:] for s in nodes(t))


def unwind(case, k):
    """The conjuncts that depth k asks for, each with its step: INIT at 0, TRANS at 0..k-1,
    TARGET at k (a plain formula: its conjuncts at 0)."""
    if not case.bmc:
        return [(c, 0) for c in case.expr]
    return [(c, 0) for c in case.init] + [(c, i) for i in range(k) for c in case.trans] + [(c, k) for c in case.target]


def holds(case, k, box, loose=False, robust=True):
    """Three-valued truth of depth k's formula over the box (None: undecided). Krait asserts the
    radicand of every even root non-negative on its own, wherever the root occurs: so does this."""
    ev, conjuncts, result = Evaluator(case, box, loose, robust), unwind(case, k), True
    conjuncts += [(('rel', '>=', s[1], ZERO), step) for f, step in conjuncts for s in nodes(f)
                  if s[0] == 'nrt' and s[2] % 2 == 0]
    for f, step in conjuncts:
        result = KLEENE['and'](result, ev.truth(f, step))
        if result is False:
            return False
    return result


def false_conjunct(case, k, box, robust=True):
    """The first conjunct of depth k that is false at every point of the box, or None. Even roots
    take both signs and the radicand conditions are left out, so only a sure failure counts.

    Krait drops a derived bound that improves on the current one by no more than min_bound_delta
    (an absolute distance), so the range of every subterm may stay that much too wide. In robust
    mode each subterm is widened by a few times that slack before anything is called false."""
    opts = case.options
    delta = Fraction(float(opts[opts.index('--mbd') + 1])) if '--mbd' in opts else Fraction(1, 100)
    ev = Evaluator(case, box, loose=True, robust=robust, slack=SLACK_FACTOR * delta if robust else 0)
    return next(((f, step) for f, step in unwind(case, k) if ev.truth(f, step) is False), None)


def instances(case, k):
    """Every (name, step) that depth k's formula mentions."""
    return sorted({(s[1], 0 if case.var(s[1]).static else step + int(s[2]))
                   for f, step in unwind(case, k) for s in nodes(f) if s[0] in ('var', 'lit')})
