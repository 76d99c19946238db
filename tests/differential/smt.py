"""The independent oracle: a case at one depth as SMT-LIB 2 text for Debian's z3 binary (the
certificate checks of bench/certify ask it too). z3 runs on a pipe, not through its Python binding:
a query is plain text, saved beside a failing case to replay with `z3 FILE`, and one that hangs
ends with its process.

Every constant is the exact rational of its double. Even roots are the non-negative root and
exp/cos are replaced by fresh values bounded by polynomials: the first narrows and the second
widens Krait's meaning, so a "sat" counts only after its model passes the exact re-check, and an
"unsat" is trusted only where no even root occurs.
"""
import re
import subprocess
from fractions import Fraction

import semantics
from lang import CONNECTIVES, REWRITE, value

NEGATED = {'<': '>=', '<=': '>', '>': '<=', '>=': '<', '=': '!=', '!=': '='}
PLAIN = {'neg': '(- {0})', '+': '(+ {0} {1})', '-': '(- {0} {1})', '*': '(* {0} {1})',
         'abs': '(ite (>= {0} 0.0) {0} (- {0}))', 'min': '(ite (<= {0} {1}) {0} {1})', 'max': '(ite (>= {0} {1}) {0} {1})'}


def rat(q):
    body = f'{abs(q.numerator)}.0' if q.denominator == 1 else f'(/ {abs(q.numerator)}.0 {q.denominator}.0)'
    return f'(- {body})' if q < 0 else body


class Query:
    """Depth k of a case, its instances inside `box` ({(name, step): (lo, hi)}) where one is given.
    robust=True asks for a model that holds with the margins of `semantics` (strict relations kept
    apart by the margin, no inexact equality)."""

    def __init__(self, case, k, robust=False, box=None):
        self.case, self.robust, self.consts, self.side, self.fresh = case, robust, {}, [], {}
        self.scales = semantics.Evaluator(case, {}, loose=True, robust=False) if robust else None
        conjuncts = [self.formula(f, step, True) for f, step in semantics.unwind(case, k)]
        for (name, step), (lo, hi) in (box or {}).items():
            if f'|{name}@{step}|' in self.consts:
                self.side.append(f'(<= {rat(lo)} {self.real(f"|{name}@{step}|")} {rat(hi)})')
        self.names = [n for n in self.consts if n.startswith('|')]
        lines = ['(set-logic ALL)', *(f'(declare-const {n} {sort})' for n, sort in self.consts.items()),
                 *(f'(assert {a})' for a in self.side + conjuncts), '(check-sat)',
                 f'(get-value ({" ".join(self.names)}))' if self.names else '']
        self.text = '\n'.join(lines) + '\n'

    def real(self, n):
        return f'(to_real {n})' if self.consts[n] == 'Int' else n

    def instance(self, name, primed, step):
        v = self.case.var(name)
        n = f'|{name}@{0 if v.static else step + int(primed)}|'
        if n not in self.consts:
            self.consts[n] = 'Int' if v.is_int else 'Real'
            lo, hi = v.bounds()
            self.side.append(f'(<= {rat(lo)} {self.real(n)} {rat(hi)})')
        return self.real(n)

    def new(self, key, make):
        """One fresh Real per distinct subterm, defined by the constraints `make` returns."""
        if key not in self.fresh:
            self.fresh[key] = n = f'_f{len(self.fresh)}'
            self.consts[n] = 'Real'
            self.side += make(n)
        return self.fresh[key]

    def term(self, t, step):
        op = t[0]
        if op == 'var':
            return self.instance(t[1], t[2], step)
        if op == 'num':
            return rat(value(self.case, t[1]))
        a = [self.term(c, step) if isinstance(c, tuple) else c for c in t[1:]]
        x = a[0]
        if op in PLAIN:
            return PLAIN[op].format(*a)
        if op == '^':
            base = x if ' ' not in x or a[1] == 0 else self.new(('=', x), lambda v: [f'(= {v} {x})'])
            return '1.0' if a[1] == 0 else base if a[1] == 1 else f'(* {" ".join([base] * a[1])})'
        if op == 'nrt':
            n = a[1]
            return self.new(('nrt', x, n), lambda r: [f'(= (* {" ".join([r] * n)}) {x})'] + ([] if n % 2 else [f'(>= {r} 0.0)']))
        if op == 'exp':
            return self.new(('exp', x), lambda e: [
                f'(> {e} 0.0)', f'(>= {e} (+ 1.0 {x}))', f'(=> (<= {x} 0.0) (<= (* {e} (- 1.0 {x})) 1.0))',
                f'(=> (>= {x} 0.0) (>= {e} 1.0))'])
        x = x if op == 'cos' else f'(+ {x} {rat(semantics.SIN_SHIFT)})'
        sq = f'(* {x} {x})'
        return self.new(('cos', x), lambda c: [
            f'(<= (- 1.0) {c} 1.0)', f'(>= {c} (- 1.0 (/ {sq} 2.0)))',
            f'(<= {c} (+ (- 1.0 (/ {sq} 2.0)) (/ (* {sq} {sq}) 24.0)))'])

    def atom(self, op, lhs, rhs, step, positive):
        op = op if positive else NEGATED[op]
        m = Fraction(0)
        if self.robust and not semantics.exact_atom(self.case, (op, lhs, rhs)):
            # the robust margin over the declared ranges
            self.scales.magnitude = Fraction(1)
            try:
                self.scales.arith(lhs, step), self.scales.arith(rhs, step)
            except semantics.Unbounded:
                return 'false'
            m = semantics.TAU * self.scales.magnitude
        a, b = self.term(lhs, step), self.term(rhs, step)
        d = f'(- {a} {b})'
        if m == 0:
            return f'(not (= {a} {b}))' if op == '!=' else f'({op} {a} {b})'
        if op in ('<', '<=', '>', '>='):
            return f'(<= {d} {rat(-m)})' if op[0] == '<' else f'(>= {d} {rat(m)})'
        return 'false' if op == '=' else f'(or (<= {d} {rat(-m)}) (>= {d} {rat(m)}))'

    def formula(self, f, step, positive):
        op = f[0]
        if op in ('true', 'false'):
            return 'true' if (op == 'true') == positive else 'false'
        if op == 'rel':
            return self.atom(*f[1:], step, positive)
        if op == 'not':
            return self.formula(f[2], step, not positive)
        if op not in CONNECTIVES:   # a variable, or any term, as a literal: it holds from 1 up
            return self.atom('>=', ('var', f[1], f[2]) if op == 'lit' else f, ('num', Fraction(1)), step, positive)
        g, h = f[1], f[2]
        if op in REWRITE:
            return self.formula(REWRITE[op](g, h), step, positive)
        if op == 'xor':
            return self.formula(('or', ('and', g, ('not', '', h)), ('and', ('not', '', g), h)), step, positive)
        joint = op == 'and' if positive else op == 'or'
        return f'({"and" if joint else "or"} {self.formula(g, step, positive)} {self.formula(h, step, positive)})'


