#!/usr/bin/env python3
"""Random plain formulae through the real binary: an "unsatisfiable" answer must survive brute force.

Two families, generated from a fixed seed:
  int   - int and boole variables with small ranges; every assignment is enumerated exactly.
  float - float variables (plus an int or boole or two); a grid point counts as a witness only
          if every relation it relies on holds with a margin, so rounding of the input's
          constants cannot matter. Constants and grid points are dyadic, so evaluation with
          Fraction is exact.
A sample of cases is also run twice with the solution shown, and both reports must be identical.

Usage: random_soundness.py KRAIT [--seed N] [--cases N] [--jobs N]
"""
import argparse
import itertools
import os
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from fractions import Fraction
from random import Random

# Generated cases known to be answered wrongly, with their minimised reproducers (relative to
# this folder). They are reported but do not fail the run.
KNOWN_UNSOUND = {}

MARGIN = Fraction(1, 1000)
GRID_STEP = Fraction(1, 4)
DETERMINISM_EVERY = 10
TIMEOUT_S = 60

# Trees are tuples. Arithmetic: ('var', name), ('num', Fraction), ('neg', a), ('+', a, b),
# ('-', a, b), ('*', a, b), ('^', a, int), ('abs', a), ('min', a, b), ('max', a, b).
# Boolean: ('bvar', name), ('true',), ('false',), (not-spelling, f), (connective spelling, f, g),
# ('rel', relation, a, b).
NOT_SPELLINGS = ('not', '!')
CONNECTIVES = ('and', 'or', 'impl', '->', 'xor', 'nxor', '<->', 'nand', 'nor')
RELATIONS = ('<', '<=', '=', '!=', '>=', '>')


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


# Three-valued so that the float family can leave near-boundary relations undecided.
CONNECTIVE_VALUE = {
    'and': kleene_and,
    'or': kleene_or,
    'impl': lambda a, b: kleene_or(kleene_not(a), b),
    'xor': kleene_xor,
    'nxor': lambda a, b: kleene_not(kleene_xor(a, b)),
    'nand': lambda a, b: kleene_not(kleene_and(a, b)),
    'nor': lambda a, b: kleene_not(kleene_or(a, b)),
}
CONNECTIVE_VALUE['->'] = CONNECTIVE_VALUE['impl']
CONNECTIVE_VALUE['<->'] = CONNECTIVE_VALUE['nxor']

EXACT_RELATION = {
    '<': lambda d: d < 0, '<=': lambda d: d <= 0, '=': lambda d: d == 0,
    '!=': lambda d: d != 0, '>=': lambda d: d >= 0, '>': lambda d: d > 0,
}


def robust_relation(rel, d, margin):
    """The relation lhs - rhs = d rel 0, decided only where it is at least margin away from flipping."""
    if rel in ('>', '>='):
        rel, d = {'>': '<', '>=': '<='}[rel], -d
    if rel in ('<', '<='):
        return True if d <= -margin else False if d >= margin else None
    far = abs(d) >= margin
    return (False if far else None) if rel == '=' else (True if far else None)


def arith(t, env):
    op = t[0]
    if op == 'var':
        return env[t[1]]
    if op == 'num':
        return t[1]
    if op == 'neg':
        return -arith(t[1], env)
    if op == '^':
        return arith(t[1], env) ** t[2]
    if op == 'abs':
        return abs(arith(t[1], env))
    a, b = arith(t[1], env), arith(t[2], env)
    return {'+': a + b, '-': a - b, '*': a * b, 'min': min(a, b), 'max': max(a, b)}[op]


def truth(t, env, margin):
    """True, False, or None (undecided within margin; never with margin 0)."""
    op = t[0]
    if op == 'bvar':
        return env[t[1]] == 1
    if op in ('true', 'false'):
        return op == 'true'
    if op in NOT_SPELLINGS:
        return kleene_not(truth(t[1], env, margin))
    if op == 'rel':
        d = arith(t[2], env) - arith(t[3], env)
        return EXACT_RELATION[t[1]](d) if margin == 0 else robust_relation(t[1], d, margin)
    return CONNECTIVE_VALUE[op](truth(t[1], env, margin), truth(t[2], env, margin))


def show_num(v):
    return str(v.numerator) if v.denominator == 1 else repr(float(v))


