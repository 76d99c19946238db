#!/usr/bin/python3
"""Differential soundness of the krait binary on seeded random inputs.

One generator (lang.py), several checkers per answer:
  - "unsatisfiable" must survive brute force (every integer assignment, or a grid of points
    for real variables, capped and sampled when large) and z3 (a model re-checked exactly, then
    a model that holds with margins; see semantics.py for why margins);
  - a candidate box must not make a conjunct false at every one of its points;
  - a run must end within its time limit, with exit status 0 and nothing on standard error;
  - every few cases, the same input twice gives the same report but for "time solver".
A failure is minimised over its formula tree and options and saved with its reports.

CI:   differential.py KRAIT --seed 20240611 --cases 2000   (failures listed in known.txt are excused)
Long: differential.py KRAIT --hours 2 --jobs 2 --out DIR   (fresh seeds; also see scripts/differential.sh)
"""
import argparse
import copy
import itertools
import math
import os
import re
import subprocess
import sys
import tempfile
import time
from collections import Counter
from concurrent.futures import FIRST_COMPLETED, ProcessPoolExecutor, wait
from fractions import Fraction
from random import Random

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import lang       # noqa: E402
import semantics  # noqa: E402
import smt        # noqa: E402

HERE = os.path.dirname(os.path.abspath(__file__))
TIMEOUT_S = 20
KNOWN_TIMEOUT_S = 5
POINTS = 3000            # brute-force points per depth; beyond that a sample of this many
DETERMINISM_EVERY = 5
PROGRESS_S = 600
NAN = 'nan'
INIT_TRANS_FATAL = ('\nError: Conjunction of INIT and TRANS is unsatisfiable.\n'
                    'This is probably due to an error in the encoding of the model.\n')
VERDICTS = {'unsatisfiable': 'unsat', 'candidate solution box found': 'box'}


class Failure(Exception):
    def __init__(self, kind, message, marginal=False):
        super().__init__(message)
        self.kind, self.message, self.marginal = kind, message, marginal


def run_krait(binary, case, workdir, timeout=TIMEOUT_S):
    path = os.path.join(workdir, 'input.krait')
    with open(path, 'w') as f:
        f.write(case.text())
    try:
        p = subprocess.run([binary, *case.args(), path], capture_output=True, text=True,
                           timeout=timeout, cwd=workdir)
    except subprocess.TimeoutExpired as e:
        return None, (e.stdout or b'').decode(errors='replace') if isinstance(e.stdout, bytes) else (e.stdout or ''), ''
    return p.returncode, p.stdout, p.stderr


def parse_report(text):
    """[(depth, 'unsat' | 'box', box)], box mapping (name, step) to a closed interval."""
    results, k, lines = [], 0, text.split('\n')
    entry = None
    for i, line in enumerate(lines):
        m = re.match(r'    k = (\d+)$', line)
        if m:
            k = int(m.group(1))
        elif line == 'RESULT:' and i + 1 < len(lines):
            results.append((k, VERDICTS.get(lines[i + 1].strip(), lines[i + 1].strip()), {}))
        elif re.match(r'    (\S+) \(.*\): $', line):
            entry = line.split()[0]
        else:
            m = re.match(r'        @(\d+): [\[\]](\S+), (\S+)[\[\]]$', line)
            if m and results:
                lo, hi = (None if 'inf' in x else NAN if 'nan' in x else Fraction(float(x)) for x in m.group(2, 3))
                results[-1][2][(entry, int(m.group(1)))] = (lo, hi)
    return results


def without_target(case):
    c = copy.deepcopy(case)
    c.target = [('true',)]
    return c


def masked(stdout):
    return '\n'.join(l for l in stdout.split('\n') if 'time solver' not in l)


def points(case, k, rng):
    """Candidate witnesses of depth k: every integer assignment and a grid of 9 values on each
    real range, or a random sample of them when there are too many."""
    insts = semantics.instances(case, k)
    axes = []
    for name, _ in insts:
        v = case.var(name)
        lo, hi = v.bounds()
        if v.is_int:
            axes.append([Fraction(i) for i in range(math.ceil(lo), math.floor(hi) + 1)][:200])
        else:
            axes.append(sorted({lo + (hi - lo) * j / 8 for j in range(9)}))
    total = 1
    for a in axes:
        total *= len(a)
    if total <= POINTS:
        combos = itertools.product(*axes)
    else:
        combos = (tuple(rng.choice(a) for a in axes) for _ in range(POINTS))
    return total <= POINTS, ({i: (x, x) for i, x in zip(insts, c)} for c in combos)


