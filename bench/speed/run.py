#!/usr/bin/env python3
"""Speed of the search on the corpus, and proof that a faster binary runs the same search.

    run.py BINARY                        CPU seconds and bound assignments per CPU-second per problem
    run.py BASE NEW                      both side by side, with ratios; every report must be equal
    run.py BINARY --expected DIR         every report must equal the one kept in DIR
    run.py BINARY --write-expected DIR   keeps the reports in DIR
    --share FILE                         only the problems FILE names (one per line)
    --timeout S                          per run (default 120); a run that exceeds it is a failure

Reports are compared whole (standard output, standard error and exit status), with the banner's
version and date and the "time solver" values masked. CPU time is the child's user plus system
time as the kernel counts it. Exits 1 when a report differs, a run fails or times out.
"""
import argparse
import os
import re
import resource
import signal
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
CORPUS = HERE / 'corpus'


def mask(text):
    text = re.sub(r'^# This is Krait .*, compiled on .*\.$', '# This is Krait <version>, compiled on <date>.',
                  text, flags=re.M)
    return re.sub(r'^(    time solver +: ).*$', r'\1<time>', text, flags=re.M)


def options_of(problem):
    first = problem.read_text().split('\n', 1)[0]
    if not first.startswith('-- options:'):
        raise SystemExit(f'{problem}: the first line must be "-- options: ..."')
    return first[len('-- options:'):].split()


def run(binary, problem, timeout):
    """Runs one problem from the corpus folder; returns (masked report, CPU seconds, assignments)."""
    args = [str(Path(binary).resolve())] + options_of(problem) + [problem.name]
    proc = subprocess.Popen(args, cwd=CORPUS, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                            start_new_session=True)
    try:
        out, err = proc.communicate(timeout=timeout)
    except subprocess.TimeoutExpired:
        os.killpg(proc.pid, signal.SIGKILL)
        proc.communicate()
        usage = resource.getrusage(resource.RUSAGE_CHILDREN)
        run.used = usage.ru_utime + usage.ru_stime
        return None, float(timeout), 0
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    seconds = usage.ru_utime + usage.ru_stime - run.used
    run.used = usage.ru_utime + usage.ru_stime
    totals = re.findall(r'^    num assignments  : \d+ / (\d+)$', out, flags=re.M)
    assignments = int(totals[-1]) if totals else 0
    report = f'{mask(out)}--- stderr\n{mask(err)}--- exit status {proc.returncode}\n'
    return report, seconds, assignments


run.used = 0.0


def verdict(report):
    if report is None:
        return 'timeout'
    found = re.findall(r'^RESULT:\n    (.*)$', report, flags=re.M)
    return {'unsatisfiable': 'unsat', 'candidate solution box found': 'box'}.get(found[-1], '?') if found else '?'


def rate(assignments, seconds):
    return f'{assignments / seconds:11.0f}' if seconds > 0 else f'{"-":>11}'


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('binaries', nargs='+', metavar='BINARY')
    parser.add_argument('--expected', type=Path)
    parser.add_argument('--write-expected', type=Path)
    parser.add_argument('--share', type=Path)
    parser.add_argument('--timeout', type=float, default=120)
    a = parser.parse_args()
    if len(a.binaries) > 2:
        parser.error('one binary, or two to compare')
    problems = sorted(CORPUS.glob('*.krait'))
    if a.share:
        wanted = [line.strip() for line in a.share.read_text().splitlines() if line.strip()]
        problems = [CORPUS / f'{w}.krait' for w in wanted]
    if a.write_expected:
        a.write_expected.mkdir(parents=True, exist_ok=True)

    two = len(a.binaries) == 2
    head = f'{"problem":24} {"result":7} {"assignments":>11} {"CPU s":>8} {"per CPU-s":>11}'
    if two:
        head += f' {"new CPU s":>9} {"new per s":>11} {"speed-up":>8}'
    print(head)
    failures = []
    totals = [0, 0.0, 0.0]
    for problem in problems:
        name = problem.stem
        first, seconds, assignments = run(a.binaries[0], problem, a.timeout)
        line = f'{name:24} {verdict(first):7} {assignments:11d} {seconds:8.3f} {rate(assignments, seconds)}'
        totals[0] += assignments
        totals[1] += seconds
        if first is None:
            failures.append(f'{name}: timed out')
        report = first
        if two:
            second, new_seconds, _ = run(a.binaries[1], problem, a.timeout)
            totals[2] += new_seconds
            ratio = f'{seconds / new_seconds:8.2f}' if new_seconds > 0 else f'{"-":>8}'
            line += f' {new_seconds:9.3f} {rate(assignments, new_seconds)} {ratio}'
            if second != first:
                failures.append(f'{name}: the reports differ')
                line += '  REPORT DIFFERS'
            report = second
        if a.expected and report is not None:
            kept = (a.expected / f'{name}.out')
            if not kept.exists() or kept.read_text() != report:
                failures.append(f'{name}: the report differs from {kept}')
                line += '  DIFFERS FROM EXPECTED'
        if a.write_expected and report is not None:
            (a.write_expected / f'{name}.out').write_text(report)
        print(line, flush=True)
    total = f'{"total":24} {"":7} {totals[0]:11d} {totals[1]:8.3f} {rate(totals[0], totals[1])}'
    if two:
        ratio = f'{totals[1] / totals[2]:8.2f}' if totals[2] > 0 else f'{"-":>8}'
        total += f' {totals[2]:9.3f} {rate(totals[0], totals[2])} {ratio}'
    print(total)
    for f in failures:
        print(f'FAILED {f}', file=sys.stderr)
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main())
