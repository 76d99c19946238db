#!/usr/bin/python3
"""krait-plot on real reports, each picture read back and held against the report's box.
Usage (from the source folder): plot_test.py KRAIT_PLOT KRAIT [unittest arguments]."""
import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ET
from pathlib import Path

PLOT, KRAIT = sys.argv[1], sys.argv[2]
REPORTS = Path(__file__).resolve().parent / "reports"
NS = "{http://www.w3.org/2000/svg}"
MIXED = "tests/plot/reports/mixed.krait\n"
MIXED_REPORT = (REPORTS / "mixed_depth3.txt").read_text()


def box_of(report, depth=None):
    """(kind, static, steps) per variable of the last box, or of the one at depth."""
    parts = re.split(r"\n    k = (\d+)\n", report)
    boxes = [s for d, s in zip(parts[1::2], parts[2::2]) if depth in (None, int(d)) and "SOLUTION: \n" in s]
    text = (boxes or parts[:1])[-1].partition("SOLUTION: \n")[2].partition("\nSOLVING:")[0] + "\n"
    return [(kind, bool(static), [tuple(None if "inf" in e else float(e) for e in m)
                                  for m in re.findall(r"@\d+: [\[\]](\S+), (\S+?)[\[\]]\n", rest + "\n")])
            for static, kind, rest in re.findall(r"    \S+ \((static )?(\w+)\): (.*?)\n\n", text, re.S)]


def limits(kind, steps):
    """The axis rule of krait-plot."""
    ends = [e for step in steps for e in step if e is not None]
    if kind == "boole" or not ends:
        return (-0.25, 1.25) if kind == "boole" else (-1.0, 1.0)
    low, high = min(ends), max(ends)
    pad = (high - low) / 10 if low < high else (abs(low) / 10 or 0.5)
    return low - pad, high + pad


class PlotCase(unittest.TestCase):
    def setUp(self):
        self.svg = Path(self.enterContext(tempfile.TemporaryDirectory()), "trace.svg")

    def plot(self, report, *args):
        run = subprocess.run([PLOT, *args], input=report, capture_output=True, text=True)
        return run.returncode, run.stderr

    def points(self, gid):
        """The points of the first path of a group, in pixels (y downward)."""
        numbers = [float(n) for n in re.findall(r"-?[\d.]+", self.groups[gid].find(NS + "path").get("d"))]
        return list(zip(numbers[::2], numbers[1::2]))

    def check_picture(self, report, title, counts, *args):
        """The title; per panel the number of steps and every interval end within a pixel of the data."""
        self.assertEqual(self.plot(report, "-o", self.svg, *args), (0, ""))
        root = ET.parse(self.svg).getroot()
        self.groups = {g.get("id"): g for g in root.iter(NS + "g") if g.get("id")}
        self.texts = [t.text for t in root.iter(NS + "text")]
        self.assertEqual([t.text for t in self.groups["title"].iter(NS + "text")], title.split("\n"))
        panels = [g for g in self.groups if g.startswith("panel-")]
        self.assertEqual([sum(g.startswith(f"step-{i}-") for g in self.groups) for i in range(len(panels))], counts)
        box = box_of(report, int(args[1]) if args else None)
        self.assertEqual(len(panels), len(box))
        last = max((len(steps) - 1 for _, _, steps in box), default=0)
        for i, (kind, static, steps) in enumerate(box):
            steps = steps * (last + 1) if static else steps
            xs, ys = zip(*self.points(f"frame-{i}"))
            bottom, top = limits(kind, steps)
            px = lambda k: min(xs) + (k + 0.5) / (last + 1) * (max(xs) - min(xs))
            py = lambda v: max(ys) - (v - bottom) / (top - bottom) * (max(ys) - min(ys))
            band = self.points(f"band-{i}") if kind == "float" and steps else []
            for k, (lo, hi) in enumerate(steps):
                sx, sy = zip(*self.points(f"step-{i}-{k}"))
                ends = (py(bottom if lo is None else lo), py(top if hi is None else hi))
                self.assertAlmostEqual((min(sx) + max(sx)) / 2, px(k), delta=1)
                self.assertAlmostEqual(max(sy), ends[0], delta=1, msg=f"panel {i} step {k}")
                self.assertAlmostEqual(min(sy), ends[1], delta=1, msg=f"panel {i} step {k}")
                for y in ends if band else ():
                    self.assertTrue(any(abs(bx - px(k)) <= 1 and abs(by - y) <= 1 for bx, by in band))
                marks = {f"unbounded-{i}-{k}-{side}": edge
                         for side, end, edge in (("lower", lo, max(ys)), ("upper", hi, min(ys))) if end is None}
                self.assertEqual({g for g in self.groups if g.startswith(f"unbounded-{i}-{k}-")}, set(marks))
                for gid, edge in marks.items():
                    self.assertAlmostEqual(float(self.groups[gid].find(f".//{NS}use").get("y")), edge, delta=1)


