"""Runs of krait-batch read back from their CSV: batch_test.py CASE KRAIT_BATCH KRAIT EXAMPLES VERSION,
CASE being examples, portfolio, limits or usage. Exit status 1 on a failed check."""
import csv
import io
import os
import re
import subprocess
import sys
import tempfile

CASE, BATCH, KRAIT, EXAMPLES, VERSION = sys.argv[1:6]
failures = []

# What the examples' own comments say: a box, the first depth that has one, or no end at all.
EXPECTED = {name: ("ok", "", "box", depths) for name, depths in [
    ("circle_line.krait", ""), ("nearest_point.krait", ""), ("pythagoras.krait", ""),
    ("counter.krait", "0-3:unsat 4:box"), ("braking.krait", "0-3:unsat 4:box"),
    ("thermostat.krait", "0-2:unsat 3:box")]}
EXPECTED["water_tank.krait"] = ("timeout", "killed after 2 s", "", r"0-\d+:unsat")


def check(condition, what):
    if not condition:
        failures.append(what)


def batch(*args, command=BATCH):
    run = subprocess.run([command, *args], capture_output=True, text=True, timeout=300)
    rows = list(csv.DictReader(io.StringIO(run.stdout))) if run.returncode == 0 else []
    return run, rows


def write(folder, name, text=""):
    with open(os.path.join(folder, name), "w") as f:
        f.write(text)
    return f.name


def examples():
    with tempfile.TemporaryDirectory() as work:
        out = os.path.join(work, "runs.csv")
        # the build's copy runs the krait beside it
        run, _ = batch("-j", "2", "--timeout", "2", "-o", out, EXAMPLES)
        check(run.returncode == 0 and run.stdout == "", f"examples: {run.returncode} {run.stderr}")
        check(not os.path.exists(out + ".part"), "the journal is removed")
        with open(out, newline="") as f:
            rows = list(csv.DictReader(f))
    names = sorted(name for name in os.listdir(EXAMPLES) if name.endswith(".krait"))
    check([row["file"] for row in rows] == [os.path.join(EXAMPLES, name) for name in names],
          f"one row per example, sorted: {[row['file'] for row in rows]}")
    for name, row in zip(names, rows):
        float(row["cpu"]), float(row["wall"])
        # an example not listed here only has to have its row
        status, message, verdict, depths = EXPECTED.get(name, (row["status"], row["message"], row["verdict"], ".*"))
        check((row["status"], row["message"], row["verdict"]) == (status, message, verdict)
              and re.fullmatch(depths, row["depths"]), f"{name}: {row}")
        if row["status"] == "ok":
            check(all(row[c].isdigit() for c in ("variables", "decisions", "conflicts")), f"{name}: {row}")


def portfolio():
    with tempfile.TemporaryDirectory() as work:
        lines = write(work, "portfolio", "# depths 3 to 5\n--min_depth 3 --max_depth 5\n\n  --minimize d\n")
        login = write(work, "machines", ":\n")     # the local machine, through the login file (no ssh server here)
        counter, nearest = (os.path.join(EXAMPLES, n) for n in ("counter.krait", "nearest_point.krait"))
        run, rows = batch("--command", KRAIT, "--options", "", "--portfolio", lines,
                          "--options", "--msw 0,1", nearest, counter, "--sshloginfile", login)
    expected = [
        (counter, "", "ok", "", "box", "0-3:unsat 4:box"),
        (counter, "--min_depth 3 --max_depth 5", "ok", "", "unsat", "3:unsat 4:box 5:unsat"),
        (counter, "--minimize d", "error", "Error: Optimization is not yet available in BMC mode!", "", ""),
        (counter, "--msw 0,1", "error", "Error: Invalid minimal splitting width '0,1'.", "", ""),
        (nearest, "", "ok", "", "box", ""),
        (nearest, "--min_depth 3 --max_depth 5", "ok", "", "box", ""),
        (nearest, "--minimize d", "ok", "", "box", ""),
        (nearest, "--msw 0,1", "error", "Error: Invalid minimal splitting width '0,1'.", "", "")]
    got = [tuple(row[c] for c in ("file", "options", "status", "message", "verdict", "depths")) for row in rows]
    check(run.returncode == 0 and got == expected, f"portfolio: {run.stderr} {got}")
    # the squared distance 2 of the example's comment, to the search's precision
    check(rows and abs(float(rows[6]["objective"]) - 2) < 0.05 and rows[5]["objective"] == "", f"{rows}")


