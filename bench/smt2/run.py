#!/usr/bin/env python3
"""Runs krait-smt2 beside z3 and cvc5 on the SMT-LIB problems and checks its answers.

    run.py KRAIT_SMT2 [--timeout S] [--jobs N] [--share FILE] [--peers z3,cvc5]

--timeout S     wall-clock limit of one run (default 20); CPU seconds are the child's user plus
                system time as the kernel counts it
--jobs N        problems run in parallel (default 1, for stable timings)
--share FILE    only the problems FILE names, one per line ('#' starts a comment)
--peers LIST    the peers to run (default z3,cvc5); a peer not installed is left out, saying so
--dir DIR       the problems' folder (default problems/ beside this script)

Prints every problem's answers and CPU seconds, a summary per solver (CPU ratios are the peer's
over krait-smt2's on the problems both solved) and the disagreements. Exits 1 on a soundness bug:
krait-smt2 says sat where a peer says unsat or the problem is unsat by construction, or says
unsat where the problem is sat by construction or a peer's model satisfies every assertion,
evaluated exactly over the rationals. A model with irrational values is reported unchecked.
"""
import argparse
import concurrent.futures
import math
import os
import re
import shutil
import sys
import tempfile
from fractions import Fraction
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))
from timed import print_list, timed_run  # noqa: E402

PROBLEMS = Path(__file__).resolve().parent / 'problems'
KRAIT = 'krait-smt2'
PEERS = {'z3': (['z3', '-smt2'], '(set-option :produce-models true)\n'),
         'cvc5': (['cvc5', '--produce-models'], '')}
KINDS = ['sat', 'unsat', 'unknown', 'timeout', 'error']


def run(command, path, timeout):
    """(answer, CPU seconds, standard output) of one run; killed at the timeout."""
    status, seconds, text = timed_run(command + [str(path)], timeout, merge_stderr=False)
    killed = status is None
    lines = [line.strip() for line in text.splitlines() if line.strip()]
    if killed:
        return 'timeout', seconds, text
    if not lines or lines[0] not in ('sat', 'unsat', 'unknown') or any(l.startswith('(error') for l in lines):
        return 'error', seconds, text
    return lines[0], seconds, text


# ---- exact evaluation of assertions under a model -----------------------------------------------

class Unchecked(Exception):
    pass


def parse(text):
    tokens = re.findall(r'\(|\)|"(?:[^"]|"")*"|\|[^|]*\||[^\s()";]+', re.sub(r';[^\n]*', '', text))
    stack = [[]]
    for t in tokens:
        if t == '(':
            stack.append([])
        elif t == ')':
            if len(stack) == 1:
                raise Unchecked('unbalanced parentheses')
            done = stack.pop()
            stack[-1].append(done)
        else:
            stack[-1].append(t)
    return stack[0]


def chain(args, test):
    return all(test(a, b) for a, b in zip(args, args[1:]))


def fold(fn, args):
    value = args[0]
    for a in args[1:]:
        value = fn(value, a)
    return value


def implies(args):
    return args[-1] if len(args) == 1 else (not args[0]) or implies(args[1:])


def divide(a, b):
    if b == 0:
        raise Unchecked('division by zero')
    return a / b


OPS = {'and': all, 'or': any, 'not': lambda a: not a[0], '=>': implies, 'xor': lambda a: fold(lambda p, q: p != q, a),
       '=': lambda a: chain(a, lambda p, q: p == q), 'distinct': lambda a: len(set(a)) == len(a),
       '<': lambda a: chain(a, lambda p, q: p < q), '<=': lambda a: chain(a, lambda p, q: p <= q),
       '>': lambda a: chain(a, lambda p, q: p > q), '>=': lambda a: chain(a, lambda p, q: p >= q),
       '+': sum, '-': lambda a: -a[0] if len(a) == 1 else a[0] - sum(a[1:]), '*': math.prod,
       '/': lambda a: fold(divide, a), 'abs': lambda a: abs(a[0]), 'to_real': lambda a: a[0]}


def value(term, env):
    if isinstance(term, str):
        if term in env:
            return env[term]
        if term in ('true', 'false'):
            return term == 'true'
        if re.fullmatch(r'\d+(\.\d+)?', term):
            return Fraction(term)
        raise Unchecked(f'cannot evaluate {term}')
    if not term:
        raise Unchecked('empty term')
    head, args = term[0], term[1:]
    if head == 'let':
        return value(args[1], {**env, **{name: value(t, env) for name, t in args[0]}})
    if head == 'ite':
        return value(args[1], env) if value(args[0], env) else value(args[2], env)
    if head == '!':
        return value(args[0], env)
    if isinstance(head, str) and head in OPS:
        return OPS[head]([value(a, env) for a in args])
    raise Unchecked(f'cannot evaluate ({head} ...)')


def check_model(script, output):
    """'satisfies' or 'falsifies assertion N' for a model printed after sat; Unchecked otherwise."""
    items = parse(output)
    if not items or items[0] != 'sat':
        raise Unchecked(f'the peer now answers {items[0] if items else "nothing"}')
    model = next((i for i in items[1:] if isinstance(i, list)), None)
    if model is None:
        raise Unchecked('no model printed')
    env = {}
    for d in model:
        if isinstance(d, list) and len(d) == 5 and d[0] == 'define-fun' and d[2] == []:
            env[d[1]] = value(d[4], {})     # literals only: root-obj and the like stay unchecked
    commands = parse(script)
    for c in commands:
        if c[0] in ('declare-const', 'declare-fun') and c[1] not in env:
            raise Unchecked(f'the model has no value for {c[1]}')
    for n, t in enumerate((c[1] for c in commands if c[0] == 'assert'), 1):
        if value(t, env) is not True:
            return f'falsifies assertion {n}'
    return 'satisfies'


