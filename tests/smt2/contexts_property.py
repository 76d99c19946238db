#!/usr/bin/env python3
"""Random scripts of declarations, assertions, push, pop and check-sat over small integers, run by
krait-smt2 with its contexts and with --from-scratch, against brute force.

    contexts_property.py KRAIT_SMT2 [--scripts N] [--seed S] [--reals]

Bounds of a constant come as separate assertions, often in a later frame than the constant's
other assertions, so that assertions wait for their ranges and are translated again after a
pop. Wherever every constant of the live assertions has a lower and an upper bound written as
such, brute force over those bounds decides: a sat must come with values (get-value) that
satisfy every live assertion, an unsat must have no solution. Elsewhere, and everywhere
between the two ways, sat against unsat is a failure, and so is an error not the same both ways.
With --reals the constants are real, and numbers no double holds, quotients and ite bring the
helper variables of the texts in; the two ways are held against each other only.
"""
import argparse
import itertools
import random
import re
import subprocess
import sys
import tempfile


class Generator:
    def __init__(self, rng, reals):
        self.rng = rng
        self.reals = reals

    def term(self, names, depth=0):
        r = self.rng
        if depth > 1 or r.random() < 0.4:
            if r.random() < 0.8:
                return (r.choice(names),)
            return (r.choice(['0.1', '(/ 1 3)', '2.5', '(- 0.7)']),) if self.reals else (r.randint(-3, 3),)
        if self.reals and r.random() < 0.3:
            return ('/', self.term(names, depth + 1), (r.choice(['3', '0.1', '(/ 2 7)']),)) if r.random() < 0.5 else (
                'ite', self.formula(names, 2), self.term(names, depth + 1), self.term(names, depth + 1))
        op = r.choice(['+', '-', '*'])
        return (op, self.term(names, depth + 1), self.term(names, depth + 1))

    def formula(self, names, depth=0):
        r = self.rng
        if depth > 1 or r.random() < 0.5:
            rel = r.choice(['<=', '<', '=', 'distinct', '>='])
            return (rel, self.term(names), self.term(names))
        op = r.choice(['and', 'or', '=>', 'not'])
        if op == 'not':
            return ('not', self.formula(names, depth + 1))
        return (op, self.formula(names, depth + 1), self.formula(names, depth + 1))


def smt(e):
    if len(e) == 1:
        v = e[0]
        return str(v) if not isinstance(v, int) else (str(v) if v >= 0 else f'(- {-v})')
    if e[0] == 'ite':
        return f'(ite {smt(e[1])} {smt(e[2])} {smt(e[3])})'
    return '(' + e[0] + ' ' + ' '.join(smt(a) for a in e[1:]) + ')'


def value(e, env):
    if len(e) == 1:
        return env[e[0]] if isinstance(e[0], str) else e[0]
    op, args = e[0], e[1:]
    if op == 'not':
        return not value(args[0], env)
    a, b = value(args[0], env), value(args[1], env)
    return {'+': lambda: a + b, '-': lambda: a - b, '*': lambda: a * b, '<=': lambda: a <= b, '<': lambda: a < b,
            '=': lambda: a == b, 'distinct': lambda: a != b, '>=': lambda: a >= b, 'and': lambda: a and b,
            'or': lambda: a or b, '=>': lambda: (not a) or b}[op]()


def names_of(e, out):
    if len(e) == 1:
        if isinstance(e[0], str):
            out.add(e[0])
    else:
        for a in e[1:]:
            names_of(a, out)
    return out


def make_script(rng, reals, checks=6):
    """The script's text and, per check-sat, the live assertions."""
    gen = Generator(rng, reals)
    frames = [{'names': [], 'asserts': []}]
    # Reals: no finer searches, which take seconds for a box the certifier cannot verify.
    lines, probes, counter = (['(set-option :precision 0.01)'] if reals else []), [], 0

    def visible():
        return [n for f in frames for n in f['names']]

    def declare():
        nonlocal counter
        name = f'x{counter}'
        counter += 1
        frames[-1]['names'].append(name)
        lines.append(f'(declare-const {name} {"Real" if reals else "Int"})')
        assertion(('<=', (rng.randint(-3, 1),), (name,)))  # the upper bound comes later

    def assertion(e):
        frames[-1]['asserts'].append(e)
        lines.append(f'(assert {smt(e)})')

    for _ in range(2):
        declare()
    while len(probes) < checks:
        k = rng.random()
        names = visible()
        if k < 0.3:
            # A bound, mostly one that a constant lacks among the live assertions.
            box = written_box([a for f in frames for a in f['asserts']])
            lacking = [(n, side) for n in names for side in (0, 1) if box.get(n, (None, None))[side] is None]
            n, side = rng.choice(lacking) if lacking and rng.random() < 0.9 else (rng.choice(names), rng.randint(0, 1))
            lo = rng.randint(-3, 1)
            assertion(('<=', (lo,), (n,)) if side == 0 else ('<=', (n,), (lo + rng.randint(1, 4),)))
        elif k < 0.55:
            # Mostly over constants bounded so far, so that most check-sats have their ranges.
            box = written_box([a for f in frames for a in f['asserts']])
            bounded = [n for n in names if None not in box.get(n, (None, None))]
            assertion(gen.formula(bounded if bounded and rng.random() < 0.9 else names))
        elif k < 0.67:
            frames.append({'names': [], 'asserts': []})
            lines.append('(push 1)')
        elif k < 0.77:
            if len(frames) > 1:
                frames.pop()
                lines.append('(pop 1)')
        elif k < 0.8:
            if len(names) < 5:
                declare()
        else:
            probes.append([a for f in frames for a in f['asserts']])
            lines.append('(check-sat)')
            lines.append('(get-value (' + ' '.join(visible()) + '))')
            lines.append('(echo "--")')
    lines.append('(get-info :all-statistics)')
    return '\n'.join(lines) + '\n', probes


