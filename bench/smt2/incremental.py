#!/usr/bin/env python3
"""Incremental scripts: krait-smt2 keeping its solver contexts beside krait-smt2 --from-scratch.

    incremental.py KRAIT_SMT2 [--depth K] [--timeout S] [--keep DIR] [MODEL.krait ...]

Each transition system (default: bench/prove/models) becomes a script of bounded model
checking as a tool drives a solver: the states of step 0 declared and ranged, INIT asserted,
then for k = 0, 1, ...: the states of step k and TRANS from k - 1 to k asserted (k > 0),
(push 1), TARGET at step k asserted, (check-sat), (pop 1). The script stops at the depth
`-- expected: reachable at K` names, or at --depth (default 30). The parts come from
`krait-smt2 --from-krait` on the model with the other parts replaced by `true`, their
variables renamed to each step.

Every script runs both ways; the columns give the check-sats, the answers with contexts in runs
(u unsat, s sat, ? unknown, e error: u45 s1 is 45 unsat, then a sat), the CPU seconds of each way (user plus system, child processes
included) and the ratio of from-scratch time to incremental time. Exits 1 when an answer
contradicts the other way's or the model's expected verdict (sat before the first reachable
depth or where the target is unreachable; unsat at it), or a run fails.
"""
import argparse
import re
import subprocess
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))
from timed import timed_run  # noqa: E402

MODELS = Path(__file__).resolve().parent.parent / 'prove' / 'models'
SECTIONS = ('DECL', 'INIT', 'TRANS', 'INVARIANT', 'TARGET')


def sections(text):
    """The model's sections by keyword (comments dropped)."""
    out, current = {}, None
    for line in text.splitlines():
        line = line.split('--', 1)[0]
        word = line.strip()
        if word in SECTIONS:
            current = word
            out[current] = ''
        elif current:
            out[current] += line + '\n'
    return out


def part(krait_smt2, parts, keep, depth):
    """(logic, declarations, bounds, assertion) of one part at steps 0 (and 1 for TRANS)."""
    text = 'DECL\n' + parts['DECL'] + ''.join(
        f'{name}\n' + (parts[name] if name == keep else '  true;\n') for name in ('INIT', 'TRANS', 'TARGET'))
    with tempfile.NamedTemporaryFile('w', suffix='.krait') as f:
        f.write(text)
        f.flush()
        script = subprocess.run([krait_smt2, '--from-krait', f.name, '--depth', str(depth)],
                                capture_output=True, text=True, check=True).stdout
    lines = script.splitlines()
    logic = next(l for l in lines if l.startswith('(set-logic'))
    declarations = [l for l in lines if l.startswith('(declare-const')]
    asserts = [l for l in lines if l.startswith('(assert')]
    return logic, declarations, asserts[:-1], asserts[-1]


def at_step(line, shift):
    """The line with every instance name@i renamed to name@(i + shift)."""
    return re.sub(r'@(\d+)\b', lambda m: '@' + str(int(m.group(1)) + shift), line)


def expectation(text):
    m = re.search(r'^-- expected: (reachable at (\d+)|unreachable|unprovable)', text, re.M)
    return int(m.group(2)) if m and m.group(2) else None


def script(krait_smt2, model, depth):
    """The incremental script of a model and the depth of its last check-sat."""
    text = model.read_text()
    parts = sections(text)
    reachable = expectation(text)
    last = min(depth, reachable) if reachable is not None else depth
    logic, init_decls, init_bounds, init = part(krait_smt2, parts, 'INIT', 0)
    trans_logic, trans_decls, trans_bounds, trans = part(krait_smt2, parts, 'TRANS', 1)
    _, target_decls, target_bounds, target = part(krait_smt2, parts, 'TARGET', 0)
    declared = set()
    out = [f'; {model.name}: bounded model checking to depth {last}, one check-sat per depth', trans_logic]

    def declare(decls, bounds, shift):
        for d in decls + bounds:
            d = at_step(d, shift)
            if d not in declared:
                declared.add(d)
                out.append(d)

    declare(init_decls + target_decls, init_bounds + target_bounds, 0)
    out.append(init)
    for k in range(last + 1):
        if k > 0:
            declare(trans_decls, trans_bounds, k - 1)
            out.append(at_step(trans, k - 1))
        out += ['(push 1)', at_step(target, k), '(check-sat)', '(pop 1)']
    out.append('(exit)')
    return '\n'.join(out) + '\n', last, reachable


def answers(text):
    lines = [l.strip() for l in text.splitlines() if l.strip()]
    return ''.join({'unsat': 'u', 'sat': 's', 'unknown': '?'}.get(l, 'e') for l in lines)


def runs_of(answers):
    """u45 s1 for 45 unsat, then 1 sat."""
    out = []
    for a in answers:
        if out and out[-1][0] == a:
            out[-1][1] += 1
        else:
            out.append([a, 1])
    return ' '.join(f'{a}{n}' for a, n in out)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('krait_smt2')
    parser.add_argument('models', nargs='*', type=Path)
    parser.add_argument('--depth', type=int, default=30)
    parser.add_argument('--timeout', type=float, default=300)
    parser.add_argument('--keep', type=Path, help='writes the scripts into this folder')
    args = parser.parse_intermixed_args()
    models = args.models or sorted(MODELS.glob('*.krait'))
    failures = []
    totals = [0.0, 0.0]
    print(f'{"model":20} {"checks":>6}  {"answers":16} {"contexts s":>10} {"scratch s":>10} {"ratio":>6}')
    with tempfile.TemporaryDirectory() as work:
        for model in models:
            text, last, reachable = script(args.krait_smt2, model, args.depth)
            path = (args.keep or Path(work)) / (model.stem + '.smt2')
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
            runs = {}
            for way, command in (('contexts', [args.krait_smt2]), ('scratch', [args.krait_smt2, '--from-scratch'])):
                status, seconds, out = timed_run(command + [str(path)], args.timeout, merge_stderr=False)
                runs[way] = (status, seconds, answers(out))
            (s1, t1, a1), (s2, t2, a2) = runs['contexts'], runs['scratch']
            totals[0] += t1
            totals[1] += t2
            print(f'{model.stem:20} {last + 1:6}  {runs_of(a1):16} {t1:10.2f} {t2:10.2f} {t2 / max(t1, 0.01):6.1f}', flush=True)
            for way, (status, _, got) in runs.items():
                if status != 0 or len(got) != last + 1 or 'e' in got:
                    failures.append(f'{model.stem}: the run {way} failed (status {status}, answers {got})')
            for k, (x, y) in enumerate(zip(a1, a2)):
                if {x, y} == {'s', 'u'}:
                    failures.append(f'{model.stem}: depth {k} sat one way, unsat the other')
            for k, x in enumerate(a1):
                wrong = (x == 's' and (reachable is None or k < reachable)) or (x == 'u' and k == reachable)
                if wrong:
                    failures.append(f'{model.stem}: depth {k} answered {x} against the expectation')
    print(f'{"total":20} {"":6}  {"":16} {totals[0]:10.2f} {totals[1]:10.2f} {totals[1] / max(totals[0], 0.01):6.1f}')
    for f in failures:
        print('FAILURE:', f)
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main())
