#!/usr/bin/env bash
# Runs the binary with a case's arguments from the project's root, as the program name `krait`,
# and compares standard output, standard error and the exit status with the expected files.
# Only the version and build date and the solver's CPU times are masked.
set -u
binary=$1
case_dir=$2

args=()
while IFS= read -r line || [ -n "$line" ]; do
  args+=("$line")
done < "$case_dir/args"

actual=$(mktemp -d)
trap 'rm -rf "$actual"' EXIT
(exec -a krait "$binary" "${args[@]}") >"$actual/stdout.raw" 2>"$actual/stderr.raw" </dev/null
echo $? >"$actual/status"

mask() {
  sed -E -e 's/^# This is Krait .*, compiled on .*\.$/# This is Krait <version>, compiled on <date>./' \
         -e 's/^Krait, version .*, revision number is unknown\.$/Krait, version <version>, revision number is unknown./' \
         -e '/time solver/ s/[0-9][0-9.e+-]*/<time>/g' "$1"
}
mask "$actual/stdout.raw" >"$actual/stdout"
mask "$actual/stderr.raw" >"$actual/stderr"

failed=0
for stream in stdout stderr status; do
  if ! diff -u --label "expected $stream" --label "actual $stream" "$case_dir/$stream" "$actual/$stream"; then
    failed=1
  fi
done
exit $failed
