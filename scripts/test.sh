#!/usr/bin/env bash
# Sets up, builds and runs every test twice: in the optimised build and under AddressSanitizer
# with UndefinedBehaviorSanitizer; then fuzzes each libFuzzer target for about a minute. Exits
# non-zero on any failure.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/setup.sh
for flavour in release sanitize; do
  echo "== $flavour build"
  bash scripts/build.sh "$flavour"
  echo "== $flavour tests"
  (cd "build/$flavour" && ctest --output-on-failure -j "$(nproc)")
done
echo "== fuzz"
bash scripts/fuzz.sh 60