def show(t):
    """Input syntax; every compound is parenthesised so that precedence never matters, and a
    blank follows every minus sign so that two of them never form a comment."""
    op = t[0]
    if op in ('var', 'bvar'):
        return t[1]
    if op == 'num':
        return f'(- {show_num(-t[1])})' if t[1] < 0 else show_num(t[1])
    if op in ('true', 'false'):
        return op
    if op in NOT_SPELLINGS or op == 'neg':
        return f'({"-" if op == "neg" else op} {show(t[1])})'
    if op == '^':  # the exponent must stay a bare literal
        return f'({show(t[1])} ^ {t[2]})'
    if op in ('abs', 'min', 'max'):
        return f'{op}({", ".join(show(c) for c in t[1:])})'
    if op == 'rel':
        return f'({show(t[2])} {t[1]} {show(t[3])})'
    return f'({show(t[1])} {op} {show(t[2])})'


class Family:
    """Variables and constants of one case, and random formulae over them."""

    def __init__(self, rng, floating):
        self.rng, self.floating = rng, floating
        self.ints, self.floats, self.booles = {}, {}, []
        n_int = rng.randint(0, 1) if floating else rng.randint(1, 3)
        for i in range(n_int):
            lo = rng.randint(-3, 1)
            self.ints[f'i{i}'] = (lo, rng.randint(lo + 1, 3))
        for i in range(rng.randint(1, 2) if floating else 0):
            lo = Fraction(rng.randint(-4, 1), 2)
            self.floats[f'x{i}'] = (lo, lo + Fraction(rng.randint(2, 6), 2))
        self.booles = [f'b{i}' for i in range(rng.randint(0, 1 if floating else 2))]

    def constant(self):
        if self.floating and self.rng.random() < 0.5:
            return ('num', Fraction(self.rng.randint(-12, 12), 4))
        return ('num', Fraction(self.rng.randint(-4, 6)))

    def term(self, depth):
        rng = self.rng
        if depth == 0 or rng.random() < 0.3:
            names = list(self.ints) + list(self.floats)
            return ('var', rng.choice(names)) if rng.random() < 0.75 else self.constant()
        op = rng.choices(('+', '-', '*', 'neg', '^', 'abs', 'min', 'max'),
                         (4, 3, 4, 1, 2, 1, 1, 1))[0]
        if op == '^':
            return ('^', self.term(depth - 1), rng.choices((0, 1, 2, 3), (1, 1, 4, 2))[0])
        if op in ('neg', 'abs'):
            return (op, self.term(depth - 1))
        return (op, self.term(depth - 1), self.term(depth - 1))

    def relation(self):
        rhs = self.constant() if self.rng.random() < 0.6 else self.term(1)
        return ('rel', self.rng.choice(RELATIONS), self.term(2), rhs)

    def formula(self, depth):
        rng = self.rng
        if depth == 0 or rng.random() < 0.3:
            roll = rng.random()
            if roll < 0.8 or not self.booles:
                return self.relation() if roll < 0.97 else (rng.choice(('true', 'false')),)
            return ('bvar', rng.choice(self.booles))
        if rng.random() < 0.15:
            return (rng.choice(NOT_SPELLINGS), self.formula(depth - 1))
        return (rng.choice(CONNECTIVES), self.formula(depth - 1), self.formula(depth - 1))

    def declarations(self):
        lines = [f'  int [{lo}, {hi}] {n};' for n, (lo, hi) in self.ints.items()]
        lines += [f'  float [{show_num(lo)}, {show_num(hi)}] {n};' for n, (lo, hi) in self.floats.items()]
        if self.booles:
            lines.append(f'  boole {", ".join(self.booles)};')
        return lines

    def assignments(self):
        """Every integer assignment; the float variables run over the grid."""
        axes = [range(lo, hi + 1) for lo, hi in self.ints.values()] + [range(2)] * len(self.booles)
        axes += [[lo + k * GRID_STEP for k in range(int((hi - lo) / GRID_STEP) + 1)]
                 for lo, hi in self.floats.values()]
        names = list(self.ints) + self.booles + list(self.floats)
        for values in itertools.product(*axes):
            yield dict(zip(names, values))