def show_box(box):
    return ', '.join(f'{n}@{s}={float(v[0])!r}' if v[0] == v[1] else f'{n}@{s}=[{float(v[0])!r}, {float(v[1])!r}]'
                     for (n, s), v in sorted(box.items()))


def check_unsat(case, k, stats, rng, workdir):
    exhaustive, candidates = points(case, k, rng)
    for box in candidates:
        if semantics.holds(case, k, box) is True:
            raise Failure('wrong-unsat', f'depth {k}: "unsatisfiable", but {show_box(box)} satisfies it')
    exact = all(semantics.exact_atom(case, a) for a in atoms(case))
    if exhaustive and exact:
        stats['unsat confirmed by brute force'] += 1
        return
    answer, model = smt.solve(smt.Query(case, k))
    if answer != 'sat':
        stats[f'unsat, z3 {answer}'] += 1
        return
    if any(v is None for v in model.values()):
        stats['unsat, z3 sat (irrational model)'] += 1
        return
    box = {i: (v, v) for i, v in model.items()}
    if semantics.holds(case, k, box, robust=False) is not True:
        stats['unsat, z3 sat (model fails the exact check)'] += 1
        return
    if semantics.holds(case, k, box) is not True:
        robust = smt.Query(case, k, robust=True)
        answer, model = smt.solve(robust)
        box = {i: (v, v) for i, v in (model or {}).items()}
        if answer != 'sat' or None in box.values() or semantics.holds(case, k, box) is not True:
            with open(os.path.join(workdir, 'z3.smt2'), 'w') as f:
                f.write(smt.Query(case, k).text)
            raise Failure('wrong-unsat', f'depth {k}: "unsatisfiable", but z3 finds a model that holds '
                          f'exactly (not with margins): {show_box(box)}', marginal=True)
    with open(os.path.join(workdir, 'z3.smt2'), 'w') as f:
        f.write(smt.Query(case, k).text)
    raise Failure('wrong-unsat', f'depth {k}: "unsatisfiable", but z3 finds {show_box(box)}')


def check_box(case, k, box, stats, with_z3):
    if any(NAN in b for b in box.values()):
        raise Failure('bad-box', f'depth {k}: the candidate box has an end that is not a number')
    if any(lo is None or hi is None or lo > hi for lo, hi in box.values()):
        return  # unbounded or empty ranges: nothing to evaluate
    # Integers are split down to single values and atoms over them alone are decided exactly:
    # such a box is a solution, and an off-by-one at a strict bound must not hide in the slack.
    if all(case.var(n).is_int and lo == hi for (n, _), (lo, hi) in box.items()) \
            and set(semantics.instances(case, k)) <= set(box) and all(semantics.exact_atom(case, a) for a in atoms(case)):
        stats['box, an integer point'] += 1
        if semantics.holds(case, k, box) is not True:
            raise Failure('bad-box', f'depth {k}: the candidate box is an integer point that is no solution')
    for robust in (True, False):
        bad = semantics.false_conjunct(case, k, box, robust=robust)
        if bad:
            raise Failure('bad-box', f'depth {k}: the candidate box makes {lang.show(bad[0])} (step {bad[1]}) '
                          f'false at every point{"" if robust else " (within rounding errors and the bound-delta slack)"}',
                          marginal=not robust)
    if with_z3:
        answer, _ = smt.solve(smt.Query(case, k))
        if answer == 'unsat' and not semantics.root_domains(semantics.unwind(case, k)):
            stats['box, z3 unsat (a spurious candidate)'] += 1


def atoms(case):
    out = []

    def walk(t):
        if t[0] == 'rel':
            out.append(t[1:])
        for c in t[1:]:
            if isinstance(c, tuple):
                walk(c)
    for _, conjuncts in case.sections():
        for c in conjuncts:
            walk(c)
    return out