def written_box(live):
    """Per constant, the lower and upper bounds the live assertions write as such."""
    box = {}
    for a in live:
        if a[0] == '<=' and len(a[1]) == 1 and len(a[2]) == 1:
            if isinstance(a[1][0], int) and isinstance(a[2][0], str):
                lo, hi = box.get(a[2][0], (None, None))
                box[a[2][0]] = (a[1][0] if lo is None else max(lo, a[1][0]), hi)
            elif isinstance(a[1][0], str) and isinstance(a[2][0], int):
                lo, hi = box.get(a[1][0], (None, None))
                box[a[1][0]] = (lo, a[2][0] if hi is None else min(hi, a[2][0]))
    return box


def brute_force(live):
    """True or False when the written bounds enclose every constant; None otherwise."""
    used = sorted(set().union(*[names_of(a, set()) for a in live])) if live else []
    box = written_box(live)
    if any(box.get(n, (None, None))[0] is None or box[n][1] is None for n in used):
        return None
    ranges = [range(box[n][0], box[n][1] + 1) for n in used]
    for point in itertools.product(*ranges):
        env = dict(zip(used, point))
        if all(value(a, env) for a in live):
            return True
    return False


def run(command, text):
    """The responses per check-sat, and the statistics at the end."""
    with tempfile.NamedTemporaryFile('w', suffix='.smt2') as f:
        f.write(text)
        f.flush()
        out = subprocess.run(command + [f.name], capture_output=True, text=True, timeout=120)
    if out.returncode != 0:
        raise RuntimeError(f'{command} exited {out.returncode}: {out.stderr}')
    chunks = out.stdout.split('"--"\n')
    return [c.splitlines() for c in chunks[:-1]], chunks[-1]


def values(line):
    """The constants' values of a get-value response."""
    return {name: -int(negative) if negative else int(plain)
            for name, negative, plain in re.findall(r'\((x\d+) (?:\(- (\d+)\)|(\d+))\)', line)}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('krait_smt2')
    parser.add_argument('--scripts', type=int, default=80)
    parser.add_argument('--seed', type=int, default=1)
    parser.add_argument('--reals', action='store_true', help='real constants, numbers no double holds, quotients '
                        'and ite: the two ways against each other only')
    args = parser.parse_args()
    rng = random.Random(args.seed)
    failures, decided, same, checks = [], 0, 0, 0
    for s in range(args.scripts):
        text, probes = make_script(rng, args.reals)
        incremental, statistics = run([args.krait_smt2], text)
        scratch, _ = run([args.krait_smt2, '--from-scratch'], text)
        where = f'script {s} (seed {args.seed})'
        # No search process ends here: every check-sat that reaches the search is answered in contexts.
        if ':check-sat-from-scratch 0 ' not in statistics or ':search-processes 2' in statistics:
            failures.append(f'{where}: not all in contexts: {statistics.strip()}')
        if len(incremental) != len(probes) or len(scratch) != len(probes):
            failures.append(f'{where}: {len(incremental)} and {len(scratch)} answers for {len(probes)} check-sats')
            continue
        for c, (live, a, b) in enumerate(zip(probes, incremental, scratch)):
            checks += 1
            answer, other = a[0], b[0]
            same += answer == other
            if {answer, other} == {'sat', 'unsat'} or (answer != other and '(error' in answer + other):
                failures.append(f'{where}, check-sat {c}: {answer} with contexts, {other} from scratch')
            truth = None if args.reals else brute_force(live)
            if truth is not None and answer in ('sat', 'unsat'):
                decided += 1
                if (answer == 'sat') != truth:
                    failures.append(f'{where}, check-sat {c}: {answer}, brute force says {"sat" if truth else "unsat"}')
            if answer == 'sat' and not args.reals:
                model = values(a[1])
                if not all(value(x, model) for x in live):
                    failures.append(f'{where}, check-sat {c}: the values {model} break an assertion')
        if failures:
            sys.stderr.write(text)
            break
    print(f'{args.scripts} scripts, {checks} check-sats: {decided} decided by brute force, '
          f'{same} answered alike with contexts and from scratch')
    for f in failures:
        print('FAILURE:', f)
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main())