STAND_IN = """#!/bin/sh
for input; do :; done
case "$input" in
  *crash*) kill -SEGV $$ ;;
  *hang*) sleep 60 & echo $! > "$input.child"; sleep 60 ;;
  *memory*) exec /usr/bin/python3 -c 'x = bytearray(1 << 31)' ;;
  *broken*) echo; echo "Error: Could not open input file." >&2; exit 1 ;;
  *) printf 'SOLVING:\\n    k = 0\\n\\nRESULT:\\n    unsatisfiable\\n' ;;
esac
"""


def limits():
    with tempfile.TemporaryDirectory() as work:
        for name in ("broken", "crash", "fine", "hang", "memory"):
            write(work, name + ".krait")
        stand_in = write(work, "solver", STAND_IN)
        os.chmod(stand_in, 0o755)
        run, rows = batch("--command", stand_in, "-j", "2", "--timeout", "1", "--memory", "300", work)
        with open(os.path.join(work, "hang.krait.child")) as f:
            child = int(f.read())
    got = [(os.path.basename(row["file"]), row["status"], row["message"], row["verdict"], row["depths"])
           for row in rows]
    check(run.returncode == 0 and got == [
        ("broken.krait", "error", "Error: Could not open input file.", "", ""),
        ("crash.krait", "crash", "SIGSEGV", "", ""),
        ("fine.krait", "ok", "", "unsat", "0:unsat"),
        ("hang.krait", "timeout", "killed after 1 s", "", ""),
        ("memory.krait", "memout", "MemoryError", "", "")], f"limits: {run.stderr} {got}")
    check(1 <= float(rows[3]["wall"]) < 10, f"the timeout's wall time: {rows[3]['wall']}")
    try:
        with open(f"/proc/{child}/stat") as f:
            state = f.read().rsplit(")", 1)[1].split()[0]
    except OSError:
        state = "gone"
    check(state in ("gone", "Z"), "the timed-out run's child is still running")


def usage():
    with tempfile.TemporaryDirectory() as empty:
        comments = write(empty, "portfolio", "# nothing\n\n")
        for args, message in [
                ((), f"No input specified. Try {BATCH} --help."),
                (("--bogus", EXAMPLES), f"Invalid option '--bogus'. Try {BATCH} --help."),
                (("-j", "0", EXAMPLES), "Invalid number of jobs '0'."),
                (("--timeout", "-1", EXAMPLES), "Please specify the time limit."),
                (("--memory", "1.5", EXAMPLES), "Invalid memory limit '1.5'."),
                (("nothing.krait",), "Could not read input file 'nothing.krait'."),
                ((empty,), f"No file ending in '.krait' in folder '{empty}'."),
                (("--portfolio", comments, EXAMPLES), f"No option combination in portfolio file '{comments}'."),
                (("--options", "--minimize 'd", EXAMPLES),
                 "Unbalanced quotes in the option combination of --options: --minimize 'd"),
                (("--command", "no-such-solver", EXAMPLES), "Could not find the command 'no-such-solver'."),
                (("--sshloginfile", empty, EXAMPLES), f"Could not read ssh login file '{empty}'.")]:
            run, _ = batch(*args)
            check((run.returncode, run.stdout, run.stderr) == (1, "", f"\nError: {message}\n"),
                  f"usage {args}: {run.returncode} {run.stderr!r}")
    source = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "scripts", "krait-batch")
    for command in (BATCH, source):     # the clone's file reads the version from the project
        run, _ = batch("--version", command=command)
        check(run.stdout == f"\nkrait-batch (Krait's batch runner), version {VERSION}.\n\n", run.stdout)
    run, _ = batch("--help")
    check(run.stdout.startswith(f"\nUsage: {BATCH} [options] INPUT...\n\n") and
          run.stdout.endswith("   Please report bugs to <krait-bugs@example.org>.\n\n"), run.stdout)


{"examples": examples, "portfolio": portfolio, "limits": limits, "usage": usage}[CASE]()
for failure in failures:
    print("FAILED:", failure)
sys.exit(1 if failures else 0)
