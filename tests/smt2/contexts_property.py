#!/usr/bin/env python3
"""Random scripts of declarations, assertions, push, pop and check-sat over small integers, run by
krait-smt2 with its contexts and with --from-scratch, against brute force.

    contexts_property.py KRAIT_SMT2 [--scripts N] [--seed S] [--reals]

Bounds come as separate assertions, often in a later frame than the constant's other ones, so
that assertions wait for their ranges and are translated again after a pop. Where the live
assertions write both bounds of every constant they use, brute force over them decides: a sat's
get-value must satisfy every live assertion, an unsat must have no solution. Between the two
ways, sat against unsat is a failure, and so is an error not the same both ways. With --reals the
constants are real, and numbers no double holds, quotients and ite bring the texts' helper
variables in; the two ways are held against each other only.
"""
import argparse
import itertools
import random
import re
import subprocess
import sys


def smt(e):
    if len(e) > 1:
        return '(' + ' '.join([e[0]] + [smt(a) for a in e[1:]]) + ')'
    return f'(- {-e[0]})' if isinstance(e[0], int) and e[0] < 0 else str(e[0])


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


def make_script(rng, reals, checks=6):
    """The script's text and, per check-sat, the live assertions."""
    def term(names, depth=0):
        if depth > 1 or rng.random() < 0.4:
            if rng.random() < 0.8:
                return (rng.choice(names),)
            return (rng.choice(['0.1', '(/ 1 3)', '2.5', '(- 0.7)']),) if reals else (rng.randint(-3, 3),)
        if reals and rng.random() < 0.3:
            if rng.random() < 0.5:
                return ('/', term(names, depth + 1), (rng.choice(['3', '0.1', '(/ 2 7)']),))
            return ('ite', formula(names, 2), term(names, depth + 1), term(names, depth + 1))
        return (rng.choice(['+', '-', '*']), term(names, depth + 1), term(names, depth + 1))

    def formula(names, depth=0):
        if depth > 1 or rng.random() < 0.5:
            return (rng.choice(['<=', '<', '=', 'distinct', '>=']), term(names), term(names))
        op = rng.choice(['and', 'or', '=>', 'not'])
        if op == 'not':
            return ('not', formula(names, depth + 1))
        return (op, formula(names, depth + 1), formula(names, depth + 1))

    frames = [([], [])]  # per frame: its constants and its assertions
    # Reals: no finer searches, which take seconds for a box the certifier cannot verify.
    lines, probes, counter = (['(set-option :precision 0.01)'] if reals else []), [], itertools.count()

    def live():
        return [a for _, asserts in frames for a in asserts]

    def assertion(e):
        frames[-1][1].append(e)
        lines.append(f'(assert {smt(e)})')

    def declare():
        name = f'x{next(counter)}'
        frames[-1][0].append(name)
        lines.append(f'(declare-const {name} {"Real" if reals else "Int"})')
        assertion(('<=', (rng.randint(-3, 1),), (name,)))  # the upper bound comes later

    for _ in range(2):
        declare()
    while len(probes) < checks:
        k = rng.random()
        names = [n for constants, _ in frames for n in constants]
        box = written_box(live())
        if k < 0.3:
            # A bound, mostly one that a constant lacks among the live assertions.
            lacking = [(n, side) for n in names for side in (0, 1) if box.get(n, [None, None])[side] is None]
            n, side = rng.choice(lacking) if lacking and rng.random() < 0.9 else (rng.choice(names), rng.randint(0, 1))
            lo = rng.randint(-3, 1)
            assertion(('<=', (lo,), (n,)) if side == 0 else ('<=', (n,), (lo + rng.randint(1, 4),)))
        elif k < 0.55:
            # Mostly over constants bounded so far, so that most check-sats have their ranges.
            bounded = [n for n in names if None not in box.get(n, [None])]
            assertion(formula(bounded if bounded and rng.random() < 0.9 else names))
        elif k < 0.67:
            frames.append(([], []))
            lines.append('(push 1)')
        elif k < 0.77:
            if len(frames) > 1:
                frames.pop()
                lines.append('(pop 1)')
        elif k < 0.8:
            if len(names) < 5:
                declare()
        else:
            probes.append(live())
            lines += ['(check-sat)', '(get-value (' + ' '.join(names) + '))', '(echo "--")']
    lines.append('(get-info :all-statistics)')
    return '\n'.join(lines) + '\n', probes


def written_box(live):
    """Per constant, the lower and upper bounds the live assertions write as such."""
    box = {}
    for a in live:
        if a[0] == '<=' and len(a[1]) == len(a[2]) == 1:
            (left,), (right,) = a[1:]
            for name, end, side, tighter in ((right, left, 0, max), (left, right, 1, min)):
                if isinstance(name, str) and isinstance(end, int):
                    ends = box.setdefault(name, [None, None])
                    ends[side] = end if ends[side] is None else tighter(ends[side], end)
    return box


def brute_force(live):
    """True or False when the written bounds enclose every constant; None otherwise."""
    used = sorted({name for a in live for name in re.findall(r'x\d+', smt(a))})
    box = written_box(live)
    if any(None in box.get(n, [None]) for n in used):
        return None
    points = itertools.product(*[range(box[n][0], box[n][1] + 1) for n in used])
    return any(all(value(a, dict(zip(used, point))) for a in live) for point in points)


def run(command, text):
    """The responses per check-sat, and the statistics at the end."""
    out = subprocess.run(command + ['-'], input=text, capture_output=True, text=True, timeout=120)
    if out.returncode != 0:
        raise RuntimeError(f'{command} exited {out.returncode}: {out.stderr}')
    chunks = out.stdout.split('"--"\n')
    return [c.splitlines() for c in chunks[:-1]], chunks[-1]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('krait_smt2')
    parser.add_argument('--scripts', type=int, default=80)
    parser.add_argument('--seed', type=int, default=1)
    parser.add_argument('--reals', action='store_true')
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
        if not len(incremental) == len(scratch) == len(probes):
            failures.append(f'{where}: {len(incremental)} and {len(scratch)} answers for {len(probes)} check-sats')
            continue
        for c, (live, a, b) in enumerate(zip(probes, incremental, scratch)):
            checks += 1
            answer, other = a[0], b[0]
            same += answer == other
            if {answer, other} == {'sat', 'unsat'} or (answer != other and '(error' in answer + other):
                failures.append(f'{where}, check-sat {c}: {answer} with contexts, {other} from scratch')
            if args.reals or answer not in ('sat', 'unsat'):
                continue
            truth = brute_force(live)
            decided += truth is not None
            if truth is not None and (answer == 'sat') != truth:
                failures.append(f'{where}, check-sat {c}: {answer}, brute force says {"sat" if truth else "unsat"}')
            if answer == 'sat':
                values = {name: -int(negative) if negative else int(plain)
                          for name, negative, plain in re.findall(r'\((x\d+) (?:\(- (\d+)\)|(\d+))\)', a[1])}
                if not all(value(x, values) for x in live):
                    failures.append(f'{where}, check-sat {c}: the values {values} break an assertion')
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