def parse_sexpr(text):
    stack = [[]]
    for tok in re.findall(r'\(|\)|\|[^|]*\||[^\s()]+', text):
        if tok == '(':
            stack.append([])
        elif tok == ')':
            stack[-2].append(stack.pop())
        else:
            stack[-1].append(tok)
    return stack[0]


def number(e):
    """An exact value from z3's output, or None for an algebraic number that is not rational."""
    if isinstance(e, str):
        return Fraction(e)
    if e[0] == '-' and len(e) == 2 or e[0] == '/':
        args = [number(x) for x in e[1:]]
        if None not in args:
            return -args[0] if len(args) == 1 else args[0] / args[1]
    return None


def solve(query, seconds=10):
    """('sat', model) with model {(name, step): Fraction or None}, or ('unsat'|'unknown', None)."""
    try:
        p = subprocess.run(['z3', '-in', f'-T:{seconds}'], input=query.text, capture_output=True,
                           text=True, timeout=seconds + 20)
    except subprocess.TimeoutExpired:
        return 'unknown', None
    answer, _, rest = p.stdout.partition('\n')
    answer = answer.strip()
    if answer == 'sat':
        pairs = [(name.strip('|').rsplit('@', 1), v) for name, v in (parse_sexpr(rest)[0] if query.names else ())]
        return 'sat', {(inst, int(step)): number(v) for (inst, step), v in pairs}
    if answer == 'unsat':
        return 'unsat', None
    if answer not in ('unknown', 'timeout') and 'error' in p.stdout:
        raise RuntimeError(f'z3 rejected the query:\n{p.stdout}\n{query.text}')
    return 'unknown', None