class Reports(PlotCase):
    def test_depths_static_and_unused(self):
        self.check_picture(MIXED_REPORT, MIXED + "depth 3: candidate solution box found", [4, 4, 4, 0, 4, 1])
        self.assertIn("c (static float): the same at every step", self.texts)
        self.assertIn("u (float): declared but not used", self.texts)
        title = MIXED + "depth 1: candidate solution box found (searched to depth 3)"
        self.check_picture(MIXED_REPORT, title, [2, 2, 2, 0, 2, 1], "--depth", "1")
        first = self.svg.read_bytes()
        self.plot(MIXED_REPORT, "-o", self.svg, "--depth", "1")
        self.assertEqual(self.svg.read_bytes(), first)

    def test_unbounded_ends(self):
        # krait prints -inf or +inf only for a variable without a bound, which no candidate box has:
        # this is a real report of examples/braking.krait with four ends made unbounded by hand.
        self.check_picture((REPORTS / "braking_unbounded.txt").read_text(),
                           "examples/braking.krait\ndepth 4: candidate solution box found", [5, 5, 5, 5])
        self.assertEqual(sorted(g[10:] for g in self.groups if g.startswith("unbounded-")),
                         ["1-2-lower", "2-3-upper", "2-4-lower", "2-4-upper"])

    def test_other_layouts(self):
        self.check_picture((REPORTS / "pythagoras_restarts.txt").read_text(),
                           "examples/pythagoras.krait\ninput formula: candidate solution box found", [1, 1, 1])
        self.check_picture((REPORTS / "nearest_point_minimize.txt").read_text(),
                           "examples/nearest_point.krait\nminimising d: objective value 1.98015", [1, 1, 1])
        self.check_picture((REPORTS / "water_tank_depth2.txt").read_text(),
                           "examples/water_tank.krait\ndepth 2: unsatisfiable", [])
        self.assertIn("no box to draw: no candidate solution box in the report", self.texts)
        # As with --nosol: a box found at depth 1, none shown.
        self.check_picture(MIXED_REPORT.partition("SOLUTION: ")[0], MIXED + "depth 1: candidate solution box found", [])
        self.assertIn("no box to draw: the report leaves out its SOLUTION section", self.texts)
        png = self.svg.with_suffix(".png")
        self.assertEqual(self.plot("", str(REPORTS / "mixed_depth3.txt"), "-o", png), (0, ""))
        self.assertEqual(png.read_bytes()[:8], b"\x89PNG\r\n\x1a\n")

    def test_refusals(self):
        lines = MIXED_REPORT.split("\n")
        k2, x1 = lines.index("    k = 2") + 1, lines.index("        @1: [8.75, 8.828125]") + 1
        at = lambda line, message: f"line {line} of standard input: {message}"
        for text, message in [
            ("", "Standard input is empty: no Krait report."),
            ("SOLVING:\n", at(1, "not a Krait report (it does not begin with the line '# This is Krait ...')")),
            ("\n".join(lines[:k2]), at(k2, "the report ends here, before the result of depth 2")),
            (MIXED_REPORT.replace("@1: [8.75, 8.828125]", "@1: [8.828125, 8.75]"), at(x1, "an empty interval for x")),
            (MIXED_REPORT.replace("@1: [8.75", "@2: [8.75"), at(x1, "step @2 of x where @1 was due")),
            (MIXED_REPORT.replace("SOLVING:", "RESULT:", 1), at(14, "'RESULT:' out of place")),
            ("\n".join(lines[:4] + ["", "Error: Could not open input file."]),
             at(6, "the run ended in an error: Could not open input file.")),
        ]:
            self.assertEqual(self.plot(text, "-o", self.svg), (1, f"\nError: {message}\n"))
        for args, message in [
            ([], f"No output file specified. Try {PLOT} --help."),
            (["-o", "trace.pdf"], "The output file 'trace.pdf' must end in .svg or .png."),
            (["-o", self.svg, "--bogus"], f"Invalid option '--bogus'. Try {PLOT} --help."),
            (["-o", self.svg, "--depth", "7"], "The report has no box at depth 7 (boxes at depths: 1, 2, 3)."),
            (["-o", self.svg, "--depth"], "Option '--depth' requires a non-negative integer value."),
        ]:
            self.assertEqual(self.plot(MIXED_REPORT, *args), (1, f"\nError: {message}\n"))
        self.assertFalse(self.svg.exists())


class Models(PlotCase):
    def test_shipped_transition_systems(self):
        for model, title, counts in [
                ("examples/thermostat.krait", "depth 7: candidate solution box found (searched to depth 8)", [8, 8]),
                ("examples/braking.krait", "depth 8: candidate solution box found", [9, 9, 9, 9])]:
            run = subprocess.run([KRAIT, "--max_depth", "8", model], capture_output=True, text=True, check=True)
            self.check_picture(run.stdout, f"{model}\n{title}", counts)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
