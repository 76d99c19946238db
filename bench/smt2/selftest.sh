#!/bin/bash
# Checks that run.py catches wrong answers: z3 stands in for krait-smt2 through wrappers, some of
# which lie on one problem. Needs z3; cvc5 is used where installed.
set -u
here=$(cd "$(dirname "$0")" && pwd)
. "$here/../selftest_common.sh"

wrapper() {     # NAME PROBLEM ANSWER: prints ANSWER for PROBLEM, asks z3 otherwise
    printf '#!/bin/sh\ncase "$1" in\n  */%s.smt2) echo %s ;;\n  *) exec z3 -smt2 "$1" ;;\nesac\n' "$2" "$3" > "$tmp/$1"
    chmod +x "$tmp/$1"
}

expect() {      # STATUS TEXT ARGS...: run.py ARGS must exit with STATUS and print TEXT
    local status=$1 text=$2
    shift 2
    check_run "$status" "$text" env PATH="${run_path:-$PATH}" "$python" "$here/run.py" "$@" --timeout 20
}

# circles_01 is unsat by construction, factor_00 sat with an integer model, circles_00 sat where
# z3's model has algebraic values
printf 'circles_01\nfactor_00\n' > "$tmp/share"
peers=z3
command -v cvc5 > /dev/null && peers=z3,cvc5
wrapper right none none
wrapper wrong-sat circles_01 sat
wrapper wrong-unsat factor_00 unsat
expect 0 'disagreements: none' "$tmp/right" --share "$tmp/share" --peers "$peers"
expect 1 'SOUNDNESS BUG circles_01: krait-smt2 says sat, z3 says unsat' "$tmp/wrong-sat" --share "$tmp/share" --peers "$peers"
expect 1 'SOUNDNESS BUG circles_01: krait-smt2 says sat, unsat by construction' "$tmp/wrong-sat" --share "$tmp/share" --peers z3
expect 1 "SOUNDNESS BUG factor_00: krait-smt2 says unsat, z3's model satisfies every assertion (exact check)" \
    "$tmp/wrong-unsat" --share "$tmp/share" --peers z3

# without the header, only the peer's model could convict; an irrational one cannot
mkdir "$tmp/plain"
grep -v '^; expected:' "$here/problems/circles_00.smt2" > "$tmp/plain/circles_00.smt2"
wrapper wrong-irrational circles_00 unsat
expect 0 "circles_00: krait-smt2 says unsat, z3 says sat; its model unchecked: cannot evaluate (root-obj ...)" \
    "$tmp/wrong-irrational" --dir "$tmp/plain" --peers z3

# a peer that is not installed is named, and the run goes on with the others
mkdir "$tmp/bin"
ln -s "$(command -v z3)" "$tmp/bin/z3"
run_path="$tmp/bin" expect 0 'cvc5 is not installed (apt-get install -y cvc5); running without it' \
    "$tmp/right" --share "$tmp/share" --peers z3,cvc5

finish
