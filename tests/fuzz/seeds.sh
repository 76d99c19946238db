#!/usr/bin/env bash
# seeds.sh <frontend dir> <search dir>: writes seed inputs built from the examples and the
# end-to-end inputs. The frontend gets the files as they are; the search gets each file behind a
# few settings headers (see fuzz_search.cpp): defaults; reuse and shifting to depth 3; variable
# order 5 with restarts and a fine split width; depths 2 to 5 with the finest split width.
# Merge them into the committed corpora with the fuzzer's -merge=1.
set -euo pipefail
cd "$(dirname "$0")/../.."
frontend=$1
search=$2
mkdir -p "$frontend" "$search"
headers=('\x00\x00\x00\x00' '\x63\x00\x00\x00' '\xe4\x05\x35\x29' '\x78\x00\x09\x00')
for file in examples/*.krait tests/e2e/inputs/*.krait; do
  name=$(basename "$file" .krait)
  cp "$file" "$frontend/$name"
  for i in "${!headers[@]}"; do
    { printf "${headers[$i]}"; cat "$file"; } >"$search/$name-$i"
  done
done
