#!/usr/bin/env python3
"""Runs krait-prove beside plain bounded model checking on the transition systems of models/.

    run.py KRAIT KRAIT_PROVE [--max_k K] [--timeout S] [--share FILE] [--dir DIR]

--max_k K       passed to krait-prove (default 50)
--timeout S     wall-clock limit of one run (default 60); CPU seconds are the child's user plus
                system time, its own children's included, as the kernel counts them
--share FILE    only the models FILE names, one per line ('#' starts a comment)
--dir DIR       the models' folder (default models/ beside this script)

Each model starts with '-- options: ...' (for both programs, less those of krait-prove alone
such as --simple_path_reals, which krait is not given), '-- expected: unreachable',
'-- expected: reachable at K' (K the first depth, by construction) or '-- expected: unprovable'
(unreachable as written, but not for the doubles the search takes its constants as: no sound proof
exists) and may say '-- needs: simple paths' or '-- needs: invariant'. Per model krait-prove runs with --max_k and
the options, krait with --max_depth 50 and the options (every depth up to 50, not only up to the
first box). Prints a table and the models not proven, and exits 1 on any failure:
  - krait-prove proves the target unreachable but krait finds a box at some depth up to 50,
    or any depth up to 50 is missing from krait's report;
  - krait-prove says reachable at a depth other than krait's first box;
  - either program contradicts the expected verdict or depth;
  - krait-prove does not prove an unreachable model (times out or gives up), or proves an
    unprovable one;
  - a base case of krait-prove disagrees with krait at the same depth;
  - krait-prove finds an unsatisfiable step case (a proof) on a model reachable at depth 40 or more;
  - a run that fails, times out or prints no verdict (a krait-prove that times out on a model not
    reachable within --max_k is only listed, like "not proven").
"""
import argparse
import atexit
import os
import re
import shutil
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))
from timed import print_list, timed_run  # noqa: E402

MODELS = Path(__file__).resolve().parent / 'models'
DEPTH = 50          # krait's fixed unwinding, and the horizon of every check
DEEP = 40           # a model first reachable this deep must never be proved
PROVE_ONLY = {'--simple_path_reals'}    # options krait itself refuses


def run(command, timeout):
    """(exit status or None at the timeout, CPU seconds, standard output and error)."""
    return timed_run(command, timeout)


def header(path):
    """(options, expected depth or None for unreachable, whether a proof must be found, needs)
    from the model's first lines."""
    lines = path.read_text().splitlines()
    m = re.fullmatch(r'-- options:(.*)', lines[0]) if lines else None
    if not m:
        raise ValueError(f'{path.name}: first line is not "-- options: ..."')
    options = m.group(1).split()
    m = re.fullmatch(r'-- expected: (?:(unreachable|unprovable)|reachable at (\d+))',
                     lines[1] if len(lines) > 1 else '')
    if not m:
        raise ValueError(f'{path.name}: second line is not '
                         '"-- expected: unreachable|unprovable|reachable at K"')
    expected = None if m.group(1) else int(m.group(2))
    provable = m.group(1) != 'unprovable'
    needs = ''
    for line in lines[2:]:
        n = re.fullmatch(r'-- needs: (.*)', line)
        if n:
            needs = n.group(1).strip()
        if not line.startswith('--'):
            break
    return options, expected, provable, needs


def parse_prove(text):
    """(per k: (base, step or None), result) where result is ('proved', k), ('reachable', k),
    ('not proven', k) or None."""
    cases = {}
    for block in re.split(r'^SOLVING:\n', text, flags=re.M)[1:]:
        k = re.search(r'^    k = (\d+)$', block, re.M)
        base = re.search(r'^    base case: (unsatisfiable|candidate solution box found)$', block, re.M)
        step = re.search(r'^    step case: (unsatisfiable|candidate solution box found)$', block, re.M)
        if k and base:
            cases[int(k.group(1))] = (base.group(1), step.group(1) if step else None)
    result = None
    m = re.search(r'^RESULT:\n    (.*)$', text, re.M)
    if m:
        line = m.group(1)
        for kind, pattern in (('proved', r'target unreachable at every depth \(proved by induction at k = (\d+)\)'),
                              ('reachable', r'target reachable at depth (\d+)'),
                              ('not proven', r'not proven up to k = (\d+)')):
            r = re.fullmatch(pattern, line)
            if r:
                result = (kind, int(r.group(1)))
    return cases, result


