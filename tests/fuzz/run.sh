#!/usr/bin/env bash
# run.sh replay|fuzz <fuzzer binary> <frontend|search>
#   replay: runs every committed input, twice each, failing on a finding or on a second run
#           whose report differs from the first;
#   fuzz:   fuzzes for KRAIT_FUZZ_SECONDS (default 60) from the committed corpus, keeping new
#           inputs in the build tree, and fails on any crash, leak, timeout or sanitizer report.
# run.sh after <fuzzer binary> <regression folder>
#   runs the folder's `input` alone and after its `earlier` input, failing unless both reports
#   of `input` are the same (state left behind by an earlier input).
set -euo pipefail
mode=$1
binary=$2
name=$3
here=$(cd "$(dirname "$0")" && pwd)
work=$(dirname "$binary")/work

# Leaks are checked once, when the process ends, not by libFuzzer after every input: a fatal
# error strands what the program never frees on its way out (the harness exempts those objects
# from the report), and libFuzzer would take each such input for a leak candidate and re-check
# the whole heap for it.
common=(-timeout=30 -rss_limit_mb=2048 -detect_leaks=0 -artifact_prefix="$work/artifacts/$name-")

# The verbose report of the last input named `input`, without libFuzzer's own lines.
report_of_input() {
  KRAIT_FUZZ_VERBOSE=1 "$binary" -detect_leaks=0 "$@" 2>&1 | sed -n '/^Running: .*\/input$/,/^Executed /p' | sed '1d;$d'
}

case "$mode" in
  replay)
    mkdir -p "$work/artifacts"
    KRAIT_FUZZ_TWICE=1 exec "$binary" "${common[@]}" -runs=0 "$here/corpus/$name" ;;
  fuzz)
    mkdir -p "$work/artifacts" "$work/corpus-$name"
    dict="$here/krait.dict"
    [ -f "$here/$name.dict" ] && dict="$here/$name.dict"
    exec "$binary" "${common[@]}" -dict="$dict" -max_total_time="${KRAIT_FUZZ_SECONDS:-60}" \
      -print_final_stats=1 "$work/corpus-$name" "$here/corpus/$name" ;;
  after)
    alone=$(report_of_input "$name/input")
    following=$(report_of_input "$name/earlier" "$name/input")
    [ -n "$alone" ] || { echo "no report of $name/input" >&2; exit 1; }
    diff <(echo "$alone") <(echo "$following") ;;
  *) echo "unknown mode '$mode' (replay, fuzz or after)" >&2; exit 2 ;;
esac
