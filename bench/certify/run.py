#!/usr/bin/env python3
"""Certification benchmark: krait and krait-certify on every problem under bench/certify/<family>/
and on the examples, with independent checks of what the certificates claim.

    run.py KRAIT KRAIT_CERTIFY [--reps N] [--check-only] [--verbose] [FILE ...]

For every candidate box the CERTIFICATE section is parsed and
  - a verified witness of exact values is re-evaluated with fractions.Fraction (exp, sin, cos
    and inexact roots at 50 digits with mpmath, failing only where clearly violated), checked
    against the declared ranges and, for "verified", against the printed box;
  - a witness box of the existence proof is checked the same way at its midpoint;
  - a refuted box of a polynomial problem goes to z3: a model inside the box is a failure
    (undecided boxes go to z3 as well, for the table's notes);
  - the report without its CERTIFICATE sections must be krait's.
Then a table per family and the CPU time of krait against krait-certify (user time of the
child processes over --reps runs each). --check-only skips the timing. The exit status is 1
when a check fails; --check-only and --verbose list every box not verified. Options of a run come from a comment `-- options: ...` (or `-- Run with:
...`) in the file; a transition system without one gets --max_depth 10.
"""
import argparse
import os
import re
import resource
import subprocess
import sys
from fractions import Fraction
from pathlib import Path

import mpmath

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / 'tests' / 'differential'))
import smt  # noqa: E402  (the differential suite's bridge to z3; it sets mpmath's precision, so before ours)

mpmath.mp.dps = 50
FAMILIES = ['polynomial', 'transcendental', 'integer', 'bmc']
DEFAULT_BMC_OPTIONS = ['--max_depth', '10']
RUN_SECONDS = 60


# ---------------------------------------------------------------- the input language

class InputError(Exception):
    pass


TOKEN = re.compile(r"""
    (?P<space>[ \t\r\n]+) | (?P<comment>--[^\n]*)
  | (?P<num>\d*\.\d+(?:e[+-]?\d+)?|\d+e[+-]?\d+|\d+)
  | (?P<id>[A-Za-z_][A-Za-z0-9_]*'?)
  | (?P<op><->|->|<=|>=|!=|[-+*^<>=!(),;\[\]{}])""", re.X)

KEYWORDS = {'not': '!', 'and': 'and', 'nand': 'nand', 'or': 'or', 'nor': 'nor', 'xor': 'xor',
            'nxor': '<->', 'impl': '->'}
# Binary operators, loosest first; all associate to the left.
LEVELS = [('->',), ('or', 'nor'), ('xor', '<->'), ('and', 'nand'), ('=', '!='),
          ('<', '<=', '>', '>='), ('+', '-'), ('*',)]
PREC = {op: i + 1 for i, ops in enumerate(LEVELS) for op in ops}
UNARY_PREC, POW_PREC = 9, 10
FUNCTIONS = {'abs': 1, 'exp': 1, 'sin': 1, 'cos': 1, 'min': 2, 'max': 2, 'pow': 2, 'nrt': 2}
RELATIONS = ('=', '!=', '<', '<=', '>', '>=')


def tokens(text):
    out, pos = [], 0
    while pos < len(text):
        m = TOKEN.match(text, pos)
        if not m:
            raise InputError(f'unexpected character {text[pos]!r}')
        pos = m.end()
        kind = m.lastgroup
        if kind in ('space', 'comment'):
            continue
        tok = m.group()
        out.append(('op', KEYWORDS[tok]) if kind == 'id' and tok in KEYWORDS else (kind, tok))
    return out


class Variable:
    def __init__(self, name, kind, lower, upper, static):
        self.name, self.kind, self.lower, self.upper, self.static = name, kind, lower, upper, static

    @property
    def is_int(self):
        return self.kind != 'float'

    def bounds(self):
        return self.lower, self.upper


