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

KNOWN = os.path.join(os.path.dirname(os.path.abspath(__file__)), 'known.txt')
KNOWN_TIMEOUT_S = 5      # a listed case only has to show whether it still fails
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


def write(folder, name, text):
    with open(os.path.join(folder, name), 'w') as f:
        f.write(text)


def run_krait(binary, case, workdir, timeout):
    write(workdir, 'input.krait', case.text())
    try:
        p = subprocess.run([binary, *case.args(), os.path.join(workdir, 'input.krait')], capture_output=True,
                           text=True, timeout=timeout, cwd=workdir)
    except subprocess.TimeoutExpired as e:
        out = e.stdout or ''
        return None, out.decode(errors='replace') if isinstance(out, bytes) else out, ''
    return p.returncode, p.stdout, p.stderr


def parse_report(text):
    """[(depth, 'unsat' | 'box', box)], box mapping (name, step) to a closed interval."""
    results, k, entry, lines = [], 0, None, text.split('\n')
    for i, line in enumerate(lines):
        if m := re.match(r'    k = (\d+)$', line):
            k = int(m.group(1))
        elif line == 'RESULT:' and i + 1 < len(lines):
            results.append((k, VERDICTS.get(lines[i + 1].strip(), lines[i + 1].strip()), {}))
        elif re.match(r'    (\S+) \(.*\): $', line):
            entry = line.split()[0]
        elif (m := re.match(r'        @(\d+): [\[\]](\S+), (\S+)[\[\]]$', line)) and results:
            results[-1][2][(entry, int(m.group(1)))] = tuple(
                None if 'inf' in x else NAN if 'nan' in x else Fraction(float(x)) for x in m.group(2, 3))
    return results


def exact(case):
    """Every relation over integers and integral constants alone: brute force decides them."""
    return all(semantics.exact_atom(case, s[1:]) for _, cs in case.sections() for c in cs
               for s in lang.nodes(c) if s[0] == 'rel')


def points(case, k, rng):
    """Candidate witnesses of depth k: every integer assignment and a grid of 9 values on each
    real range, or a random sample of them when there are too many."""
    insts, axes = semantics.instances(case, k), []
    for name, _ in insts:
        v = case.var(name)
        lo, hi = v.bounds()
        axes.append([Fraction(i) for i in range(math.ceil(lo), math.floor(hi) + 1)][:200] if v.is_int
                    else sorted({lo + (hi - lo) * j / 8 for j in range(9)}))
    exhaustive = math.prod(map(len, axes)) <= POINTS
    combos = itertools.product(*axes) if exhaustive else (tuple(rng.choice(a) for a in axes) for _ in range(POINTS))
    return exhaustive, ({i: (x, x) for i, x in zip(insts, c)} for c in combos)


def show_box(box):
    return ', '.join(f'{n}@{s}={float(v[0])!r}' if v[0] == v[1] else f'{n}@{s}=[{float(v[0])!r}, {float(v[1])!r}]'
                     for (n, s), v in sorted(box.items()))


def check_unsat(case, k, stats, rng, workdir):
    exhaustive, candidates = points(case, k, rng)
    for box in candidates:
        if semantics.holds(case, k, box) is True:
            raise Failure('wrong-unsat', f'depth {k}: "unsatisfiable", but {show_box(box)} satisfies it')
    if exhaustive and exact(case):
        stats['unsat confirmed by brute force'] += 1
        return
    answer, model = smt.solve(smt.Query(case, k))
    box = {i: (v, v) for i, v in (model or {}).items()}
    why = (f'z3 {answer}' if answer != 'sat' else 'z3 sat (irrational model)' if None in model.values()
           else 'z3 sat (model fails the exact check)' if semantics.holds(case, k, box, robust=False) is not True
           else None)
    if why:
        stats[f'unsat, {why}'] += 1
        return
    write(workdir, 'z3.smt2', smt.Query(case, k).text)
    if semantics.holds(case, k, box) is not True:
        answer, model = smt.solve(smt.Query(case, k, robust=True))
        box = {i: (v, v) for i, v in (model or {}).items()}
        if answer != 'sat' or None in model.values() or semantics.holds(case, k, box) is not True:
            raise Failure('wrong-unsat', f'depth {k}: "unsatisfiable", but z3 finds a model that holds '
                          f'exactly (not with margins): {show_box(box)}', marginal=True)
    raise Failure('wrong-unsat', f'depth {k}: "unsatisfiable", but z3 finds {show_box(box)}')


