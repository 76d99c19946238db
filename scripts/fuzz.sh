#!/usr/bin/env bash
# Usage: scripts/fuzz.sh [seconds]
# Sets up, builds the libFuzzer targets (the CMake preset `fuzz`: clang, AddressSanitizer,
# UndefinedBehaviorSanitizer) and runs, through ctest, first a replay of each committed corpus
# and then each target for the given number of seconds (default 60) from its corpus. Exits
# non-zero on any crash, leak, timeout or sanitizer report; findings are written to
# build/fuzz/tests/fuzz/work/artifacts.
#
# A longer run of one target (after one run of this script), keeping what it finds in the build
# tree; objects stranded by fatal errors add about 1 MB per thousand inputs, hence the memory cap:
#   build/fuzz/tests/fuzz/fuzz_search -detect_leaks=0 -dict=tests/fuzz/krait.dict -timeout=30 \
#     -rss_limit_mb=4096 -max_total_time=1800 -artifact_prefix=build/fuzz/tests/fuzz/work/artifacts/search- \
#     build/fuzz/tests/fuzz/work/corpus-search tests/fuzz/corpus/search
# Folding new inputs into a committed corpus (kept small: only inputs that add coverage):
#   build/fuzz/tests/fuzz/fuzz_search -merge=1 tests/fuzz/corpus/search build/fuzz/tests/fuzz/work/corpus-search
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-60}
bash scripts/setup.sh
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
KRAIT_FUZZ_SECONDS=$seconds ctest --test-dir build/fuzz --output-on-failure -j 2