def check(binary, case, seed_rng, determinism, stats, workdir, with_z3_boxes=False, timeout=TIMEOUT_S):
    """Runs every checker on one case; raises Failure for the first problem found."""
    status, out, err = run_krait(binary, case, workdir, timeout)
    with open(os.path.join(workdir, 'stdout'), 'w') as f:
        f.write(out)
    with open(os.path.join(workdir, 'stderr'), 'w') as f:
        f.write(err)
    if status is None:
        raise Failure('timeout', f'no answer within {timeout} s')
    results = parse_report(out)
    depths = list(range(case.max_depth + 1)) if case.bmc else [0]
    # Krait stops when INIT and the transitions so far contradict each other before a target
    # is added: a claim that they are unsatisfiable together, checked below like any other.
    stuck = case.bmc and status == 1 and err == INIT_TRANS_FATAL and len(results) < len(depths)
    if not stuck and (status != 0 or err):
        raise Failure('crash', f'exit status {status}, standard error:\n{err}')
    if [r[0] for r in results] != depths[:len(results)] or len(results) < len(depths) and not stuck \
            or any(r[1] not in ('unsat', 'box') for r in results):
        raise Failure('crash', 'the report does not hold one result per depth')
    if stuck:
        stats['INIT and TRANS contradictory'] += 1
        check_unsat(without_target(case), len(results), stats, seed_rng, workdir)
    for k, verdict, box in results:
        stats[verdict] += 1
        if verdict == 'unsat':
            check_unsat(case, k, stats, seed_rng, workdir)
        else:
            check_box(case, k, box, stats, with_z3_boxes)
    if determinism:
        status2, out2, err2 = run_krait(binary, case, workdir, timeout)
        if status2 != status or masked(out2) != masked(out) or err2 != err:
            with open(os.path.join(workdir, 'stdout.second'), 'w') as f:
                f.write(out2)
            raise Failure('nondeterministic', 'a second run gives a different report')


# Minimisation: greedy one-step simplifications of the tree, the sections and the options.

def subtrees(t, path=()):
    yield path, t
    for i, c in enumerate(t[1:], 1):
        if isinstance(c, tuple):
            yield from subtrees(c, path + (i,))


def replace(t, path, new):
    if not path:
        return new
    i = path[0]
    return t[:i] + (replace(t[i], path[1:], new),) + t[i + 1:]


BOOLEAN = {'lit', 'true', 'false', 'not', 'rel', *lang.CONNECTIVES}


def smaller(t):
    """Trees one step simpler than t."""
    for path, s in subtrees(t):
        op = s[0]
        if op in BOOLEAN:
            kids = [c for c in s[1:] if isinstance(c, tuple) and c[0] in BOOLEAN]
            alts = kids + ([('true',), ('false',)] if op not in ('true', 'false') else [])
        else:
            kids = [c for c in s[1:] if isinstance(c, tuple)]
            alts = kids + ([('num', '0'), ('num', '1')] if op != 'num' or s[1] not in ('0', '1') else [])
        for a in alts:
            yield replace(t, path, a)


def shrinks(case, depth):
    """Cases one step simpler: fewer depths, options, conjuncts and variables first, then
    smaller trees."""
    def variant(change):
        c = copy.deepcopy(case)
        change(c)
        return c
    if case.bmc and case.max_depth > depth:
        yield variant(lambda c: setattr(c, 'max_depth', depth))
    groups, i = [], 0
    while i < len(case.options):
        n = 1 + sum(1 for _ in itertools.takewhile(lambda o: not o.startswith('--'), case.options[i + 1:]))
        groups.append((i, n))
        i += n
    for i, n in reversed(groups):
        yield variant(lambda c: c.options.__delitem__(slice(i, i + n)))
    sections = [(title.lower() if case.bmc else 'expr', conjuncts) for title, conjuncts in case.sections()]
    for attr, conjuncts in sections:
        for i in range(len(conjuncts) if len(conjuncts) > 1 else 0):
            yield variant(lambda c: getattr(c, attr).pop(i))
    used = {s[1] for _, cs in case.sections() for t in cs for _, s in subtrees(t) if s[0] in ('var', 'lit', 'num')}
    for v in case.vars:
        if v.name not in used and len(case.vars) > 1:
            yield variant(lambda c: setattr(c, 'vars', [w for w in c.vars if w.name != v.name]))
        elif v.static:
            yield variant(lambda c: setattr(c.var(v.name), 'static', False))
    for name in case.defines:
        if name not in used:
            yield variant(lambda c: c.defines.__delitem__(name))
    if case.brackets:
        yield variant(lambda c: setattr(c, 'brackets', 0))
    for attr, conjuncts in sections:
        for i in range(len(conjuncts)):
            for t in smaller(conjuncts[i]):
                yield variant(lambda c: getattr(c, attr).__setitem__(i, t))


