# Sourced by the benchmark runners' self-tests: a scratch folder, a Python that has the project's
# modules' needs, and a check that a run of a runner ends with a status and says what it must.
python=$(command -v /usr/bin/python3 || command -v python3)
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
failures=0

check_run() {   # STATUS TEXT COMMAND...: COMMAND must exit with STATUS and print TEXT
    local status=$1 text=$2
    shift 2
    "$@" > "$tmp/out" 2>&1
    local got=$?
    if [ "$got" != "$status" ] || ! grep -qF -- "$text" "$tmp/out"; then
        echo "FAILED: $* exited $got (wanted $status) or did not print: $text"
        sed 's/^/    /' "$tmp/out"
        failures=$((failures + 1))
    else
        echo "ok: $text"
    fi
}

finish() {
    [ "$failures" = 0 ] && echo "selftest passed" || echo "selftest: $failures failed"
    [ "$failures" = 0 ]
}