class Problem:
    """The declarations and the sections of an input; formulae are tuples:
    ('num', q) ('var', name, primed) ('neg', a) ('+'|'-'|'*'|'min'|'max', a, b) ('abs'|'exp'|'sin'|'cos', a)
    ('^'|'nrt', a, n) ('rel', op, a, b) ('not', '!', f) ('and'|'or'|'xor'|'->', f, g), the trees of
    the differential suite (tests/differential/lang.py) with constants as their exact values."""

    def __init__(self, text):
        self.toks, self.i = tokens(text), 0
        self.vars, self.consts = {}, {}
        self.expect('id', 'DECL')
        while not self.at('id', 'EXPR') and not self.at('id', 'INIT'):
            self.declaration()
            self.expect('op', ';')
        if self.at('id', 'EXPR'):
            self.i += 1
            self.sections = [self.expr_list(None)]
        else:
            self.i += 1
            init = self.expr_list('TRANS')
            self.expect('id', 'TRANS')
            trans = self.expr_list('TARGET')
            self.expect('id', 'TARGET')
            self.sections = [init, trans, self.expr_list(None)]
        self.bmc = len(self.sections) == 3
        if self.bmc:  # as the differential suite's cases hold them
            self.init, self.trans, self.target = ([s] for s in self.sections)
        else:
            self.expr = self.sections[:1]

    def var(self, name):
        return self.vars[name]

    # -- tokens
    def at(self, kind, value=None):
        if self.i >= len(self.toks):
            return False
        k, v = self.toks[self.i]
        return k == kind and (value is None or v == value)

    def expect(self, kind, value=None):
        if not self.at(kind, value):
            got = self.toks[self.i] if self.i < len(self.toks) else 'end of input'
            raise InputError(f'expected {value or kind}, got {got}')
        self.i += 1
        return self.toks[self.i - 1][1]

    # -- declarations
    def constant(self):
        if self.at('op', '-'):
            self.i += 1
            return -self.constant()
        if self.at('num'):
            return Fraction(self.expect('num'))
        name = self.expect('id')
        if name not in self.consts:
            raise InputError(f'unknown constant {name}')
        return self.consts[name]

    def declaration(self):
        if self.at('id', 'define'):
            self.i += 1
            name = self.expect('id')
            self.expect('op', '=')
            if self.at('id', 'true') or self.at('id', 'false'):
                self.consts[name] = Fraction(int(self.expect('id') == 'true'))
            else:
                self.consts[name] = self.constant()
            return
        static = self.at('id', 'static')
        self.i += static
        kind = self.expect('id')
        if kind == 'boole':
            lower, upper = Fraction(0), Fraction(1)
        elif kind in ('int', 'float'):
            self.expect('op', '[')
            lower = self.constant()
            self.expect('op', ',')
            upper = self.constant()
            self.expect('op', ']')
        else:
            raise InputError(f'unknown type {kind}')
        while True:
            name = self.expect('id')
            self.vars[name] = Variable(name, kind, lower, upper, static)
            if not self.at('op', ','):
                break
            self.i += 1

    # -- expressions
    def expr_list(self, end):
        parts = []
        while self.i < len(self.toks) and not (end and self.at('id', end)):
            parts.append(self.expr(1))
            self.expect('op', ';')
        f = parts[0]
        for g in parts[1:]:
            f = ('and', f, g)
        return f

    def expr(self, min_prec):
        left = self.prefix()
        while self.i < len(self.toks) and self.toks[self.i][0] == 'op':
            op = self.toks[self.i][1]
            prec = POW_PREC if op == '^' else PREC.get(op)
            if prec is None or prec < min_prec:
                break
            self.i += 1
            right = self.expr(prec + 1)
            left = self.binary(op, left, right)
        return left

    def binary(self, op, a, b):
        if op == '^':
            return ('^', a, self.exponent(b))
        if op in RELATIONS:
            return ('rel', op, a, b)
        if op == 'nand':
            return ('not', '!', ('and', a, b))
        if op == 'nor':
            return ('not', '!', ('or', a, b))
        if op == '<->':
            return ('not', '!', ('xor', a, b))
        return (op, a, b)

    @staticmethod
    def exponent(e):
        if e[0] != 'num' or e[1].denominator != 1 or e[1] < 0:
            raise InputError('exponent must be a non-negative integer constant')
        return int(e[1])

    def prefix(self):
        if self.at('op', '!'):
            self.i += 1
            return ('not', '!', self.prefix())  # not binds tighter than every binary operator
        if self.at('op', '-') or self.at('op', '+'):
            minus = self.expect('op') == '-'
            a = self.expr(POW_PREC)  # only ^ binds tighter than a sign
            return ('neg', a) if minus else a
        for left, right in (('(', ')'), ('[', ']'), ('{', '}')):
            if self.at('op', left):
                self.i += 1
                e = self.expr(1)
                self.expect('op', right)
                return e
        if self.at('num'):
            return ('num', Fraction(self.expect('num')))
        name = self.expect('id')
        if name in ('true', 'false'):
            return ('num', Fraction(int(name == 'true')))
        if self.at('op', '('):
            if name not in FUNCTIONS:
                raise InputError(f'unknown function {name}')
            self.i += 1
            args = [self.expr(1)]
            while self.at('op', ','):
                self.i += 1
                args.append(self.expr(1))
            self.expect('op', ')')
            if len(args) != FUNCTIONS[name]:
                raise InputError(f'{name} takes {FUNCTIONS[name]} arguments')
            if name in ('pow', 'nrt'):
                return ('^' if name == 'pow' else name, args[0], self.exponent(args[1]))
            return (name, *args)
        if name in self.consts:
            return ('num', self.consts[name])
        primed = name.endswith("'")
        base = name.rstrip("'")
        if base not in self.vars:
            raise InputError(f'undeclared variable {base}')
        return ('var', base, primed)

    # -- unwinding
    def conjuncts(self, depth):
        """(formula, step) pairs of the formula at `depth` (None for a plain formula)."""
        if not self.bmc:
            return [(self.sections[0], 0)]
        init, trans, target = self.sections
        return [(init, 0)] + [(trans, i) for i in range(depth)] + [(target, depth)]

    def label(self, name, primed, step):
        v = self.vars[name]
        if not self.bmc or v.static:
            return name
        return f'{name}@{step + int(primed)}'

    def transcendental(self):
        def walk(f):
            if f[0] in ('exp', 'sin', 'cos', 'nrt'):
                return True
            return any(walk(a) for a in f[1:] if isinstance(a, tuple))
        return any(walk(s) for s in self.sections)