def check_box(case, k, box, stats):
    if any(NAN in b for b in box.values()):
        raise Failure('bad-box', f'depth {k}: the candidate box has an end that is not a number')
    if any(lo is None or hi is None or lo > hi for lo, hi in box.values()):
        return  # unbounded or empty ranges: nothing to evaluate
    # Integers are split down to single values and atoms over them alone are decided exactly:
    # such a box is a solution, and an off-by-one at a strict bound must not hide in the slack.
    if all(case.var(n).is_int and lo == hi for (n, _), (lo, hi) in box.items()) \
            and set(semantics.instances(case, k)) <= set(box) and exact(case):
        stats['box, an integer point'] += 1
        if semantics.holds(case, k, box) is not True:
            raise Failure('bad-box', f'depth {k}: the candidate box is an integer point that is no solution')
    for robust in (True, False):
        if bad := semantics.false_conjunct(case, k, box, robust=robust):
            raise Failure('bad-box', f'depth {k}: the candidate box makes {lang.show(bad[0])} (step {bad[1]}) '
                          f'false at every point{"" if robust else " (within rounding errors and the bound-delta slack)"}',
                          marginal=not robust)


def check(binary, case, rng, determinism, stats, workdir, timeout):
    """Runs every checker on one case; raises Failure for the first problem found."""
    status, out, err = run_krait(binary, case, workdir, timeout)
    write(workdir, 'stdout', out)
    write(workdir, 'stderr', err)
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
        check_unsat(variant(case, lambda c: setattr(c, 'target', [('true',)])), len(results), stats, rng, workdir)
    for k, verdict, box in results:
        stats[verdict] += 1
        if verdict == 'unsat':
            check_unsat(case, k, stats, rng, workdir)
        else:
            check_box(case, k, box, stats)
    if determinism:
        status2, out2, err2 = run_krait(binary, case, workdir, timeout)
        masked = [[line for line in o.split('\n') if 'time solver' not in line] for o in (out, out2)]
        if (status2, masked[1], err2) != (status, masked[0], err):
            write(workdir, 'stdout.second', out2)
            raise Failure('nondeterministic', 'a second run gives a different report')


def variant(case, change):
    c = copy.deepcopy(case)
    change(c)
    return c


BOOLEAN = {'lit', 'true', 'false', 'not', 'rel', *lang.CONNECTIVES}


def smaller(t):
    """Trees one step simpler than t: a node replaced by a child of its kind or by a constant,
    this node first, then those below it in order."""
    if t[0] in BOOLEAN:
        alts = [c for c in t[1:] if isinstance(c, tuple) and c[0] in BOOLEAN]
        alts += [('true',), ('false',)] if t[0] not in ('true', 'false') else []
    else:
        alts = [c for c in t[1:] if isinstance(c, tuple)]
        alts += [('num', '0'), ('num', '1')] if t[0] != 'num' or t[1] not in ('0', '1') else []
    yield from alts
    for i, c in enumerate(t[1:], 1):
        if isinstance(c, tuple):
            yield from (t[:i] + (s,) + t[i + 1:] for s in smaller(c))


