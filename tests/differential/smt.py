"""The independent oracle: a case at one depth as SMT-LIB 2 text for Debian's z3 binary.

We talk to the z3 executable through a pipe rather than through its Python binding: each query
is plain text that is saved next to a failing case and replays with `z3 FILE`, a query that
hangs is ended by killing one process, and nothing of z3 lives in the harness's memory.

Every constant is the exact rational of its double. Even roots are the non-negative root and
exp/cos are replaced by fresh values bounded by polynomials: the first narrows and the second
widens Krait's meaning, so a "sat" counts only after its model passes the exact re-check, and an
"unsat" is trusted only where no even root occurs.
"""
import re
import subprocess
from fractions import Fraction

import semantics
from lang import value

Z3_SECONDS = 10


def rat(q):
    body = str(q.numerator if q >= 0 else -q.numerator)
    if q.denominator != 1:
        body = f'(/ {body}.0 {q.denominator}.0)'
    else:
        body += '.0'
    return f'(- {body})' if q < 0 else body


class Query:
    """depth k of a case; robust=True asks for a model that holds with the margins of
    `semantics` (strict relations kept apart by the margin, no inexact equality)."""

    def __init__(self, case, k, robust=False):
        self.case, self.k, self.robust = case, k, robust
        self.consts, self.side, self.fresh = {}, [], {}
        self.scales = semantics.Evaluator(case, {}, loose=True, robust=False)
        conjuncts = [self.formula(f, step, True) for f, step in semantics.unwind(case, k)]
        lines = ['(set-logic ALL)']
        lines += [f'(declare-const {n} {sort})' for n, sort in self.consts.items()]
        lines += [f'(assert {a})' for a in self.side + conjuncts]
        self.names = [n for n in self.consts if n.startswith('|')]
        lines += ['(check-sat)', f'(get-value ({" ".join(self.names)}))' if self.names else '']
        self.text = '\n'.join(lines) + '\n'

    def instance(self, name, primed, step):
        v = self.case.var(name)
        s = 0 if v.static else step + int(primed)
        n = f'|{name}@{s}|'
        if n not in self.consts:
            self.consts[n] = 'Int' if v.is_int else 'Real'
            lo, hi = v.bounds()
            x = f'(to_real {n})' if v.is_int else n
            self.side.append(f'(<= {rat(lo)} {x} {rat(hi)})')
        return f'(to_real {n})' if v.is_int else n

    def new(self, key, make):
        """One fresh Real per distinct subterm, defined by the constraints `make` returns."""
        if key not in self.fresh:
            n = f'_f{len(self.fresh)}'
            self.fresh[key] = n
            self.consts[n] = 'Real'
            self.side += make(n)
        return self.fresh[key]

    def term(self, t, step):
        op = t[0]
        if op == 'var':
            return self.instance(t[1], t[2], step)
        if op == 'num':
            return rat(value(self.case, t[1]))
        if op in ('^', 'nrt'):
            a, n = self.term(t[1], step), t[2]
            if op == '^':
                if n == 0:
                    return '1.0'
                base = a if ' ' not in a else self.new(('=', a), lambda v: [f'(= {v} {a})'])
                return base if n == 1 else f'(* {" ".join([base] * n)})'
            return self.new((op, a, n), lambda r: [f'(= (* {" ".join([r] * n)}) {a})'] +
                            ([] if n % 2 else [f'(>= {r} 0.0)']))
        a = [self.term(c, step) for c in t[1:]]
        if op == 'neg':
            return f'(- {a[0]})'
        if op in ('+', '-', '*'):
            return f'({op} {a[0]} {a[1]})'
        if op == 'abs':
            return f'(ite (>= {a[0]} 0.0) {a[0]} (- {a[0]}))'
        if op in ('min', 'max'):
            return f'(ite ({"<=" if op == "min" else ">="} {a[0]} {a[1]}) {a[0]} {a[1]})'
        if op == 'exp':
            x = a[0]
            return self.new(('exp', x), lambda e: [
                f'(> {e} 0.0)', f'(>= {e} (+ 1.0 {x}))', f'(=> (<= {x} 0.0) (<= (* {e} (- 1.0 {x})) 1.0))',
                f'(=> (>= {x} 0.0) (>= {e} 1.0))'])
        x = a[0] if op == 'cos' else f'(+ {a[0]} {rat(semantics.SIN_SHIFT)})'
        sq = f'(* {x} {x})'
        return self.new(('cos', x), lambda c: [
            f'(<= (- 1.0) {c} 1.0)', f'(>= {c} (- 1.0 (/ {sq} 2.0)))',
            f'(<= {c} (+ (- 1.0 (/ {sq} 2.0)) (/ (* {sq} {sq}) 24.0)))'])

    def margin(self, op, lhs, rhs, step):
        """0 for an exact relation; otherwise the robust margin over the declared ranges."""
        if not self.robust or semantics.exact_atom(self.case, (op, lhs, rhs)):
            return Fraction(0)
        ev = self.scales
        ev.magnitude = Fraction(1)
        try:
            ev.arith(lhs, step), ev.arith(rhs, step)
        except semantics.Unbounded:
            return None
        return semantics.TAU * ev.magnitude

    def atom(self, op, lhs, rhs, step, positive):
        if not positive:
            op = {'<': '>=', '<=': '>', '>': '<=', '>=': '<', '=': '!=', '!=': '='}[op]
        m = self.margin(op, lhs, rhs, step)
        if m is None:
            return 'false'
        a, b = self.term(lhs, step), self.term(rhs, step)
        if m == 0:
            return f'(not (= {a} {b}))' if op == '!=' else f'({op} {a} {b})'
        d = f'(- {a} {b})'
        if op in ('<', '<='):
            return f'(<= {d} {rat(-m)})'
        if op in ('>', '>='):
            return f'(>= {d} {rat(m)})'
        return 'false' if op == '=' else f'(or (<= {d} {rat(-m)}) (>= {d} {rat(m)}))'

    def formula(self, f, step, positive):
        op = f[0]
        if op in ('true', 'false'):
            return 'true' if (op == 'true') == positive else 'false'
        if op == 'lit':
            return self.atom('>=', ('var', f[1], f[2]), ('num', '1'), step, positive)
        if op == 'rel':
            return self.atom(f[1], f[2], f[3], step, positive)
        if op == 'not':
            return self.formula(f[2], step, not positive)
        g, h = f[1], f[2]
        if op in ('nand', 'nor'):
            return self.formula((op[1:], g, h), step, not positive)
        if op in ('impl', '->'):
            return self.formula(('or', ('not', '', g), h), step, positive)
        if op in ('nxor', '<->'):
            return self.formula(('xor', g, h), step, not positive)
        if op == 'xor':
            return self.formula(('or', ('and', g, ('not', '', h)), ('and', ('not', '', g), h)), step, positive)
        joint = op == 'and' if positive else op == 'or'
        return f'({"and" if joint else "or"} {self.formula(g, step, positive)} {self.formula(h, step, positive)})'