# ---------------------------------------------------------------- evaluation

class Undefined(Exception):
    """An even root of a negative number: every relation over it is false."""


def exact_root(q, n):
    if q < 0 and n % 2 == 0:
        raise Undefined
    def iroot(k):
        r = int(mpmath.nint(mpmath.root(k, n)))
        for c in (r - 1, r, r + 1):
            if c >= 0 and c ** n == k:
                return c
        return None
    a, b = iroot(abs(q.numerator)), iroot(q.denominator)
    if a is None or b is None:
        return None
    return Fraction(a, b) if q >= 0 else -Fraction(a, b)


class Evaluator:
    """Values are Fractions where exact and mpmath numbers otherwise; a relation between
    inexact values holds, fails or stays open (None) by a relative tolerance."""

    def __init__(self, problem, values, tolerance=Fraction(1, 10 ** 12)):
        self.p, self.values, self.tol = problem, values, tolerance
        self.approximate = False

    def term(self, t, step):
        op = t[0]
        if op == 'num':
            return t[1]
        if op == 'var':
            return self.values[self.p.label(t[1], t[2], step)]
        if op in ('rel', 'not', 'and', 'or', 'xor', '->'):
            raise InputError('a formula used as a number')
        a = self.term(t[1], step)
        if op == 'neg':
            return -a
        if op in ('^', 'nrt'):
            n = t[2]
            if op == '^':
                return a ** n
            if isinstance(a, Fraction):
                r = exact_root(a, n)
                if r is not None:
                    return r
            return self.inexact(lambda x: mpmath.sign(x) * mpmath.root(abs(x), n), a, n % 2 == 0)
        if op in ('exp', 'sin', 'cos'):
            if a == 0:
                return Fraction(int(op != 'sin'))
            return self.inexact(getattr(mpmath, op), a)
        if op == 'abs':
            return abs(a)
        b = self.term(t[2], step)
        if isinstance(a, Fraction) != isinstance(b, Fraction):
            a, b = self.mp(a), self.mp(b)
        if op in ('min', 'max'):
            return min(a, b) if op == 'min' else max(a, b)
        return a + b if op == '+' else a - b if op == '-' else a * b

    def mp(self, x):
        return mpmath.mpf(x.numerator) / x.denominator if isinstance(x, Fraction) else x

    def inexact(self, fn, a, even_root=False):
        self.approximate = True
        x = self.mp(a)
        if even_root and x < 0:
            raise Undefined
        return fn(x)

    def relation(self, op, a, b):
        if isinstance(a, Fraction) and isinstance(b, Fraction):
            return {'=': a == b, '!=': a != b, '<': a < b, '<=': a <= b, '>': a > b, '>=': a >= b}[op]
        a, b = self.mp(a), self.mp(b)
        d = a - b
        eps = self.mp(self.tol) * (1 + abs(a) + abs(b))
        if abs(d) <= eps:
            return {'=': True, '!=': None, '<': None, '<=': True, '>': None, '>=': True}[op]
        return {'=': False, '!=': True, '<': d < 0, '<=': d < 0, '>': d > 0, '>=': d > 0}[op]

    def holds(self, f, step):
        """True, False or None (open) by Kleene's logic."""
        op = f[0]
        if op == 'rel':
            try:
                return self.relation(f[1], self.term(f[2], step), self.term(f[3], step))
            except Undefined:
                return False
        if op == 'not':
            v = self.holds(f[2], step)
            return None if v is None else not v
        if op in ('and', 'or', 'xor', '->'):
            a, b = self.holds(f[1], step), self.holds(f[2], step)
            if op == 'and':
                return False if False in (a, b) else None if None in (a, b) else True
            if op == 'or':
                return True if True in (a, b) else None if None in (a, b) else False
            if op == '->':
                a = None if a is None else not a
                return True if True in (a, b) else None if None in (a, b) else False
            return None if None in (a, b) else a != b
        try:  # a term as a formula holds when it is at least 1
            return self.relation('>=', self.term(f, step), Fraction(1))
        except Undefined:
            return False

    def formula(self, depth):
        result = True
        for f, step in self.p.conjuncts(depth):
            v = self.holds(f, step)
            if v is False:
                return False
            if v is None:
                result = None
        return result


