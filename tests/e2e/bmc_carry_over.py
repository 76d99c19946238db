#!/usr/bin/env python3
"""Bounded model checking across depths: carrying learned clauses over (--reuse, --shifting)
never changes a verdict, the clause counters keep their relations, and what the target adds at
one depth is gone at the next, so the solver grows by exactly one transition per depth."""
import re
import resource
import subprocess
import sys

KRAIT = sys.argv[1]
MODELS = [("examples/water_tank.krait", 6), ("examples/counter.krait", 5),
          ("tests/e2e/inputs/counter_small_target.krait", 3), ("tests/e2e/inputs/long_counter.krait", 8)]
CARRY = [[], ["--reuse"], ["--reuse", "--shifting"]]
failures = []


def run(model, options):
    out = subprocess.run([KRAIT, "--nosol", *options, model], capture_output=True, text=True, timeout=300)
    if out.returncode != 0:
        failures.append(f"{model} {options}: exit {out.returncode}: {out.stderr.strip()}")
    return out.stdout


def blocks(report):
    """Per depth: verdict, and the statistics as name -> (current, total) or the L/R/T/C/O counts."""
    result = []
    for section in report.split("SOLVING:")[1:]:
        verdict = "unsat" if "    unsatisfiable" in section else "box"
        stats = {m[0]: (int(m[1]), int(m[2])) for m in re.findall(r"num (\w+) +: (\d+) / (\d+)", section)}
        learned = re.search(r"\(L: (\d+), R: (\d+), T: (\d+), C: (\d+), O: (\d+)\)", section)
        stats["LRTCO"] = tuple(int(x) for x in learned.groups())
        stats["variables"] = int(re.search(r"num variables +: (\d+)", section).group(1))
        result.append((verdict, stats))
    return result


improved = False
for model, depth in MODELS:
    runs = {" ".join(o): blocks(run(model, ["--max_depth", str(depth), *o])) for o in CARRY}
    plain = runs[""]
    for name, depths in runs.items():
        if [v for v, _ in depths] != [v for v, _ in plain]:
            failures.append(f"{model} '{name}': verdicts {[v for v, _ in depths]} differ from {[v for v, _ in plain]}")
        reused = [s["LRTCO"][1] for _, s in depths]
        if reused != sorted(reused):
            failures.append(f"{model} '{name}': R decreased: {reused}")
        for _, s in depths:
            l, r, t, c, o = s["LRTCO"]
            if l != t + c + o:
                failures.append(f"{model} '{name}': L = {l} is not T + C + O = {t + c + o}")
            if "--reuse" not in name and r != 0 or "--shifting" not in name and t + c != 0:
                failures.append(f"{model} '{name}': carried clauses without the option: {s['LRTCO']}")
        work = lambda d: d[-1][1]["conflicts"][1] + d[-1][1]["decisions"][1]
        improved |= work(depths) < work(plain)
if not improved:
    failures.append("carrying clauses over saved no conflict or decision on any model")

# Two hundred depths of a target that is never reached.
depths = blocks(run("tests/e2e/inputs/long_counter.krait", ["--max_depth", "200"]))
growth = {b[1]["variables"] - a[1]["variables"] for a, b in zip(depths, depths[1:])}
if len(depths) != 201 or growth != {4}:
    failures.append(f"variables do not grow by one transition per depth: {len(depths)} depths, steps {growth}")
peak_mb = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss / 1024
if peak_mb > 500:
    failures.append(f"peak memory {peak_mb:.0f} MB")

for f in failures:
    print("FAIL:", f)
print(f"bmc carry-over: {len(MODELS) * len(CARRY) + 1} runs, {len(failures)} failed")
sys.exit(1 if failures else 0)