def shrinks(case, depth):
    """Cases one step simpler: fewer depths, options, conjuncts and variables first, then
    smaller trees."""
    if case.bmc and case.max_depth > depth:
        yield variant(case, lambda c: setattr(c, 'max_depth', depth))
    starts = [i for i, o in enumerate(case.options) if o.startswith('--')]
    for i, j in reversed(list(zip(starts, starts[1:] + [len(case.options)]))):
        yield variant(case, lambda c: c.options.__delitem__(slice(i, j)))
    sections = [(title.lower() if case.bmc else 'expr', conjuncts) for title, conjuncts in case.sections()]
    for attr, conjuncts in sections:
        for i in range(len(conjuncts) if len(conjuncts) > 1 else 0):
            yield variant(case, lambda c: getattr(c, attr).pop(i))
    used = {s[1] for _, cs in sections for t in cs for s in lang.nodes(t) if s[0] in ('var', 'lit', 'num')}
    for v in case.vars:
        if v.name not in used and len(case.vars) > 1:
            yield variant(case, lambda c: setattr(c, 'vars', [w for w in c.vars if w.name != v.name]))
        elif v.static:
            yield variant(case, lambda c: setattr(c.var(v.name), 'static', False))
    for name in case.defines:
        if name not in used:
            yield variant(case, lambda c: c.defines.__delitem__(name))
    if case.brackets:
        yield variant(case, lambda c: setattr(c, 'brackets', 0))
    for attr, conjuncts in sections:
        for i, conjunct in enumerate(conjuncts):
            for t in smaller(conjunct):
                yield variant(case, lambda c: getattr(c, attr).__setitem__(i, t))


def minimise(binary, case, failure, workdir, budget_s, timeout):
    """The smallest case found within the budget that fails in the same way."""
    deadline = time.time() + budget_s
    timeout = min(timeout, 10) if failure.kind == 'timeout' else timeout
    best, best_failure, improved = case, failure, True
    while improved and time.time() < deadline:
        improved = False
        depth = int(m.group(1)) if (m := re.match(r'depth (\d+)', best_failure.message)) else case.max_depth
        for cand in shrinks(best, depth):
            if time.time() >= deadline:
                break
            try:
                check(binary, cand, Random(0), failure.kind == 'nondeterministic', Counter(), workdir, timeout)
            except Failure as f:
                if (f.kind, f.marginal) == (failure.kind, failure.marginal) and (f.kind != 'crash' or f.message == failure.message):
                    best, best_failure, improved = cand, f, True
                    break
            except Exception:   # a shrunk case the harness cannot judge
                continue
    return best, best_failure


def likely_known(case, failure):
    """A guess at which open fault of known.txt (N1-N3) a failure of a fresh seed belongs to, for
    the totals only; a failure that matches none counts as new."""
    text = case.text()
    huge = re.search(r'\b1(\.7)?e30[0-8]\b', text)            # values near the overflow threshold
    wide = re.search(r'\b(1e17|100000000000000001)\b', text)   # ranges the absolute delta crawls over
    if failure.kind == 'timeout':
        return 'N3' if huge else 'N2' if wide else None
    return 'N1' if failure.kind == 'bad-box' and huge else None


def save(out_dir, case_id, case, failure, workdir, minimal, minimal_failure):
    d = os.path.join(out_dir, f'{case_id}-{failure.kind}{"-marginal" if failure.marginal else ""}')
    os.makedirs(d, exist_ok=True)
    for name in ('stdout', 'stderr', 'stdout.second', 'z3.smt2'):
        if os.path.exists(os.path.join(workdir, name)):
            os.replace(os.path.join(workdir, name), os.path.join(d, name))
    for name, c in (('input', case), ('minimal', minimal)):
        write(d, f'{name}.krait', c.text())
        write(d, 'args' if name == 'input' else 'minimal.args', '\n'.join([*c.args(), f'{name}.krait']) + '\n')
    write(d, 'failure.txt', f'{failure.kind}: {failure.message}\n\nminimised: {minimal_failure.message}\n')