# ---------------------------------------------------------------- the report

def number(text):
    """A value of a witness or a box end: '3', '-0.25', '7/3 (about 2.33)', '1.5e-3'."""
    return Fraction(text.split(' (about')[0])


BOX_LINE = re.compile(r'^\s+@(\d+): ([\[\]])(\S+), (\S+)([\[\]])$')
VAR_LINE = re.compile(r'^    (\w+) \(([\w ]+)\): $')
WITNESS = re.compile(r'^        (\S+) (=|in) (.*)$')


class Certificate:
    def __init__(self, depth, box):
        self.depth, self.box = depth, box  # box: {label: (lo, hi)} as printed
        self.kind, self.text, self.seconds = None, '', 0.0
        self.witness = {}  # label -> Fraction or (lo, hi)


def parse_report(text, bmc):
    certs, depth, box, cur = [], None, {}, None
    lines = text.split('\n')
    i = 0
    while i < len(lines):
        line = lines[i]
        if line == 'SOLVING:':
            m = re.match(r'\s+k = (\d+)', lines[i + 1])
            depth = int(m.group(1)) if m else None
            box = {}
        elif line.startswith('SOLUTION:'):
            box, name = {}, None
            i += 1
            while i < len(lines) and lines[i] != 'CERTIFICATE:' and not re.match(r'^[A-Z]', lines[i]):
                m = VAR_LINE.match(lines[i])
                if m:
                    name, static = m.group(1), m.group(2).startswith('static')
                b = BOX_LINE.match(lines[i])
                if b and name:
                    label = name if not bmc or static else f'{name}@{b.group(1)}'
                    box[label] = (Fraction(float(b.group(3))), Fraction(float(b.group(4))))
                i += 1
            continue
        elif line == 'CERTIFICATE:':
            cur = Certificate(depth, box)
            certs.append(cur)
            i += 1
            while i < len(lines) and lines[i]:
                body = lines[i]
                s = body.strip()
                m = WITNESS.match(body)
                if s.startswith('verified: the box'):
                    cur.kind = 'verified'
                elif s.startswith('verified: a solution lies just outside'):
                    cur.kind = 'beside'
                elif s.startswith('not verified:'):
                    cur.kind = ('refuted' if s.endswith('is false at every point of the box')
                                or s.endswith('in the box (Krawczyk test)') else 'undecided')
                    cur.text = s
                elif s.startswith('time certifier:'):
                    cur.seconds = float(s.split(':')[1])
                elif m and m.group(2) == '=':
                    cur.witness[m.group(1)] = number(m.group(3))
                elif m:
                    lo, hi = m.group(3).strip('[]').split(', ')
                    cur.witness[m.group(1)] = (Fraction(lo), Fraction(hi))
                i += 1
            box = {}
            continue
        i += 1
    return certs