def minimise(binary, case, failure, workdir, budget_s, timeout=TIMEOUT_S):
    """The smallest case found within the budget that fails in the same way."""
    deadline = time.time() + budget_s
    timeout = min(timeout, 10) if failure.kind == 'timeout' else timeout
    depth = int(m.group(1)) if (m := re.match(r'depth (\d+)', failure.message)) else case.max_depth
    best, best_failure = case, failure
    improved = True
    while improved and time.time() < deadline:
        improved = False
        for cand in shrinks(best, depth):
            if time.time() >= deadline:
                break
            try:
                check(binary, cand, Random(0), failure.kind == 'nondeterministic', Counter(), workdir,
                      timeout=timeout)
            except Failure as f:
                if f.kind == failure.kind and f.marginal == failure.marginal and \
                        (f.kind != 'crash' or f.message == failure.message):
                    best, best_failure, improved = cand, f, True
                    if m := re.match(r'depth (\d+)', f.message):
                        depth = int(m.group(1))
                    break
            except Exception:   # a shrunk case the harness cannot judge
                continue
    return best, best_failure


# Known faults: cases that fail for a reason someone is already repairing.

def load_known(path):
    known = {}
    if os.path.exists(path):
        for line in open(path):
            parts = line.split('#')[0].split()
            if len(parts) >= 2:
                known[parts[0]] = parts[1]
    return known


def likely_known(case, failure):
    """A guess at which known fault a failure of a fresh seed belongs to (for the totals only)."""
    if re.search(r'\bV_\d', case.text()):
        return '3'
    if failure.kind == 'timeout':
        if '--shifting' in case.options and any(v.static for v in case.vars):
            return '5'
        return '1' if case.family == 'extreme' or '1e-17' in case.options else '6'
    if constant_power(case):
        return '4'
    if failure.kind == 'bad-box' and case.family == 'extreme':
        return '2'
    return None


def constant_power(case):
    def has_var(t):
        return any(s[0] == 'var' for _, s in subtrees(t))
    return any(s[0] in ('nrt', '^') and not has_var(s[1])
               for _, cs in case.sections() for t in cs for _, s in subtrees(t))


def save(out_dir, case_id, case, failure, workdir, minimal, minimal_failure):
    d = os.path.join(out_dir, f'{case_id}-{failure.kind}{"-marginal" if failure.marginal else ""}')
    os.makedirs(d, exist_ok=True)
    for name in ('stdout', 'stderr', 'stdout.second', 'z3.smt2'):
        src = os.path.join(workdir, name)
        if os.path.exists(src):
            os.replace(src, os.path.join(d, name))
    with open(os.path.join(d, 'input.krait'), 'w') as f:
        f.write(case.text())
    with open(os.path.join(d, 'args'), 'w') as f:
        f.write('\n'.join([*case.args(), 'input.krait']) + '\n')
    with open(os.path.join(d, 'failure.txt'), 'w') as f:
        f.write(f'{failure.kind}: {failure.message}\n\nminimised: {minimal_failure.message}\n')
    with open(os.path.join(d, 'minimal.krait'), 'w') as f:
        f.write(minimal.text())
    with open(os.path.join(d, 'minimal.args'), 'w') as f:
        f.write('\n'.join([*minimal.args(), 'minimal.krait']) + '\n')
    return d