def one_case(binary, seed, index, known, guess_known, out_dir, minimise_s, timeout):
    """Generates, checks and (on failure) minimises and saves case seed-index. Returns its family,
    its answer counts, and for a failure, or a listed case that passes, the tally key and a line."""
    case_id = f'{seed}-{index}'
    rng = Random(case_id)
    case, stats, tag = lang.make_case(rng), Counter(), known.get(case_id)
    with tempfile.TemporaryDirectory() as workdir:
        try:
            check(binary, case, rng, index % DETERMINISM_EVERY == 0, stats, workdir, KNOWN_TIMEOUT_S if tag else timeout)
            return case.family, stats, tag and (f'fixed {tag}', f'note {case_id} is listed as known fault {tag} but passes now')
        except Failure as failure:
            minimal, minimal_failure = case, failure
            if tag is None and not failure.marginal and out_dir and minimise_s > 0:
                minimal, minimal_failure = minimise(binary, case, failure, workdir, minimise_s, timeout)
            if out_dir:
                save(out_dir, case_id, case, failure, workdir, minimal, minimal_failure)
            guess = likely_known(case, failure) if guess_known else None
            key = f'known {tag}' if tag else f'marginal {failure.kind}' if failure.marginal \
                else f'likely-known {guess}' if guess else f'new {failure.kind}'
            line = f'{case_id} [{key}] {failure.kind}: {failure.message}'
            return case.family, stats, (key, 'note ' + line.split('\n')[0] if not key.startswith('new') else
                                        f'FAIL {line}\n{minimal.text()}options: {" ".join(minimal.args()) or "(none)"}\n'
                                        f'minimised failure: {minimal_failure.message}\n')
        except Exception as e:   # the harness itself failed: report, never hide
            return case.family, stats, ('new harness', f'FAIL {case_id} harness error: {e!r}\n{case.text()}')


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument('binary')
    ap.add_argument('--seed', type=int, help='fixed seed (default: a fresh one from the clock)')
    ap.add_argument('--cases', type=int, help='number of cases (default: until --hours is over)')
    ap.add_argument('--hours', type=float, default=0.0)
    ap.add_argument('--jobs', type=int, default=os.cpu_count() or 1)
    ap.add_argument('--out', help='folder for failing cases (default: none in CI, failures/ otherwise)')
    ap.add_argument('--minimise', type=float, default=60, help='seconds of minimisation per failure')
    ap.add_argument('--timeout', type=float, default=20, help='seconds a run of the binary may take')
    args = ap.parse_args()
    if args.cases is None and not args.hours:
        ap.error('give --cases or --hours')
    # Fixed seeds excuse exactly the listed cases; fresh seeds sort failures by a guess instead.
    fresh = args.seed is None
    seed = int(time.time()) if fresh else args.seed
    rows = [line.split('#')[0].split() for line in open(KNOWN)] if os.path.exists(KNOWN) and not fresh else []
    known = {r[0]: r[1] for r in rows if len(r) >= 2}
    deadline = time.time() + args.hours * 3600 if args.hours else None
    out_dir = args.out or ('failures' if fresh else None)
    if out_dir:
        os.makedirs(out_dir, exist_ok=True)

    totals, families, records = Counter(), Counter(), Counter()
    started = last_progress = time.time()
    index, pending = 0, set()
    with ProcessPoolExecutor(args.jobs) as pool:
        def more():
            return (args.cases is None or index < args.cases) and (deadline is None or time.time() < deadline)

        while pending or more():
            while more() and len(pending) < 2 * args.jobs:
                pending.add(pool.submit(one_case, os.path.abspath(args.binary), seed, index, known, fresh, out_dir,
                                        args.minimise, args.timeout))
                index += 1
            done, pending = wait(pending, return_when=FIRST_COMPLETED)
            if deadline and time.time() - last_progress > PROGRESS_S:
                last_progress = time.time()
                print(f'... {sum(families.values())} cases, {totals["unsat"]} unsat, {totals["box"]} boxes, '
                      f'{sum(records.values())} disagreements', flush=True)
            for family, stats, record in (fut.result() for fut in done):
                families[family] += 1
                totals.update(stats)
                if record:
                    records[record[0]] += 1
                    print(record[1], flush=True)

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