# ---------------------------------------------------------------- checks

def check_witness(problem, cert):
    """(None when the witness holds, else why not; whether the check was approximate).
    Interval witnesses are taken at their midpoint."""
    values = {}
    for label, v in cert.witness.items():
        name = label.split('@')[0]
        var = problem.vars.get(name)
        if var is None:
            return f'{label} is not declared', False
        if isinstance(v, tuple):
            lo, hi = v
            if lo > hi or lo < var.lower - abs(var.lower) * Fraction(1, 10 ** 15) - Fraction(1, 10 ** 15) \
                    or hi > var.upper + abs(var.upper) * Fraction(1, 10 ** 15) + Fraction(1, 10 ** 15):
                return f'{label} in [{float(lo)}, {float(hi)}] leaves its declared range', True
            v = (lo + hi) / 2
            values[label] = mpmath.mpf(v.numerator) / v.denominator
            continue
        if var.is_int and v.denominator != 1:
            return f'{label} = {v} is not an integer', False
        if not var.lower <= v <= var.upper:
            return f'{label} = {v} leaves its declared range', False
        values[label] = v
    ev = Evaluator(problem, values)
    try:
        result = ev.formula(cert.depth)
    except KeyError as missing:
        return f'the witness lacks {missing}', False
    approximate = ev.approximate or any(isinstance(v, tuple) for v in cert.witness.values())
    if result is False:
        return 'the formula is false at the witness', approximate
    return check_inside(cert), approximate


def check_inside(cert):
    """A "verified" witness lies in the printed box (its ends are exact doubles); a "beside"
    one at most a relative 2^-40 outside."""
    for label, v in cert.witness.items():
        if label not in cert.box:
            continue
        lo, hi = cert.box[label]
        a, b = v if isinstance(v, tuple) else (v, v)
        slack = (max(abs(lo), abs(hi)) * Fraction(1, 2 ** 40) + Fraction(1, 2 ** 62) if cert.kind == 'beside'
                 else (abs(a) + abs(b)) * Fraction(1, 10 ** 19) if isinstance(v, tuple) else 0)
        if a < lo - slack or b > hi + slack:
            return f'{label} = {v} lies outside the box [{float(lo)}, {float(hi)}]'
    return None


