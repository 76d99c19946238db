#!/bin/bash
# Checks that run.py catches wrong answers: wrappers around the real krait and krait-prove lie
# about one model each, and each lie must be caught.    selftest.sh KRAIT KRAIT_PROVE
set -u
here=$(cd "$(dirname "$0")" && pwd)
krait=$(realpath "$1")
prove=$(realpath "$2")
. "$here/../selftest_common.sh"

wrapper() {     # NAME REAL MODEL FILTER [STATUS]: REAL's output through FILTER on MODEL, else as is
    local status='${PIPESTATUS[0]}'
    [ $# -ge 5 ] && status=$5
    cat > "$tmp/$1" <<END
#!/bin/bash
case "\$*" in
  */$3.krait) "$2" "\$@" | $4; exit $status ;;
  *) exec "$2" "\$@" ;;
esac
END
    chmod +x "$tmp/$1"
}

expect() {      # STATUS TEXT KRAIT KRAIT_PROVE: run.py must exit with STATUS and print TEXT
    check_run "$1" "$2" "$python" "$here/run.py" "$3" "$4" --share "$tmp/share" --timeout 60
}

printf 'binary_counter\ncounter_reset\nmod_branch_loop\nnested_clock\n' > "$tmp/share"
expect 0 'failures: none' "$krait" "$prove"

# a proof of a model reachable at 45
wrapper proof-of-reachable "$prove" nested_clock \
    "sed 's/target reachable at depth 45/target unreachable at every depth (proved by induction at k = 3)/'"
expect 1 'FAILED nested_clock: WRONG PROOF: krait-prove proves it unreachable (k = 3), krait finds a box at depth 45' \
    "$krait" "$tmp/proof-of-reachable"
expect 1 'FAILED nested_clock: krait-prove proves it unreachable (k = 3), reachable at 45 by construction' \
    "$krait" "$tmp/proof-of-reachable"

# an unsatisfiable step case on a deep model, though the result is right
wrapper deep-step "$prove" nested_clock "sed '0,/step case: candidate/s/step case: candidate solution box found/step case: unsatisfiable/'"
expect 1 'FAILED nested_clock: krait-prove finds the step case unsatisfiable at k = 0, but the target is reachable at 45' \
    "$krait" "$tmp/deep-step"

# reachable one step late, and reachable where nothing is
wrapper late "$prove" binary_counter "sed 's/target reachable at depth 7/target reachable at depth 8/'"
expect 1 'FAILED binary_counter: krait-prove says reachable at 8, krait first finds a box at depth 7' "$krait" "$tmp/late"
expect 1 'FAILED binary_counter: krait-prove says reachable at 8, expected 7' "$krait" "$tmp/late"
wrapper false-reach "$prove" mod_branch_loop \
    "sed 's/target unreachable at every depth (proved by induction at k = 4)/target reachable at depth 4/'"
expect 1 'FAILED mod_branch_loop: krait-prove says reachable at 4, unreachable by construction' "$krait" "$tmp/false-reach"

# an unreachable model left unproven
wrapper give-up "$prove" mod_branch_loop \
    "sed 's/target unreachable at every depth (proved by induction at k = 4)/not proven up to k = 50/'"
expect 1 'FAILED mod_branch_loop: krait-prove does not prove it within k = 50, unreachable by construction' \
    "$krait" "$tmp/give-up"

# a base case that disagrees with krait at its depth
wrapper base "$prove" counter_reset "sed 's/base case: unsatisfiable/base case: candidate solution box found/'"
expect 1 'FAILED counter_reset: base case at k = 0 says "candidate solution box found", krait at depth 0 "unsatisfiable"' \
    "$krait" "$tmp/base"

# krait finding a box beyond the proving k, and krait skipping a depth
wrapper box-at-30 "$krait" counter_reset \
    "sed '/^    k = 30\$/,/^    unsatisfiable\$/s/^    unsatisfiable\$/    candidate solution box found/'"
expect 1 'FAILED counter_reset: WRONG PROOF: krait-prove proves it unreachable (k = 1), krait finds a box at depth 30' \
    "$tmp/box-at-30" "$prove"
wrapper gap "$krait" counter_reset "sed 's/^    k = 17\$/    k = 71/'"
expect 1 'FAILED counter_reset: krait --max_depth 50 reports no verdict at depth 17' "$tmp/gap" "$prove"

# exit statuses
wrapper crash "$prove" counter_reset cat 1
expect 1 'FAILED counter_reset: krait-prove exited 1 without a result' "$krait" "$tmp/crash"
wrapper bmc-crash "$krait" binary_counter cat 134
expect 1 'FAILED binary_counter: krait --max_depth 50 exited 134' "$tmp/bmc-crash" "$prove"

finish