def parse_bmc(text):
    """Per depth: 'unsatisfiable' or 'candidate solution box found'."""
    depths = {}
    for m in re.finditer(r'^SOLVING:\n    k = (\d+)\n\nRESULT:\n    (unsatisfiable|candidate solution box found)$',
                         text, re.M):
        depths[int(m.group(1))] = m.group(2)
    return depths


BOX = 'candidate solution box found'


def check(name, expected, provable, max_k, prove, bmc):
    """(prove's verdict, krait's verdict, failures) of one model."""
    failures = []
    p_status, _, p_text = prove
    b_status, _, b_text = bmc
    cases, result = parse_prove(p_text)
    depths = parse_bmc(b_text)

    if p_status is None:
        p_verdict = 'timeout'
    elif p_status != 0 or result is None:
        p_verdict = 'error'
        failures.append(f'krait-prove exited {p_status} without a result')
    else:
        p_verdict = {'proved': 'proved at k={}', 'reachable': 'reachable at {}',
                     'not proven': 'not proven up to {}'}[result[0]].format(result[1])
    if b_status is None:
        b_verdict = 'timeout'
        failures.append(f'krait --max_depth {DEPTH} timed out')
    elif b_status != 0:
        b_verdict = 'error'
        failures.append(f'krait --max_depth {DEPTH} exited {b_status}')
    else:
        boxes = [d for d, v in depths.items() if v == BOX]
        b_verdict = f'reachable at {min(boxes)}' if boxes else f'unsat to {DEPTH}'
        missing = [d for d in range(DEPTH + 1) if d not in depths]
        if missing:
            failures.append(f'krait --max_depth {DEPTH} reports no verdict at depth {missing[0]}')
    first_box = min((d for d, v in depths.items() if v == BOX), default=None)
    bmc_complete = b_status == 0 and all(d in depths for d in range(DEPTH + 1))

    # krait against the construction
    if bmc_complete:
        if expected is None and first_box is not None:
            failures.append(f'krait finds a box at depth {first_box}, unreachable by construction')
        if expected is not None and expected <= DEPTH and first_box != expected:
            failures.append(f'krait first finds a box at depth {first_box}, expected {expected}')

    # krait-prove against krait and the construction
    if result and p_status == 0:
        kind, k = result
        if kind == 'proved':
            if not provable:
                failures.append(f'krait-prove proves it (k = {k}), but the doubles of its constants '
                                'make it reachable: no sound proof exists')
            if expected is not None:
                failures.append(f'krait-prove proves it unreachable (k = {k}), reachable at {expected} by construction')
            if bmc_complete:
                wrong = [d for d in range(DEPTH + 1) if depths[d] != 'unsatisfiable']
                if wrong:
                    failures.append(f'WRONG PROOF: krait-prove proves it unreachable (k = {k}), '
                                    f'krait finds a box at depth {wrong[0]}')
        elif kind == 'reachable':
            if expected is None:
                failures.append(f'krait-prove says reachable at {k}, unreachable by construction')
            elif k != expected:
                failures.append(f'krait-prove says reachable at {k}, expected {expected}')
            if bmc_complete and k <= DEPTH and first_box != k:
                failures.append(f'krait-prove says reachable at {k}, krait first finds a box at depth {first_box}')
        elif kind == 'not proven':
            if k != max_k:
                failures.append(f'krait-prove gives up at k = {k}, --max_k is {max_k}')
            if expected is not None and expected <= max_k:
                failures.append(f'krait-prove does not find the target reachable at {expected} within k = {max_k}')
            if expected is None and provable:
                failures.append(f'krait-prove does not prove it within k = {max_k}, unreachable by construction')
    if p_status is None and expected is not None and expected <= max_k:
        failures.append(f'krait-prove timed out, the target is reachable at {expected}')
    if p_status is None and expected is None and provable:
        failures.append('krait-prove timed out, the target is unreachable by construction')

    # every base case krait-prove ran is the bounded check krait ran at the same depth
    for k, (base, _) in sorted(cases.items()):
        if k in depths and depths[k] != base:
            failures.append(f'base case at k = {k} says "{base}", krait at depth {k} "{depths[k]}"')
            break
    if expected is not None and expected >= DEEP:
        proofs = [k for k, (_, step) in cases.items() if step == 'unsatisfiable']
        if proofs:
            failures.append(f'krait-prove finds the step case unsatisfiable at k = {min(proofs)}, '
                            f'but the target is reachable at {expected}')
    return p_verdict, b_verdict, failures