def z3_inside(problem, cert):
    """'sat' (a model inside the box), 'unsat', 'unknown', or why z3 was not asked."""
    if problem.transcendental():
        return 'not polynomial'
    if not cert.box:
        return 'no box printed'  # --nosol
    box = {(label.split('@')[0], int(label.split('@')[1]) if '@' in label else 0): b for label, b in cert.box.items()}
    return smt.solve(smt.Query(problem, cert.depth or 0, box=box), seconds=20)[0]


# ---------------------------------------------------------------- running

def options_of(path, problem):
    text = Path(path).read_text()
    m = re.search(r'^--\s*(?:options|Run with):(.*)$', text, re.M | re.I)
    if m:
        return m.group(1).split()
    return list(DEFAULT_BMC_OPTIONS) if problem.bmc else []


def run_once(binary, options, path):
    """(stdout, user CPU seconds of the child)."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
    p = subprocess.run([binary] + options + [str(path)], capture_output=True, text=True, timeout=RUN_SECONDS,
                       cwd=ROOT)
    after = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
    if p.returncode != 0:
        raise RuntimeError(f'{binary} {" ".join(options)} {path} ended with {p.returncode}:\n{p.stderr}')
    return p.stdout, after - before


def without_certificates(text, nosol):
    """krait-certify's report as krait would print it: no CERTIFICATE sections (nor the empty
    line that opens one after a result without its SOLUTION), the solver's times masked."""
    out, skip = [], False
    for line in text.split('\n'):
        if line == 'CERTIFICATE:':
            skip = True
            if nosol and out and out[-1] == '':
                out.pop()
        elif skip:
            skip = line != ''
        else:
            out.append(re.sub(r'[0-9][0-9.e+-]*', '<time>', line) if 'time solver' in line else line)
    return '\n'.join(out)


def problems(args):
    if args.files:
        return [(Path(f).parent.name if Path(f).parent.name in FAMILIES else 'examples', Path(f)) for f in args.files]
    out = []
    for family in FAMILIES:
        out += [(family, f) for f in sorted((ROOT / 'bench' / 'certify' / family).glob('*.krait'))]
    out += [('examples', f) for f in sorted((ROOT / 'examples').glob('*.krait'))]
    return out