def one_case(binary, seed, index, known, guess_known, out_dir, minimise_s, z3_boxes, timeout):
    """Generates, checks and (on failure) minimises and saves case seed-index. Returns
    (case id, family, stats, failure record or None)."""
    case_id = f'{seed}-{index}'
    rng = Random(case_id)
    case = lang.make_case(rng)
    stats = Counter()
    with tempfile.TemporaryDirectory() as workdir:
        try:
            # A listed case only has to show whether it still fails: a short limit will do.
            check(binary, case, rng, index % DETERMINISM_EVERY == 0, stats, workdir, z3_boxes,
                  timeout=KNOWN_TIMEOUT_S if case_id in known else timeout)
            return case_id, case.family, stats, (('fixed', known[case_id], '') if case_id in known else None)
        except Failure as failure:
            tag = known.get(case_id)
            if tag is None and not failure.marginal and out_dir and minimise_s > 0:
                minimal, minimal_failure = minimise(binary, case, failure, workdir, minimise_s, timeout)
            else:
                minimal, minimal_failure = case, failure
            where = save(out_dir, case_id, case, failure, workdir, minimal, minimal_failure) if out_dir else ''
            guess = likely_known(case, failure)
            record = ('known', tag, where) if tag else ('marginal', failure.kind, where) if failure.marginal \
                else ('likely-known', guess, where) if guess and guess_known \
                else ('new', failure.kind, where)
            text = (f'{case_id} [{record[0]} {record[1]}] {failure.kind}: {failure.message}\n'
                    f'{minimal.text()}options: {" ".join(minimal.args()) or "(none)"}\n'
                    f'minimised failure: {minimal_failure.message}\n')
            return case_id, case.family, stats, record + (text,)
        except Exception as e:   # the harness itself failed: report, never hide
            return case_id, case.family, stats, ('new', 'harness', '', f'{case_id} harness error: {e!r}\n{case.text()}')


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument('binary')
    ap.add_argument('--seed', type=int, help='fixed seed (default: a fresh one from the clock)')
    ap.add_argument('--cases', type=int, help='number of cases (default: until --hours is over)')
    ap.add_argument('--hours', type=float, default=0.0)
    ap.add_argument('--jobs', type=int, default=os.cpu_count() or 1)
    ap.add_argument('--out', help='folder for failing cases (default: none in CI, failures/ otherwise)')
    ap.add_argument('--known', default=os.path.join(HERE, 'known.txt'))
    ap.add_argument('--minimise', type=float, default=60, help='seconds of minimisation per failure')
    ap.add_argument('--timeout', type=float, default=TIMEOUT_S, help='seconds a run of the binary may take')
    ap.add_argument('--z3-boxes', action='store_true', help='also ask z3 about candidate boxes')
    args = ap.parse_args()
    args.binary = os.path.abspath(args.binary)
    if args.cases is None and not args.hours:
        ap.error('give --cases or --hours')
    seed = args.seed if args.seed is not None else int(time.time())
    # Fixed seeds excuse exactly the listed cases; fresh seeds sort failures by a guess instead.
    fresh = args.seed is None
    known = {} if fresh else load_known(args.known)
    deadline = time.time() + args.hours * 3600 if args.hours else None
    out_dir = args.out or (None if not fresh else 'failures')
    if out_dir:
        os.makedirs(out_dir, exist_ok=True)

    totals, families, records = Counter(), Counter(), Counter()
    started = time.time()
    index, last_progress = 0, time.time()
    with ProcessPoolExecutor(args.jobs) as pool:
        pending = set()

        def more():
            return (args.cases is None or index < args.cases) and (deadline is None or time.time() < deadline)

        while pending or more():
            while more() and len(pending) < 2 * args.jobs:
                pending.add(pool.submit(one_case, args.binary, seed, index, known, fresh, out_dir, args.minimise,
                                        args.z3_boxes, args.timeout))
                index += 1
            done, pending = wait(pending, return_when=FIRST_COMPLETED)
            if deadline and time.time() - last_progress > PROGRESS_S:
                last_progress = time.time()
                print(f'... {sum(families.values())} cases, {totals["unsat"]} unsat, {totals["box"]} boxes, '
                      f'{sum(records.values())} disagreements', flush=True)
            for fut in done:
                case_id, family, stats, record = fut.result()
                families[family] += 1
                totals.update(stats)
                if record:
                    records[f'{record[0]} {record[1]}'] += 1
                    if record[0] == 'new':
                        print('FAIL ' + record[3], flush=True)
                    elif record[0] != 'fixed':
                        print('note ' + record[3].split('\n')[0], flush=True)
                    else:
                        print(f'note {case_id} is listed as known fault {record[1]} but passes now', flush=True)

    new = sum(n for r, n in records.items() if r.startswith('new'))
    print(f'\nseed {seed}: {sum(families.values())} cases ({", ".join(f"{f} {n}" for f, n in sorted(families.items()))}) '
          f'in {time.time() - started:.0f} s')
    print('answers: ' + ', '.join(f'{k} {v}' for k, v in sorted(totals.items())))
    print('disagreements: ' + (', '.join(f'{k}: {v}' for k, v in sorted(records.items())) or 'none'))
    unsat, box = totals['unsat'], totals['box']
    if args.cases and min(unsat, box) < (unsat + box) // 8:
        print(f'FAIL: too one-sided ({unsat} unsatisfiable, {box} candidate boxes)')
        new += 1
    print(f'{"FAILED" if new else "ok"}: {new} new failures')
    return 1 if new else 0


if __name__ == '__main__':
    sys.exit(main())
