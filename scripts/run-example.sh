#!/usr/bin/env bash
# Sets up, builds Krait and runs it on a shipped example (or on the arguments given).
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/setup.sh
bash scripts/build.sh release >/dev/null
if [ $# -eq 0 ]; then
  set -- examples/circle_line.krait
fi
exec build/release/krait "$@"
