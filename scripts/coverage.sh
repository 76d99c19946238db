#!/usr/bin/env bash
# Line coverage of the sources under src/ by the whole test suite: builds an instrumented copy
# in build/coverage (or $KRAIT_COVERAGE_BUILD), runs ctest there and prints one line per source
# file and the total.
# Usage: scripts/coverage.sh [ctest arguments...]
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/setup.sh
build=${KRAIT_COVERAGE_BUILD:-build/coverage}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS=--coverage >/dev/null
cmake --build "$build" >/dev/null
find "$build" -name '*.gcda' -delete
(cd "$build" && ctest -j "$(nproc)" "$@" >/dev/null) || echo "(some tests failed; coverage is of the run as it was)"

root=$(pwd)
report=$(mktemp)
trap 'rm -f "$report"' EXIT
# gcov names each source it has data for and the share of its lines executed; the objects of one
# source may be compiled into several targets, so keep the best figure per source.
find "$build" -name '*.gcda' | while read -r data; do
  (cd "$(dirname "$data")" && gcov -n "$(basename "$data")" 2>/dev/null) || true
done | awk -v root="$root/" '
  /^File / { file = substr($2, 2, length($2) - 2); sub(root, "", file); next }
  /^Lines executed:/ && file ~ /^src\// {
    split($2, a, ":"); pct = a[2]; sub("%", "", pct); n = $4
    hit = int(pct * n / 100 + 0.5)
    if (!(file in lines) || hit > covered[file]) { lines[file] = n; covered[file] = hit }
    file = ""
  }
  END {
    for (f in lines) { printf "%6.1f%%  %5d  %s\n", 100 * covered[f] / lines[f], lines[f], f; t += lines[f]; c += covered[f] }
    printf "TOTAL %.1f%% of %d lines\n", 100 * c / t, t
  }' | sort -k3 >"$report"
cat "$report"