class Tally:
    def __init__(self):
        self.boxes = self.problems = 0
        self.kinds = {'verified': 0, 'beside': 0, 'refuted': 0, 'undecided': 0}
        self.times = []
        self.cpu_krait = self.cpu_certify = 0.0


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument('krait')
    ap.add_argument('krait_certify')
    ap.add_argument('files', nargs='*')
    ap.add_argument('--reps', type=int, default=5)
    ap.add_argument('--check-only', action='store_true')
    ap.add_argument('--verbose', action='store_true', help='list every box that is not verified')
    args = ap.parse_intermixed_args()
    krait, certify = (os.path.abspath(b) for b in (args.krait, args.krait_certify))

    tallies, failures, unsettled = {}, [], []
    checked = {'exact': 0, 'approximate': 0, 'z3': {}}
    for family, path in problems(args):
        rel = os.path.relpath(path, ROOT)
        problem = Problem(Path(path).read_text())
        options = options_of(path, problem)
        out, _ = run_once(certify, options, path)
        plain, _ = run_once(krait, options, path)
        if without_certificates(out, '--nosol' in options) != without_certificates(plain, False):
            failures.append(f'{rel}: the report around the certificates differs from krait\'s')
        certs = parse_report(out, problem.bmc)
        t = tallies.setdefault(family, Tally())
        t.problems += 1
        t.boxes += len(certs)
        for c in certs:
            where = f'{rel}' + (f' (k = {c.depth})' if c.depth is not None else '')
            if c.kind is None:
                failures.append(f'{where}: a CERTIFICATE section without a verdict')
                continue
            t.kinds[c.kind] += 1
            t.times.append(c.seconds)
            if c.kind in ('verified', 'beside'):
                why, approximate = check_witness(problem, c)
                checked['approximate' if approximate else 'exact'] += 1
                if why:
                    failures.append(f'{where}: witness fails: {why}')
            else:
                # z3 also looks into undecided boxes: it tells a box without a solution from a
                # certifier that could not find one.
                answer = z3_inside(problem, c)
                key = f'{c.kind} {answer}'
                checked['z3'][key] = checked['z3'].get(key, 0) + 1
                unsettled.append((where, c.kind, c.text, answer))
                if c.kind == 'refuted' and answer == 'sat':
                    failures.append(f'{where}: refuted, but z3 finds a model inside the box')
        if not args.check_only:
            for _ in range(args.reps):
                t.cpu_krait += run_once(krait, options, path)[1]
                t.cpu_certify += run_once(certify, options, path)[1]

    report(tallies, args)
    print(f'\nwitnesses checked: {checked["exact"]} exactly, {checked["approximate"]} approximately (50 digits)')
    print('boxes not verified, by verdict and z3\'s answer to "a model inside the box?": ' +
          (', '.join(f'{v} {k}' for k, v in sorted(checked['z3'].items())) or 'none'))
    if args.verbose or args.check_only:
        for where, kind, text, answer in unsettled:
            print(f'  {kind:9} {where}: {text} [z3: {answer}]')
    print(f'failures: {len(failures)}')
    for f in failures:
        print('  ' + f)
    return 1 if failures else 0


def report(tallies, args):
    head = (f'{"family":15}{"problems":>9}{"boxes":>7}{"verified":>9}{"beside":>8}{"refuted":>8}'
            f'{"undecided":>10}{"share":>8}{"mean ms":>9}{"max ms":>8}')
    if not args.check_only:
        head += f'{"krait s":>9}{"certify s":>10}{"overhead":>9}'
    print(head)
    total = Tally()
    rows = [(f, tallies[f]) for f in FAMILIES + ['examples'] if f in tallies]
    for name, t in rows + [('all', total)]:
        if name != 'all':
            total.problems += t.problems
            total.boxes += t.boxes
            for k in t.kinds:
                total.kinds[k] += t.kinds[k]
            total.times += t.times
            total.cpu_krait += t.cpu_krait
            total.cpu_certify += t.cpu_certify
        k = t.kinds
        share = (k['verified'] + k['beside']) / t.boxes if t.boxes else 0.0
        mean = 1000 * sum(t.times) / len(t.times) if t.times else 0.0
        peak = 1000 * max(t.times) if t.times else 0.0
        line = (f'{name:15}{t.problems:>9}{t.boxes:>7}{k["verified"]:>9}{k["beside"]:>8}{k["refuted"]:>8}'
                f'{k["undecided"]:>10}{share:>8.1%}{mean:>9.2f}{peak:>8.2f}')
        if not args.check_only:
            over = (t.cpu_certify - t.cpu_krait) / t.cpu_krait if t.cpu_krait > 0 else float('nan')
            line += f'{t.cpu_krait / args.reps:>9.3f}{t.cpu_certify / args.reps:>10.3f}{over:>9.1%}'
        print(line)
    print('share: verified and verified beside the box, of all boxes; times per certificate (certifier\'s '
          'own CPU time); krait/certify s: user CPU seconds of one pass over the family, mean of '
          f'{args.reps} passes' if not args.check_only else 'share: verified and verified beside the box, of all boxes')


if __name__ == '__main__':
    sys.exit(main())