def make_case(rng, floating):
    fam = Family(rng, floating)
    conjuncts = [fam.formula(rng.randint(0, 3)) for _ in range(rng.randint(1, 3))]
    text = '\n'.join(['DECL', *fam.declarations(), 'EXPR', *(f'  {show(c)};' for c in conjuncts)])
    return fam, conjuncts, text + '\n'


def witness(fam, conjuncts):
    """An assignment that makes every conjunct (robustly) true, or None."""
    margin = MARGIN if fam.floating else 0
    for env in fam.assignments():
        if all(truth(c, env, margin) is True for c in conjuncts):
            return env
    return None


def run(binary, path, *options):
    try:
        p = subprocess.run([binary, *options, path], capture_output=True, text=True, timeout=TIMEOUT_S)
    except subprocess.TimeoutExpired:
        return None, '', f'no answer within {TIMEOUT_S} s'
    lines = p.stdout.splitlines()
    verdict = None
    # A run that completes writes nothing to standard error; a sanitizer report would land there.
    if p.returncode == 0 and not p.stderr and 'RESULT:' in lines:
        following = lines[lines.index('RESULT:') + 1:]
        verdict = following[0].strip() if following else None
        if verdict not in ('unsatisfiable', 'candidate solution box found'):
            verdict = None
    return verdict, p.stdout, f'exit status {p.returncode}\n{p.stderr}'


def check(binary, name, path, text, fam, conjuncts, with_determinism):
    """Returns (verdict or 'crash', list of failure messages)."""
    verdict, out, err = run(binary, path, '--nosol', '--nostats')
    if verdict is None:
        return 'crash', [f'{name}: no RESULT\n{text}--- stdout\n{out}--- {err}']
    failures = []
    if verdict == 'unsatisfiable':
        env = witness(fam, conjuncts)
        if env is not None:
            failures.append(f'{name}: "unsatisfiable", but {env} satisfies it\n{text}')
    if with_determinism:
        reports = [run(binary, path, '--nostats') for _ in range(2)]
        if reports[0][1] != reports[1][1] or reports[0][0] != verdict:
            failures.append(f'{name}: reports differ between runs\n{text}--- first\n'
                            f'{reports[0][1]}--- second\n{reports[1][1]}')
    return verdict, failures


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument('binary')
    ap.add_argument('--seed', type=int, default=20240611)
    ap.add_argument('--cases', type=int, default=160, help='cases per family')
    ap.add_argument('--jobs', type=int, default=os.cpu_count() or 1)
    args = ap.parse_args()

    rng = Random(args.seed)
    cases = [(f'{family}-{i:04d}', floating, *make_case(rng, floating))
             for family, floating in (('int', False), ('float', True)) for i in range(args.cases)]
    counts = {(f, v): 0 for f in ('int', 'float')
              for v in ('unsatisfiable', 'candidate solution box found', 'crash', 'known')}
    failures = []
    with tempfile.TemporaryDirectory() as tmp, ThreadPoolExecutor(args.jobs) as pool:
        def one(index_case):
            i, (name, floating, fam, conjuncts, text) = index_case
            path = os.path.join(tmp, name + '.krait')
            with open(path, 'w') as f:
                f.write(text)
            return check(args.binary, name, path, text, fam, conjuncts, i % DETERMINISM_EVERY == 0)

        for (name, *_), (verdict, fails) in zip(cases, pool.map(one, enumerate(cases))):
            family = name.split('-')[0]
            if name in KNOWN_UNSOUND and fails:
                verdict, fails = 'known', []
            counts[family, verdict] += 1
            failures += fails

    for message in failures:
        print('FAIL ' + message)
    for family in ('int', 'float'):
        unsat, sat = counts[family, 'unsatisfiable'], counts[family, 'candidate solution box found']
        # Either answer being rare would mean the generator no longer tests anything.
        if min(unsat, sat) < args.cases // 5:
            failures.append(family)
            print(f'FAIL {family}: too one-sided ({unsat} unsatisfiable, {sat} candidate boxes)')
    summary = ', '.join(f'{f}: {counts[f, "unsatisfiable"]} unsat / '
                        f'{counts[f, "candidate solution box found"]} sat / {counts[f, "crash"]} crash'
                        f' / {counts[f, "known"]} known unsound' for f in ('int', 'float'))
    print(f'{"FAILED" if failures else "ok"}: seed {args.seed}, {summary}, {len(failures)} failures')
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main())