def peer_model(peer, path, timeout):
    command, preamble = PEERS[peer]
    script = path.read_text()
    body = re.sub(r'^\(exit\)\s*$', '', script, flags=re.M)
    with tempfile.NamedTemporaryFile('w', suffix='.smt2') as f:
        f.write(preamble + body + '(get-model)\n(exit)\n')
        f.flush()
        _, _, output = run(command, Path(f.name), timeout)
    try:
        return check_model(script, output)
    except (Unchecked, RecursionError, TypeError, IndexError, ValueError) as e:
        return f'unchecked: {e}'


# ---- the run ------------------------------------------------------------------------------------

def solve(path, solvers, timeout):
    expected = re.search(r'^; expected: (\w+)', path.read_text(), flags=re.M)
    return path.stem, expected.group(1) if expected else '-', {s: run(c, path, timeout)[:2] for s, c in solvers.items()}


def judge(name, expected, answers, path, timeout):
    """(soundness bugs, other disagreements) of one problem."""
    bugs, notes = [], []
    mine = answers[KRAIT][0]
    definite = {s: a for s, (a, _) in answers.items() if a in ('sat', 'unsat')}
    if len(set(definite.values()) | ({expected} - {'-'})) > 1:
        notes.append(f'{name}: expected {expected}; ' + '; '.join(f'{s} {a}' for s, (a, _) in answers.items()))
    if mine == 'sat' and expected == 'unsat':
        bugs.append(f'{name}: {KRAIT} says sat, unsat by construction')
    if mine == 'unsat' and expected == 'sat':
        bugs.append(f'{name}: {KRAIT} says unsat, sat by construction')
    for peer, answer in definite.items():
        if peer == KRAIT or answer == mine:
            continue
        if mine == 'sat':
            bugs.append(f'{name}: {KRAIT} says sat, {peer} says unsat')
        elif mine == 'unsat':
            verdict = peer_model(peer, path, timeout)
            if verdict == 'satisfies':
                bugs.append(f'{name}: {KRAIT} says unsat, {peer}\'s model satisfies every assertion (exact check)')
            else:
                notes.append(f'{name}: {KRAIT} says unsat, {peer} says sat; its model {verdict}')
    return bugs, notes


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('krait')
    parser.add_argument('--timeout', type=float, default=20)
    parser.add_argument('--jobs', type=int, default=1)
    parser.add_argument('--share', type=Path)
    parser.add_argument('--peers', default='z3,cvc5')
    parser.add_argument('--dir', type=Path, default=PROBLEMS)
    a = parser.parse_args()
    if not shutil.which(a.krait):
        parser.error(f'{a.krait}: no such program')
    solvers = {KRAIT: [str(Path(a.krait).resolve()) if os.sep in a.krait else a.krait]}
    for peer in filter(None, a.peers.split(',')):
        if peer not in PEERS:
            parser.error(f'unknown peer {peer} (known: {", ".join(PEERS)})')
        if shutil.which(PEERS[peer][0][0]):
            solvers[peer] = PEERS[peer][0]
        else:
            print(f'{peer} is not installed (apt-get install -y {peer}); running without it', file=sys.stderr)
    problems = sorted(a.dir.glob('*.smt2'))
    if a.share and not a.share.is_file():
        parser.error(f'{a.share}: no such file')
    if a.share:
        wanted = [l.split('#')[0].strip().removesuffix('.smt2') for l in a.share.read_text().splitlines()]
        problems = [a.dir / f'{w}.smt2' for w in wanted if w]
        missing = [p.name for p in problems if not p.exists()]
        if missing:
            parser.error(f'{a.share}: no such problems: {", ".join(missing)}')

    print(f'{"problem":16} {"expected":8}' + ''.join(f' {s:>10} {"CPU s":>7}' for s in solvers))
    results, bugs, notes = [], [], []
    with concurrent.futures.ThreadPoolExecutor(max(1, a.jobs)) as pool:
        for (name, expected, answers), path in zip(pool.map(lambda p: solve(p, solvers, a.timeout), problems), problems):
            print(f'{name:16} {expected:8}' + ''.join(f' {x:>10} {t:7.2f}' for x, t in answers.values()), flush=True)
            results.append(answers)
            found = judge(name, expected, answers, path, a.timeout)
            bugs += found[0]
            notes += found[1]

    print(f'\n{"solver":10} {"solved":>6}' + ''.join(f' {k:>7}' for k in KINDS) +
          f' {"CPU s":>8} {"both":>5} {"CPU ratio":>9} {"geo mean":>8}')
    for s in solvers:
        count = {k: sum(r[s][0] == k for r in results) for k in KINDS}
        line = f'{s:10} {count["sat"] + count["unsat"]:6d}' + ''.join(f' {count[k]:7d}' for k in KINDS)
        line += f' {sum(r[s][1] for r in results):8.2f}'
        both = [(r[KRAIT][1], r[s][1]) for r in results
                if r[KRAIT][0] in ('sat', 'unsat') and r[s][0] in ('sat', 'unsat')]
        if s != KRAIT and both:
            mine, theirs = sum(b[0] for b in both), sum(b[1] for b in both)
            geo = math.exp(sum(math.log(max(t, 1e-3) / max(m, 1e-3)) for m, t in both) / len(both))
            line += f' {len(both):5d} {theirs / mine if mine else math.inf:9.2f} {geo:8.2f}'
        print(line)

    print()
    print_list('disagreements', notes)
    for b in bugs:
        print(f'SOUNDNESS BUG {b}')
    return 1 if bugs else 0


if __name__ == '__main__':
    sys.exit(main())
