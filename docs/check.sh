#!/usr/bin/env bash
# Checks the documentation against the program:
#  - every manual page in docs/man renders with groff without a warning;
#  - every complete input shown in docs/language.md (a ```krait block) is accepted by krait;
#  - every output shown after a marker <!-- run: PROGRAM ARGS --> appears, line for line, in
#    what that command prints now (stdout and stderr together). In ARGS, {name.krait} stands
#    for the latest ```krait block, saved under that name; examples/ is the shipped folder.
#    The banner's version and date and the solver times are not compared.
# Usage: docs/check.sh PATH/TO/krait   (the companions are looked for beside it)
set -euo pipefail

if [ $# -ne 1 ] || [ ! -x "$1" ]; then
  echo "usage: $0 PATH/TO/krait" >&2
  exit 1
fi
krait=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
docs=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

status=0
if ! command -v groff >/dev/null 2>&1; then
  echo "groff is needed to check the manual pages (Debian package groff-base)" >&2
  exit 1
fi
for page in "$docs"/man/*.1; do
  warnings=$(groff -man -Tutf8 -ww -z "$page" 2>&1)
  if [ -n "$warnings" ]; then
    echo "$page: groff warns:" >&2
    echo "$warnings" >&2
    status=1
  fi
done

# krait's page names every option of its help page and the bug address the program prints.
help=$("$krait" --help)
while read -r option; do
  if ! grep -q -- "^\.B[I]* \\\\-\\\\-${option#--}\b" "$docs/man/krait.1"; then
    echo "$docs/man/krait.1: no entry for $option" >&2
    status=1
  fi
done < <(grep -o -- '^   --[a-z_]*' <<<"$help" | tr -d ' ')
address=$(grep -o '<[^>]*>' <<<"$help")
if ! grep -qF -- "$address" "$docs/man/krait.1"; then
  echo "$docs/man/krait.1: the bug address is not $address" >&2
  status=1
fi

python3 - "$krait" "$docs/language.md" "$docs/../examples" <<'EOF' || status=1
import os, re, shlex, subprocess, sys, tempfile

krait, reference, examples = sys.argv[1:4]
programs = os.path.dirname(krait)
failures = []

def masked(text):
    lines = []
    for line in text.splitlines():
        line = re.sub(r'^# This is Krait .*', '# This is Krait (version and date)', line)
        line = re.sub(r'^(\s*time solver\s*:).*', r'\1 (times)', line)
        lines.append(line.rstrip())
    return lines

def contains(output, block):
    n = len(block)
    return any(output[i:i + n] == block for i in range(len(output) - n + 1))

def run(program, args, cwd):
    # argv[0] is the bare name, as the reader would type it.
    return subprocess.run([program] + args, executable=os.path.join(programs, program), cwd=cwd,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=120)

# Fenced blocks in order: (line number, info string, text, run marker or None).
blocks, marker, fence, body = [], None, None, []
for number, line in enumerate(open(reference, encoding='utf-8'), 1):
    line = line.rstrip('\n')
    if fence is None:
        if line.startswith('```'):
            fence, body = (number, line[3:].strip(), marker), []
        else:
            found = re.fullmatch(r'<!-- run: (.*) -->', line.strip())
            marker = found.group(1) if found else (marker if not line.strip() else None)
    elif line.startswith('```'):
        blocks.append((fence[0], fence[1], '\n'.join(body) + '\n', fence[2]))
        fence, marker = None, None
    else:
        body.append(line)

with tempfile.TemporaryDirectory() as work:
    os.symlink(os.path.abspath(examples), os.path.join(work, 'examples'))
    latest, used = None, set()
    for number, info, text, command in blocks:
        where = f'{reference}:{number}'
        if info == 'krait':
            latest = (number, text)
        if command is None:
            continue
        words = shlex.split(command)
        args = []
        for word in words[1:]:
            saved = re.fullmatch(r'\{(.+)\}', word)
            if saved:
                if latest is None:
                    failures.append(f'{where}: {word} before any krait block')
                    continue
                with open(os.path.join(work, saved.group(1)), 'w') as out:
                    out.write(latest[1])
                used.add(latest[0])
                word = saved.group(1)
            args.append(word)
        result = run(words[0], args, work)
        if 'Unmatched character' in result.stdout:
            failures.append(f'{where}: `{command}` meets characters outside the language:\n'
                            + result.stdout)
        elif not contains(masked(result.stdout), masked(text)):
            failures.append(f'{where}: `{command}` no longer prints this block; it prints:\n'
                            + result.stdout)
    for number, info, text, _ in blocks:
        if info != 'krait' or number in used:
            continue
        path = os.path.join(work, 'input.krait')
        with open(path, 'w') as out:
            out.write(text)
        depth = ['--max_depth', '5'] if 'TARGET' in text else []
        result = run('krait', ['--nostats', '--nosol'] + depth + ['input.krait'], work)
        complaints = [l for l in result.stdout.splitlines()
                      if l.startswith(('Warning:', 'Unmatched character', 'Error'))]
        if result.returncode != 0 or complaints:
            failures.append(f'{reference}:{number}: krait does not accept this input '
                            f'(status {result.returncode}):\n' + result.stdout)

for failure in failures:
    print(failure, file=sys.stderr)
sys.exit(1 if failures else 0)
EOF

exit $status
