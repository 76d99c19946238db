#!/usr/bin/env bash
# Runs each command line of options.table as an end-to-end case (see run_case.sh).
set -u
binary=$1
here=$(cd "$(dirname "$0")" && pwd)
case_dir=$(mktemp -d)
trap 'rm -rf "$case_dir"' EXIT
runs=0
failures=0
while IFS= read -r line; do
  [[ -z $line || $line == \#* ]] && continue
  read -r status stdout words <<<"${line%%=>*}"
  message=${line#*=>}
  message=${message# }
  eval "args=($words)"
  : >"$case_dir/args"
  for arg in "${args[@]}"; do printf '%s\n' "$arg" >>"$case_dir/args"; done
  echo "$status" >"$case_dir/status"
  case $stdout in
    -) : ;;
    banner) printf '\n# This is Krait <version>, compiled on <date>.\n' ;;
    version) printf '\nKrait, version <version>, revision number is unknown.\n\n' ;;
    @*) cat "$here/cases/${stdout#@}/stdout" ;;
  esac >"$case_dir/stdout"
  if [ -n "$message" ]; then printf '\nError: %b\n' "$message"; fi >"$case_dir/stderr"
  runs=$((runs + 1))
  if ! bash "$here/run_case.sh" "$binary" "$case_dir"; then
    echo "FAILED: ${line%%=>*}"
    failures=$((failures + 1))
  fi
done <"$here/options.table"
echo "options: $runs command lines, $failures failed"
[ "$failures" -eq 0 ] && [ "$runs" -gt 0 ]