def without_invariant(path, scratch):
    """The model as krait reads it: an INVARIANT section (krait-prove's alone) left out."""
    lines = path.read_text().splitlines(keepends=True)
    if not any(line.strip() == 'INVARIANT' for line in lines):
        return path
    kept, skipping = [], False
    for line in lines:
        if line.strip() == 'INVARIANT':
            skipping = True
        elif line.strip() == 'TARGET':
            skipping = False
        if not skipping:
            kept.append(line)
    copy = Path(scratch) / path.name
    copy.write_text(''.join(kept))
    return copy


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('krait')
    parser.add_argument('krait_prove')
    parser.add_argument('--max_k', type=int, default=50)
    parser.add_argument('--timeout', type=float, default=60)
    parser.add_argument('--share', type=Path)
    parser.add_argument('--dir', type=Path, default=MODELS)
    a = parser.parse_args()
    for program in (a.krait, a.krait_prove):
        if not (os.path.isfile(program) and os.access(program, os.X_OK)):
            parser.error(f'{program}: no such program')
    models = sorted(a.dir.glob('*.krait'))
    if a.share:
        if not a.share.is_file():
            parser.error(f'{a.share}: no such file')
        wanted = [l.split('#')[0].strip().removesuffix('.krait') for l in a.share.read_text().splitlines()]
        models = [a.dir / f'{w}.krait' for w in wanted if w]
        missing = [p.name for p in models if not p.exists()]
        if missing:
            parser.error(f'{a.share}: no such models: {", ".join(missing)}')
    if not models:
        parser.error(f'{a.dir}: no models')

    print(f'{"model":20} {"expected":16} {"krait-prove":22} {"CPU s":>7} '
          f'{"krait --max_depth " + str(DEPTH):22} {"CPU s":>7} {"ratio":>8}')
    all_failures, unproven = [], []
    total_p = total_b = 0.0
    scratch = tempfile.mkdtemp()
    atexit.register(shutil.rmtree, scratch, True)
    for path in models:
        name = path.stem
        try:
            options, expected, provable, needs = header(path)
        except ValueError as e:
            all_failures.append(str(e))
            continue
        prove = run([a.krait_prove, *options, '--max_k', str(a.max_k), str(path)], a.timeout)
        bmc = run([a.krait, *(o for o in options if o not in PROVE_ONLY), '--max_depth', str(DEPTH),
                   str(without_invariant(path, scratch))], a.timeout)
        p_verdict, b_verdict, failures = check(name, expected, provable, a.max_k, prove, bmc)
        total_p += prove[1]
        total_b += bmc[1]
        ratio = f'{prove[1] / bmc[1]:8.2f}' if bmc[1] > 0 else f'{"-":>8}'
        shown = f'reachable at {expected}' if expected is not None else \
            'unreachable' if provable else 'unprovable'
        print(f'{name:20} {shown:16} {p_verdict:22} {prove[1]:7.3f} {b_verdict:22} {bmc[1]:7.3f} {ratio}',
              flush=True)
        if p_verdict.startswith('not proven') or p_verdict == 'timeout':
            unproven.append(f'{name}: {p_verdict}' + (f' (needs {needs})' if needs else ''))
        all_failures += [f'{name}: {f}' for f in failures]

    ratio = f'{total_p / total_b:.2f}' if total_b > 0 else '-'
    print(f'\ntotal CPU s: krait-prove {total_p:.2f}, krait {total_b:.2f}, ratio {ratio}')
    print_list('not proven', unproven)
    print_list('failures', all_failures, prefix='FAILED ')
    return 1 if all_failures else 0


if __name__ == '__main__':
    sys.exit(main())
