#!/usr/bin/env python3
"""Round trips: a Krait input written as SMT-LIB by krait-smt2 --from-krait and read back by
--to-krait must give the same report for a plain formula (every number is written as the double
the program reads, min and max as the ite they are). Only the answer is compared for inputs with
nrt, which SMT-LIB lacks, and for transition systems, unwound to the depth their own run ends at.
Inputs with integers beyond what a double holds exactly are listed apart.

    round_trip.py KRAIT KRAIT_SMT2 FILE...      (exit status 1 on a difference)
"""
import itertools
import re
import subprocess
import sys
import tempfile
from pathlib import Path

SYSTEM = re.compile(r'^\s*TRANS\b', re.M)
# Inputs whose search may change on the way back, and why.
SEARCH_CHANGES = {
    'split_whole_double_range.krait': 'its own bound x <= 1e308 repeats the declared range and is dropped',
}


def run(args, stdin=None):
    return subprocess.run(args, input=stdin, capture_output=True, text=True, timeout=600)


def report(krait, path):
    """Everything from the settings on, CPU times dropped."""
    text = path.read_text()
    given = text.splitlines()[0][len('-- options:'):].split() if text.startswith('-- options:') else []
    # A system unwound until it is satisfied may never end: six steps at most unless said.
    if SYSTEM.search(text) and '--max_depth' not in given:
        given += ['--max_depth', '6']
    lines = run([krait, *given, str(path)]).stdout.splitlines()
    start = next((i for i, line in enumerate(lines) if line.startswith('SETTINGS:')), 0)
    # SMT-LIB has no static constants; in a plain formula the word is only the solution's label.
    return [line.replace(' (static ', ' (') for line in lines[start:] if 'time solver' not in line]


def answers(lines):
    return [line.strip() for line in lines if line.strip() in ('unsatisfiable', 'candidate solution box found')]


def main():
    krait, smt2, files = sys.argv[1], sys.argv[2], [Path(f) for f in sys.argv[3:]]
    failures = same_report = same_answer = too_large = 0
    with tempfile.TemporaryDirectory() as tmp:
        for path in files:
            text = path.read_text()
            system = SYSTEM.search(text) is not None
            original = report(krait, path)
            if not answers(original):
                continue  # an input the program refuses says nothing about conversion
            depths = re.findall(r'^    k = (\d+)$', '\n'.join(original), re.M)
            written = run([smt2, '--from-krait', str(path), *(['--depth', depths[-1]] if system else [])])
            read = run([smt2, '--to-krait', '/dev/stdin'], written.stdout)
            if written.returncode or read.returncode:
                if 'is too large' in read.stderr:
                    print(f'{path}: not convertible exactly (integers beyond 2^53 that no double holds)')
                    too_large += 1
                    continue
                print(f'{path}: conversion failed: {written.stderr}{read.stderr}')
                failures += 1
                continue
            # The options line comes along, so that both searches run with the same settings.
            back = Path(tmp) / path.name
            back.write_text((text.splitlines()[0] + '\n' if text.startswith('-- options:') else '') + read.stdout)
            again = report(krait, back)
            want = answers(original)[-1:] if system else answers(original)
            if answers(again) != want:
                print(f'{path}: answer {answers(again)} after the round trip, {want} before')
                failures += 1
            elif system or re.search(r'\bnrt\s*\(', text) or path.name in SEARCH_CHANGES:
                same_answer += 1
            elif again != original:
                a, b = next((a, b) for a, b in itertools.zip_longest(original, again, fillvalue='(none)') if a != b)
                print(f'{path}: the report differs after the round trip\n    before: {a}\n    after:  {b}')
                failures += 1
            else:
                same_report += 1
    print(f'{same_report + same_answer + too_large + failures} inputs: {same_report} with the same report, '
          f'{same_answer} with the same answer (unwound systems, nrt, {len(SEARCH_CHANGES)} listed), '
          f'{too_large} not convertible, {failures} failing')
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main())
