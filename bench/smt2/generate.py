#!/usr/bin/env python3
"""Writes the SMT-LIB benchmark problems into problems/ (bounded QF_NRA and QF_NIA).

    generate.py            rewrites problems/ from the fixed seeds

Every family draws sat and unsat instances in turn. The "; expected:" header is written only
where the answer follows from the construction: a planted rational witness, exhaustive search
over small integer ranges, or an exact range argument (monotone maps, single-occurrence
expressions, invariants) computed with rationals.
"""
import itertools
import math
import random
import shutil
from fractions import Fraction as F
from pathlib import Path

OUT = Path(__file__).resolve().parent / 'problems'
PER_FAMILY = 20


def num(v, real=True):
    """Exact literal: integers, finite decimals, else a quotient; negatives as (- v)."""
    v = F(v)
    if v < 0:
        return f'(- {num(-v, real)})'
    if v.denominator == 1:
        return f'{v.numerator}.0' if real else str(v.numerator)
    assert real
    k = next((k for k in range(13) if (v * 10 ** k).denominator == 1), None)
    if k is not None:
        s = str(v.numerator * 10 ** k // v.denominator).rjust(k + 1, '0')
        return f'{s[:-k]}.{s[-k:]}'
    return f'(/ {v.numerator}.0 {v.denominator}.0)'


def app(op, *args):
    return '(' + ' '.join((op,) + args) + ')'


def bound(rng, v, lo, hi, real=True):
    """A range for v as one of the usual ways of writing it."""
    lo, hi = num(lo, real), num(hi, real)
    return rng.choice([[f'(<= {lo} {v} {hi})'], [f'(and (>= {v} {lo}) (<= {v} {hi}))'],
                       [f'(>= {v} {lo})', f'(<= {v} {hi})']])


class Problem:
    def __init__(self, family, logic, rng):
        self.family, self.logic, self.rng = family, logic, rng
        self.decls, self.asserts, self.notes = [], [], []

    def var(self, name, sort, lo=None, hi=None):
        self.decls.append(self.rng.choice([f'(declare-const {name} {sort})', f'(declare-fun {name} () {sort})']))
        if lo is not None:
            self.asserts += bound(self.rng, name, lo, hi, sort == 'Real')
        return name

    def text(self, expected):
        head = [f'; family: {self.family}'] + ([f'; expected: {expected}'] if expected else [])
        head += [f'; {n}' for n in self.notes]
        body = [f'(set-logic {self.logic})'] + self.decls + [f'(assert {a})' for a in self.asserts]
        return '\n'.join(head + body + ['(check-sat)', '(exit)']) + '\n'


def frac(rng, lo, hi, den=4):
    return F(rng.randint(math.ceil(lo * den), math.floor(hi * den)), den)


# ---- polynomial systems -------------------------------------------------------------------------

def circles(p, rng, want):
    x, y = p.var('x', 'Real', -10, 10), p.var('y', 'Real', -10, 10)
    sq = lambda e, c: f'(* (- {e} {num(c)}) (- {e} {num(c)}))' if c else f'(* {e} {e})'
    while True:
        if rng.random() < 0.5:      # two circles meet iff |r - s| <= distance of centres <= r + s
            a, b, c, d = (rng.randint(-4, 4) for _ in range(4))
            r, s = rng.randint(1, 5), rng.randint(1, 5)
            d2 = (a - c) ** 2 + (b - d) ** 2
            sat = (r - s) ** 2 <= d2 <= (r + s) ** 2
            forms = [f'(= (+ {sq(x, a)} {sq(y, b)}) {num(r * r)})', f'(= (+ {sq(x, c)} {sq(y, d)}) {num(s * s)})']
        else:                       # y = x^2 + c meets x^2 + (y - b)^2 = r^2 iff g below has a root in [lo, hi]
            c, b, r = rng.randint(-6, 6), rng.randint(-3, 3), rng.randint(1, 6)
            g = lambda t: t * t + (1 - 2 * b) * t + b * b - c - r * r
            lo, hi = F(max(c, b - r)), F(b + r)
            v = min(max(F(2 * b - 1, 2), lo), hi)
            sat = lo <= hi and g(v) <= 0 <= max(g(lo), g(hi))
            forms = [f'(= {y} (+ (* {x} {x}) {num(c)}))', f'(= (+ (* {x} {x}) {sq(y, b)}) {num(r * r)})']
        if sat == want:
            p.asserts += forms
            return 'sat' if sat else 'unsat'


def products(p, rng, want):
    # each factor increases with every variable on a positive box: the range is [f(lo), f(hi)]
    lo = [frac(rng, 0.5, 2) for _ in range(3)]
    hi = [l + frac(rng, 0.25, 2) for l in lo]
    v = [p.var(n, 'Real', l, h) for n, l, h in zip('xyz', lo, hi)]
    k = [rng.randint(0, 3) for _ in range(3)]
    f = lambda a: (a[0] + a[1] + k[0]) * (a[1] + a[2] + k[1]) * (a[2] + a[0] + k[2])
    fl, fh = f(lo), f(hi)
    kind = rng.choice(['inside', 'edge'] if want else ['outside', 'near'])
    gap = F(1, rng.choice([1, 100, 10000]))
    target = {'inside': fl + (fh - fl) * F(rng.randint(1, 9), 10), 'edge': rng.choice([fl, fh]),
              'outside': rng.choice([fl - gap * fl, fh + gap * fh]), 'near': rng.choice([fl - F(1, 10 ** 6), fh + F(1, 10 ** 6)])}[kind]
    terms = [f'(+ {v[0]} {v[1]} {num(k[0])})', f'(+ {v[1]} {v[2]} {num(k[1])})', f'(+ {v[2]} {v[0]} {num(k[2])})']
    prod = app('*', *terms) if rng.random() < 0.5 else f'(* (* {terms[0]} {terms[1]}) {terms[2]})'
    p.asserts.append(f'(= {prod} {num(target)})')
    return 'sat' if fl <= target <= fh else 'unsat'


def poly_mul(a, b):
    out = {}
    for ma, ca in a.items():
        for mb, cb in b.items():
            m = tuple(sorted(ma + mb))
            out[m] = out.get(m, 0) + ca * cb
    return {m: c for m, c in out.items() if c}


def poly_smt(poly):
    terms = []
    for m, c in sorted(poly.items()):
        mono = m[0] if len(m) == 1 else app('*', *m) if m else None
        terms.append(num(c) if mono is None else mono if c == 1 else f'(* {num(c)} {mono})')
    return terms[0] if len(terms) == 1 else app('+', *terms)


def poly_at(poly, pt):
    return sum(c * math.prod(pt[v] for v in m) for m, c in poly.items())


def squares(p, rng, want):
    # sums of squares of polynomials that all vanish at a planted rational point
    bnd = rng.choice([2, 3, 5])
    names = ['x', 'y', 'z'][:rng.randint(2, 3)]
    for n in names:
        p.var(n, 'Real', -bnd, bnd)
    pt = {n: frac(rng, -bnd, bnd, 2) for n in names}
    polys = []
    for _ in range(rng.randint(2, 3)):
        poly = {}
        for _ in range(rng.randint(1, 3)):
            m = tuple(sorted(rng.choice(names) for _ in range(rng.randint(1, 2))))
            poly[m] = poly.get(m, 0) + rng.choice([-2, -1, 1, 1, 2, 3])
        poly = {m: c for m, c in poly.items() if c} or {(names[0],): F(1)}
        poly[()] = -poly_at(poly, pt)
        polys.append({m: c for m, c in poly.items() if c})
    sos = {}
    for q in polys:
        for m, c in poly_mul(q, q).items():
            sos[m] = sos.get(m, 0) + c
    sos = {m: c for m, c in sos.items() if c}
    expanded = rng.random() < 0.5
    text = poly_smt(sos) if expanded else app('+', *[f'(* {poly_smt(q)} {poly_smt(q)})' for q in polys])
    p.notes.append('squares written expanded' if expanded else 'squares written as products')
    if want:
        corner = max(poly_at(sos, dict(zip(names, c))) for c in itertools.product([-bnd, bnd], repeat=len(names)))
        level = rng.choice([F(0), corner * F(rng.randint(1, 9), 10)])   # reached between the point and a corner
        p.asserts.append(rng.choice([f'(= {text} {num(level)})', f'(<= {text} {num(level)})']))
        return 'sat'
    c = F(1, rng.choice([1, 10, 1000]))
    p.asserts.append(rng.choice([f'(= (+ {text} {num(c)}) 0.0)', f'(< {text} 0.0)', f'(<= {text} {num(-c)})']))
    return 'unsat'


# ---- integer non-linear -------------------------------------------------------------------------

def ints(p, names, lo, hi):
    return [p.var(n, 'Int', lo, hi) for n in names]


def factor(p, rng, want):
    while True:
        n = rng.randint(30, 3000)
        three = rng.random() < 0.3
        lo, hi = rng.randint(2, 6), rng.randint(10, 60)
        count = 3 if three else 2
        found = any(math.prod(c) == n for c in itertools.product(range(lo, hi + 1), repeat=count))
        if found == want:
            break
    v = ints(p, 'abc'[:count], lo, hi)
    p.asserts.append(f'(= {app("*", *v)} {n})')
    if rng.random() < 0.5:
        p.asserts.append(app('<=', *v))
        found = any(math.prod(c) == n and list(c) == sorted(c) for c in itertools.product(range(lo, hi + 1), repeat=count))
    return 'sat' if found else 'unsat'


def pigeons(p, rng, want):
    holes = rng.randint(3, 5)
    n = holes if want else holes + 1
    h = ints(p, [f'h{i}' for i in range(n)], 1, holes)
    style = rng.choice(['abs', 'square', 'product'])
    pairs = list(itertools.combinations(h, 2))
    if style == 'abs':
        p.asserts += [f'(>= (abs (- {a} {b})) 1)' for a, b in pairs]
    elif style == 'square':
        p.asserts += [f'(> (* (- {a} {b}) (- {a} {b})) 0)' for a, b in pairs]
    else:
        p.asserts.append(f'(not (= {app("*", *[f"(- {a} {b})" for a, b in pairs])} 0))')
    p.notes.append(f'{n} pigeons, {holes} holes, distinct by {style}')
    return 'sat' if want else 'unsat'


def diophantine(p, rng, want):
    while True:
        kind = rng.randrange(4)
        count = 3 if kind >= 2 else 2
        r = rng.randint(4, 12) if count == 3 else rng.randint(8, 25)
        a, b, d = rng.randint(1, 5), rng.randint(1, 7), rng.choice([2, 3, 5, 6, 7])
        fn = [lambda x, y: a * x * x + b * y * y, lambda x, y: x * x - d * y * y,
              lambda x, y, z: x * x + y * y + z * z, lambda x, y, z: x * y + y * z + z * x][kind]
        c = rng.randint(-40, 300)
        found = any(fn(*t) == c for t in itertools.product(range(-r, r + 1), repeat=count))
        if found == want:
            break
    x, y, z = ints(p, 'xyz'[:count], -r, r) + ['z'] * (3 - count)
    lhs = [f'(+ (* {a} {x} {x}) (* {b} {y} {y}))', f'(- (* {x} {x}) (* {d} {y} {y}))',
           f'(+ (* {x} {x}) (* {y} {y}) (* {z} {z}))', f'(+ (* {x} {y}) (* {y} {z}) (* {z} {x}))'][kind]
    p.asserts.append(f'(= {lhs} {num(c, False)})')
    return 'sat' if found else 'unsat'


# ---- Boolean structure over non-linear atoms ----------------------------------------------------

def booleans(p, rng, want):
    # each variable occurs once in an atom's term (a square counts as once), so interval evaluation
    # gives its exact range; atoms outside it are constant, the others are treated as free letters
    lo = {n: frac(rng, -3, 1) for n in 'xyz'}
    box = {n: (lo[n], lo[n] + frac(rng, 1, 4)) for n in 'xyz'}
    for n, (l, h) in box.items():
        p.var(n, 'Real', l, h)
    mul = lambda a, b: (min(u * w for u in a for w in b), max(u * w for u in a for w in b))
    add = lambda a, b: (a[0] + b[0], a[1] + b[1])
    sq = lambda a: (F(0) if a[0] <= 0 <= a[1] else min(a[0] ** 2, a[1] ** 2), max(a[0] ** 2, a[1] ** 2))
    def term():
        u, v, w = rng.sample('xyz', 3)
        return rng.choice([
            (f'(* {u} {v})', mul(box[u], box[v]), lambda q: q[u] * q[v]),
            (f'(+ (* {u} {v}) {w})', add(mul(box[u], box[v]), box[w]), lambda q: q[u] * q[v] + q[w]),
            (f'(* (+ {u} {v}) {w})', mul(add(box[u], box[v]), box[w]), lambda q: (q[u] + q[v]) * q[w]),
            (f'(* {u} {u})', sq(box[u]), lambda q: q[u] * q[u]),
            (f'(- (* {u} {u}) (* {v} {w}))', add(sq(box[u]), mul((-box[v][1], -box[v][0]), box[w])), lambda q: q[u] * q[u] - q[v] * q[w]),
            (f'(* {u} {v} {w})', mul(mul(box[u], box[v]), box[w]), lambda q: q[u] * q[v] * q[w])])
    point = {n: frac(rng, l, h, 8) for n, (l, h) in box.items()}
    bools = [p.var(f'b{i}', 'Bool') for i in range(2)]
    while True:
        atoms = []        # (text, fixed truth or None, truth at the point)
        for _ in range(8):
            t, (l, h), f = term()
            op = rng.choice(['<', '<=', '>', '>='])
            k = rng.choice([l, h, l + (h - l) * F(rng.randint(1, 7), 8)])
            test = {'<': lambda a: a < k, '<=': lambda a: a <= k, '>': lambda a: a > k, '>=': lambda a: a >= k}[op]
            fixed = test(l) if test(l) == test(h) else None     # a threshold test is monotone
            atoms.append((f'({op} {t} {num(k)})', fixed, test(f(point))))
        letters = [(a[0], i) for i, a in enumerate(atoms)] + [(b, 8 + j) for j, b in enumerate(bools)]
        lit = lambda a, i: (f'(not {a})', i, False) if rng.random() < 0.4 else (a, i, True)
        clauses = []
        for _ in range(rng.randint(5, 9)):
            ls = [lit(*c) for c in rng.sample(letters, 3)]
            shape = rng.randrange(6)
            text = [f'(or {ls[0][0]} {ls[1][0]} {ls[2][0]})', f'(=> {ls[0][0]} {ls[1][0]})',
                    f'(=> (and {ls[0][0]} {ls[1][0]}) {ls[2][0]})', f'(ite {ls[0][0]} {ls[1][0]} {ls[2][0]})',
                    f'(xor {ls[0][0]} {ls[1][0]})', f'(= {ls[0][0]} (not {ls[1][0]}))'][shape]
            clauses.append((text, shape, ls))
        def holds(val):
            for _, shape, ls in clauses:
                t = [val[i] == pos for _, i, pos in ls]
                if not [t[0] or t[1] or t[2], not t[0] or t[1], not (t[0] and t[1]) or t[2],
                        t[1] if t[0] else t[2], t[0] != t[1], t[0] != t[1]][shape]:
                    return False
            return True
        free = [i for i, a in enumerate(atoms) if a[1] is None] + [8, 9]
        def valuation(bits):
            val = {i: a[1] for i, a in enumerate(atoms)}
            val.update(zip(free, bits))
            return val
        planted = {i: a[2] for i, a in enumerate(atoms)}
        if want and any(holds({**planted, 8: b0, 9: b1}) for b0 in (0, 1) for b1 in (0, 1)):
            break
        everything = lambda bits: dict(enumerate(bits))      # no arithmetic at all: must be satisfiable
        if not want and not any(holds(valuation(bits)) for bits in itertools.product((False, True), repeat=len(free))) \
                and any(holds(everything(bits)) for bits in itertools.product((False, True), repeat=10)):
            break
    p.asserts += [c[0] for c in clauses]
    return 'sat' if want else 'unsat'


# ---- distinct and chained comparisons -----------------------------------------------------------

def chains(p, rng, want):
    kind = rng.randrange(4)
    if kind == 0:   # lo < x < y < z < hi, product p: reached exactly on (lo^3, hi^3); with <= on [lo^3, hi^3]
        lo, hi = frac(rng, 0, 1), frac(rng, 1.5, 3)
        strict = rng.random() < 0.5
        chain_only = rng.random() < 0.5     # ranges left to inference from the chain
        v = [p.var(n, 'Real') if chain_only else p.var(n, 'Real', lo, hi) for n in 'xyz']
        p.asserts.append(app('<' if strict else '<=', num(lo), *v, num(hi)))
        ends = [lo ** 3, hi ** 3]
        if want:
            t = rng.choice(ends) if not strict and rng.random() < 0.5 else lo ** 3 + (hi ** 3 - lo ** 3) * F(rng.randint(1, 9), 10)
        else:
            t = rng.choice([ends[0] - F(1, 1000), ends[1] + F(1, 1000)] + (ends if strict else []))
        sat = (ends[0] < t < ends[1]) if strict else (ends[0] <= t <= ends[1])
        p.asserts.append(f'(= (* {v[0]} {v[1]} {v[2]}) {num(t)})')
    elif kind == 1:  # distinct reals on [a, b], a > 0: the product ranges over the open (a^3, b^3)
        a, b = frac(rng, 0.25, 1), frac(rng, 1.5, 3)
        v = [p.var(n, 'Real', a, b) for n in 'xyz']
        p.asserts.append(app('distinct', *v))
        t = (a ** 3 + (b ** 3 - a ** 3) * F(rng.randint(1, 9), 10)) if want else rng.choice([a ** 3, b ** 3])
        sat = a ** 3 < t < b ** 3
        p.asserts.append(f'(= (* {v[0]} {v[1]} {v[2]}) {num(t)})')
    elif kind == 2:  # Pythagorean triples, x < y < z in a range
        while True:
            lo, hi = rng.randint(1, 15), rng.randint(5, 30)
            sat = any(x * x + y * y == z * z for x in range(lo, hi + 1) for y in range(x + 1, hi + 1) for z in range(y + 1, hi + 1))
            if hi > lo + 2 and sat == want:
                break
        v = ints(p, 'xyz', lo, hi)
        p.asserts += [app('<', *v), f'(= (+ (* x x) (* y y)) (* z z))']
    else:            # lo <= a <= b <= c <= d <= hi, all distinct, given product
        lo, hi = rng.randint(1, 3), rng.randint(6, 12)
        v = ints(p, 'abcd', lo, hi) if rng.random() < 0.6 else [p.var('a', 'Int', lo, hi)] + [p.var(n, 'Int') for n in 'bcd']
        prods = {math.prod(c) for c in itertools.combinations(range(lo, hi + 1), 4)}
        t = rng.choice(sorted(prods)) if want else rng.choice([n for n in range(min(prods), max(prods)) if n not in prods])
        sat = t in prods
        p.asserts += [app('<=', str(lo), *v, str(hi)), app('distinct', *v), f'(= {app("*", *v)} {t})']
    return 'sat' if sat else 'unsat'


# ---- unwound transition systems, one variable per step ------------------------------------------

def counters(p, rng, want):
    # inputs only increase the count, so a reachable set cut at the counter's range is exact
    square = rng.random() < 0.5
    if square:      # c' = c + u*u: sums of n squares (for n = 3 not those of the form 4^a(8b + 7))
        n, U, top, c0, ins = rng.randint(3, 10) if want else 3, rng.randint(2, 5), rng.randint(20, 60), 0, None
        ins = range(-U, U + 1)
    else:           # c' = c * u: products of n inputs
        n, U, top, c0 = rng.randint(3, 10), rng.randint(2, 4), rng.randint(50, 400), 1
        ins = range(1, U + 1)
    cs = [p.var(f'c{i}', 'Int', 0, top) for i in range(n + 1)]
    us = [p.var(f'u{i}', 'Int', ins[0], ins[-1]) for i in range(n)]
    p.asserts.append(f'(= c0 {c0})')
    reach = {c0}
    for i in range(n):
        reach = {c + u * u if square else c * u for c in reach for u in ins} & set(range(top + 1))
        p.asserts.append(f'(= {cs[i + 1]} (+ {cs[i]} (* {us[i]} {us[i]})))' if square else f'(= {cs[i + 1]} (* {cs[i]} {us[i]}))')
    t = rng.choice(sorted(reach) if want else [t for t in range(top + 1) if t not in reach])
    p.asserts.append(f'(= {cs[n]} {t})')
    return 'sat' if t in reach else 'unsat'


def logistic(p, rng, want):
    n = rng.randint(3, 10)
    xs = [p.var(f'x{i}', 'Real', 0, 1) for i in range(n + 1)]
    if rng.random() < 0.6:      # r <= 2 on [0, 1/2]: f is increasing and maps [0, 1/2] into itself
        r = F(rng.randint(11, 20), 10)
        a = frac(rng, 0.05, 0.3, 20)
        b = a + frac(rng, 0.05, 0.2, 20)
    else:                       # any r <= 4 keeps [0, 1] and x' <= r/4
        r = F(rng.randint(25, 40), 10)
        a = frac(rng, 0.05, 0.6, 20)
        b = a + frac(rng, 0.05, 0.3, 20)
    f = lambda v: r * v * (1 - v)
    if n > 6:   # deep unwindings start from one point: z3 gives up on the degree 2^n otherwise
        b = a
    p.asserts += [f'(= {xs[0]} {num(a)})'] if a == b else bound(rng, xs[0], a, b)
    for i in range(n):
        p.asserts.append(f'(= {xs[i + 1]} (* {num(r)} {xs[i]} (- 1.0 {xs[i]})))')
    gap = F(1, rng.choice([100, 10 ** 4, 10 ** 6]))
    if r <= 2:
        lo, hi = a, b
        for _ in range(n):
            lo, hi = f(lo), f(hi)
        down, up = lambda v: F(math.floor(v / gap)) * gap, lambda v: F(math.ceil(v / gap)) * gap
        if rng.random() < 0.5:      # x_n >= t holds somewhere iff t <= hi
            t = down(hi) if want else up(hi) + (gap if up(hi) == hi else 0)
            p.asserts.append(f'(>= {xs[n]} {num(t)})')
            return 'sat' if t <= hi else 'unsat'
        t = up(lo) if want else down(lo) - (gap if down(lo) == lo else 0)
        p.asserts.append(f'(<= {xs[n]} {num(t)})')
        return 'sat' if t >= lo else 'unsat'
    if want:
        v = frac(rng, a, b, 40)
        for _ in range(n):
            v = f(v)
        p.asserts.append(f'(>= {xs[n]} {num(F(math.floor(v / gap)) * gap)})')
        return 'sat'
    p.asserts.append(rng.choice([f'(> {xs[n]} {num(r / 4 + gap)})', f'(> {xs[n]} {num(r / 4)})']))
    return 'unsat'


def ball(p, rng, want):
    # energy g*h + v^2/2 stays put in flight and shrinks at a bounce (e <= 1): never above the start
    n, g, dt = rng.randint(3, 8), F(10), rng.choice([F(1, 2), F(1, 4)])
    h0 = F(rng.randint(2, 20))
    vmax = math.isqrt(int(2 * g * h0)) + 5
    elo = frac(rng, 0.3, 0.7, 10)
    ehi = min(F(1), elo + frac(rng, 0.1, 0.4, 10))
    e = p.var('e', 'Real', elo, ehi)
    hs = [p.var(f'h{i}', 'Real', 0, 2 * h0) for i in range(n + 1)]
    vs = [p.var(f'v{i}', 'Real', -vmax, vmax) for i in range(n + 1)]
    p.asserts += [f'(= h0 {num(h0)})', '(= v0 0.0)']
    drop = g * dt * dt / 2
    for i in range(n):
        nxt = f'(- (+ {hs[i]} (* {num(dt)} {vs[i]})) {num(drop)})'
        p.asserts.append(f'(= {hs[i + 1]} (ite (< {nxt} 0.0) 0.0 {nxt}))')
        p.asserts.append(f'(= {vs[i + 1]} (ite (< {nxt} 0.0) (- (* {e} {vs[i]})) (- {vs[i]} {num(g * dt)})))')
    if not want:
        p.asserts.append(rng.choice([f'(> {hs[n]} {num(h0)})', f'(> (+ (* {num(g)} {hs[n]}) (* 0.5 {vs[n]} {vs[n]})) {num(g * h0)})']))
        return 'unsat'
    ev, h, v = frac(rng, elo, ehi, 20), h0, F(0)
    for _ in range(n):
        nh = h + dt * v - drop
        h, v = (F(0), -ev * v) if nh < 0 else (nh, v - g * dt)
    p.asserts.append(rng.choice([f'(>= {hs[n]} {num(h - F(1, 100))})', f'(<= {vs[n]} {num(v + F(1, 100))})']))
    return 'sat'


FAMILIES = [('circles', 'QF_NRA', circles), ('products', 'QF_NRA', products), ('squares', 'QF_NRA', squares),
            ('factor', 'QF_NIA', factor), ('pigeons', 'QF_NIA', pigeons), ('diophantine', 'QF_NIA', diophantine),
            ('booleans', 'QF_NRA', booleans), ('chains', None, chains), ('counters', 'QF_NIA', counters),
            ('logistic', 'QF_NRA', logistic), ('ball', 'QF_NRA', ball)]


def main():
    shutil.rmtree(OUT, ignore_errors=True)
    OUT.mkdir()
    for seed, (family, logic, make) in enumerate(FAMILIES):
        rng = random.Random(1000 + seed)
        for i in range(PER_FAMILY):
            p = Problem(family, logic, rng)
            expected = make(p, rng, i % 2 == 0)
            if p.logic is None:
                p.logic = 'QF_NIA' if any(' Int)' in d for d in p.decls) else 'QF_NRA'
            (OUT / f'{family}_{i:02d}.smt2').write_text(p.text(expected))
    print(f'{len(FAMILIES) * PER_FAMILY} problems in {OUT}')


if __name__ == '__main__':
    main()
