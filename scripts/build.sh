#!/usr/bin/env bash
# Configures and builds one flavour of Krait: `release` (default) or `sanitize`.
set -euo pipefail
cd "$(dirname "$0")/.."

flavour=${1:-release}
case "$flavour" in
  release) options=(-DCMAKE_BUILD_TYPE=Release) ;;
  sanitize) options=(-DCMAKE_BUILD_TYPE=Debug -DKRAIT_SANITIZE=ON) ;;
  *) echo "unknown build flavour '$flavour' (release or sanitize)" >&2; exit 2 ;;
esac
cmake -S . -B "build/$flavour" -G Ninja "${options[@]}" >/dev/null
cmake --build "build/$flavour"