def parse_sexpr(text):
    tokens = re.findall(r'\(|\)|\|[^|]*\||[^\s()]+', text)
    stack = [[]]
    for tok in tokens:
        if tok == '(':
            stack.append([])
        elif tok == ')':
            done = stack.pop()
            stack[-1].append(done)
        else:
            stack[-1].append(tok)
    return stack[0]


def number(e):
    """An exact value from z3's output, or None for an algebraic number that is not rational."""
    if isinstance(e, str):
        return Fraction(e)
    if e[0] == '-' and len(e) == 2:
        v = number(e[1])
        return None if v is None else -v
    if e[0] == '/':
        a, b = number(e[1]), number(e[2])
        return None if a is None or b is None else a / b
    return None


def solve(query, seconds=Z3_SECONDS):
    """('sat', model) with model {(name, step): Fraction or None}, or ('unsat'|'unknown', None)."""
    try:
        p = subprocess.run(['z3', '-in', f'-T:{seconds}'], input=query.text, capture_output=True,
                           text=True, timeout=seconds + 20)
    except subprocess.TimeoutExpired:
        return 'unknown', None
    lines = p.stdout.split('\n', 1)
    answer = lines[0].strip()
    if answer == 'sat':
        model = {}
        if query.names:
            for name, val in parse_sexpr(lines[1])[0]:
                inst, step = name.strip('|').rsplit('@', 1)
                model[(inst, int(step))] = number(val)
        return 'sat', model
    if answer == 'unsat':
        return 'unsat', None
    if answer not in ('unknown', 'timeout') and 'error' in p.stdout:
        raise RuntimeError(f'z3 rejected the query:\n{p.stdout}\n{query.text}')
    return 'unknown', None
