#!/usr/bin/env bash
# Differential soundness on fresh seeds for a given time: random inputs through the optimised
# binary, every answer checked against brute force, z3 and the candidate box's own points.
#   scripts/differential.sh [HOURS] [JOBS] [OUT]
# defaults: 1 hour, every core, failures in build/differential-failures. Each failing input is
# minimised and saved there with its reports; the totals are printed at the end. KRAIT=path
# checks that binary instead of building the optimised one.
set -euo pipefail
cd "$(dirname "$0")/.."
hours=${1:-1}
jobs=${2:-$(nproc)}
out=${3:-build/differential-failures}

bash scripts/setup.sh
if [ -z "${KRAIT:-}" ]; then
  bash scripts/build.sh release >/dev/null
  KRAIT=build/release/krait
fi
exec /usr/bin/python3 tests/differential/differential.py "$KRAIT" \
  --hours "$hours" --jobs "$jobs" --out "$out" --minimise 120
