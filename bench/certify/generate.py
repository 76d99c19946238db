#!/usr/bin/env python3
"""Writes the certification benchmark: satisfiable problems under bench/certify/<family>/.

    generate.py            rewrites every problem file (the output is committed)

Each problem starts with comment lines that say why it is satisfiable and give a known
solution; `-- options:` gives the arguments of the run. Transition systems are simulated here
in exact arithmetic, so that their comments state the reached depth and the trace.
"""
import math
from fractions import Fraction
from pathlib import Path

HERE = Path(__file__).resolve().parent
problems = {}  # (family, name) -> text


def dec(q):
    """A rational as the input language writes it: an integer or a finite decimal."""
    q = Fraction(q)
    if q.denominator == 1:
        return str(q.numerator)
    for places in range(1, 30):
        scaled = q * 10 ** places
        if scaled.denominator == 1:
            s = f'{abs(scaled.numerator):0{places + 1}d}'
            return ('-' if q < 0 else '') + s[:-places] + '.' + s[-places:]
    raise ValueError(f'{q} is no finite decimal')


def show(q):
    """A rational for a comment: exact where short, else with its value."""
    q = Fraction(q)
    try:
        return dec(q)
    except ValueError:
        return f'{q} (about {float(q):.6g})'


def rational_sqrt(q):
    a, b = math.isqrt(q.numerator), math.isqrt(q.denominator)
    return Fraction(a, b) if a * a == q.numerator and b * b == q.denominator else None


def add(family, name, why, decl, body, options=''):
    head = ''.join(f'-- {line}\n' for line in why.strip().split('\n'))
    if options:
        head += f'-- options: {options}\n'
    problems[(family, name)] = f'{head}DECL\n{block(decl)}EXPR\n{block(body)}'


def add_bmc(family, name, why, decl, init, trans, target, options):
    head = ''.join(f'-- {line}\n' for line in why.strip().split('\n'))
    head += f'-- options: {options}\n'
    problems[(family, name)] = (f'{head}DECL\n{block(decl)}INIT\n{block(init)}TRANS\n{block(trans)}'
                                f'TARGET\n{block(target)}')


def block(text):
    return ''.join('  ' + line.strip() + '\n' for line in text.strip('\n').split('\n'))


def shifted(name, c):
    """name - c, written without a double sign."""
    c = Fraction(c)
    return name if c == 0 else f'{name} - {dec(c)}' if c > 0 else f'{name} + {dec(-c)}'


def squared(term):
    return f'{term} ^ 2' if term.isidentifier() else f'({term}) ^ 2'


def lines(*xs):
    return '\n'.join(f'  {x};' for x in xs)


# ------------------------------------------------------------------ polynomial

def polynomial():
    # The unit circle meets the line through the origin and (a/c, b/c) there.
    for a, b, c in [(3, 4, 5), (5, 12, 13), (8, 15, 17), (7, 24, 25), (20, 21, 29), (9, 40, 41)]:
        add('polynomial', f'circle_ray_{a}_{b}_{c}',
            f'Satisfiable: x = {show(Fraction(a, c))}, y = {show(Fraction(b, c))} '
            f'({a}^2 + {b}^2 = {c}^2, on the line {b}x = {a}y).',
            '  float [-2, 2] x, y;',
            lines('x ^ 2 + y ^ 2 = 1', f'{b} * x - {a} * y = 0', 'x > 0'))
    # Circles about (p, q) of radius r and a line through a rational point on them.
    for p, q, r, (u, v), slope in [(1, 2, 5, (4, 6), 2), (-1, 0.5, 2.5, (0.5, 2.5), -1), (0, 0, 13, (5, 12), 3)]:
        x0, y0 = Fraction(u), Fraction(v)
        icpt = y0 - slope * x0
        add('polynomial', f'circle_line_{len([k for k in problems if k[1].startswith("circle_line")])}',
            f'Satisfiable: x = {dec(x0)}, y = {dec(y0)} lies on the circle about ({dec(p)}, {dec(q)}) of radius '
            f'{dec(r)} and on the line.',
            '  float [-20, 20] x, y;',
            lines(f'{squared(shifted("x", p))} + {squared(shifted("y", q))} = {dec(Fraction(r) ** 2)}',
                  f'y = {shifted(f"{slope} * x", -icpt)}', f'x > {dec(x0 - Fraction(1, 2))}',
                  f'x < {dec(x0 + Fraction(1, 2))}'))
    # Square roots: most have no rational solution.
    for k in ['2', '3', '5', '10', '6.25', '0.5']:
        root = math.sqrt(float(k))
        add('polynomial', f'sqrt_{k.replace(".", "_")}',
            f'Satisfiable: x = sqrt({k}) = {dec(Fraction(root))} (exactly).' if Fraction(k) == Fraction(root) ** 2
            else f'Satisfiable: x = sqrt({k}), about {root:.12g}.',
            '  float [0, 10] x;', lines(f'x * x = {k}'))
    cubics = [('cbrt2', 'x ^ 3 = 2', '[0, 3]', 'x = 2^(1/3), about 1.259921'),
              ('plastic', 'x ^ 3 - x - 1 = 0', '[0, 3]', 'x about 1.324718, the real root'),
              ('cubic_123', 'x ^ 3 - 6 * x ^ 2 + 11 * x - 6 = 0;\n  x > 2.5', '[0, 4]', 'x = 3'),
              ('quartic_s2s3', 'x ^ 4 - 10 * x ^ 2 + 1 = 0;\n  x > 2', '[0, 4]',
               'x = sqrt(2) + sqrt(3), about 3.146264'),
              ('quintic', 'x ^ 5 + x = 3', '[-2, 2]', 'x about 1.132997, the only real root (increasing)')]
    for name, body, rng, sol in cubics:
        add('polynomial', name, f'Satisfiable: {sol}.', f'  float {rng} x;', f'  {body};')
    # x + y = s, x y = p: the roots of t^2 - s t + p.
    for s, p in [(5, 6), (3, 1), (1, -1), (7, 10), (4, 2), (Fraction(1, 2), Fraction(-1, 2))]:
        d = s * s - 4 * p
        x, y = (s - math.sqrt(d)) / 2, (s + math.sqrt(d)) / 2
        r = rational_sqrt(Fraction(d))
        sol = f'x = {show((s - r) / 2)}, y = {show((s + r) / 2)}' if r is not None else \
            f'x = ({dec(s)} - sqrt({dec(d)}))/2 about {x:.9g}, y = ({dec(s)} + sqrt({dec(d)}))/2 about {y:.9g}'
        add('polynomial', f'sum_product_{len([k for k in problems if k[1].startswith("sum_product")])}',
            f'Satisfiable: {sol} (roots of t^2 - {dec(s)} t {"+" if p >= 0 else "-"} {dec(abs(p))}).',
            '  float [-10, 10] x, y;', lines(f'x + y = {dec(s)}', f'x * y = {dec(p)}', 'x < y'))
    # Elementary symmetric functions of three roots.
    for roots in [(1, 2, 3), (Fraction(1, 2), 1, 4), (-2, 1, 5)]:
        a, b, c = (Fraction(r) for r in roots)
        add('polynomial', f'vieta3_{"_".join(dec(r).replace(".", "p").replace("-", "m") for r in roots)}',
            f'Satisfiable: x = {dec(a)}, y = {dec(b)}, z = {dec(c)}.',
            '  float [-10, 10] x, y, z;',
            lines(f'x + y + z = {dec(a + b + c)}', f'x * y + y * z + z * x = {dec(a * b + b * c + c * a)}',
                  f'x * y * z = {dec(a * b * c)}', 'x < y', 'y < z'))
    add('polynomial', 'sphere_plane_line',
        'Satisfiable: x = 2, y = 1, z = 2 (4 + 1 + 4 = 9, 2 + 1 + 2 = 5, x = z).',
        '  float [-5, 5] x, y, z;', lines('x ^ 2 + y ^ 2 + z ^ 2 = 9', 'x + y + z = 5', 'x = z', 'y > 0.5'))
    add('polynomial', 'two_circles',
        'Satisfiable: x = 0.5, y = sqrt(3)/2 about 0.866025 (unit circles about (0, 0) and (1, 0)).',
        '  float [-2, 2] x, y;', lines('x ^ 2 + y ^ 2 = 1', '(x - 1) ^ 2 + y ^ 2 = 1', 'y > 0'))
    add('polynomial', 'parabola_hyperbola',
        'Satisfiable: x = 1, y = 1 (y = x^2 and x y = 1).',
        '  float [-3, 3] x, y;', lines('y = x ^ 2', 'x * y = 1'))
    # Inequalities only: open regions with simple interior points.
    ineqs = [('disc_halfplane', 'x = y = 0.7: 0.98 <= 1 and 1.4 >= 1.2', '[-1, 1] x, y',
              ['x ^ 2 + y ^ 2 <= 1', 'x + y >= 1.2']),
             ('hyperbola_region', 'x = y = 1.5: x y = 2.25 >= 2 and x + y = 3 <= 3', '[0, 5] x, y',
              ['x * y >= 2', 'x + y <= 3']),
             ('cubic_band', 'x = 1.02: x^3 - x is about 0.0412, in (0, 0.1)', '[-3, 3] x',
              ['x ^ 3 - x > 0', 'x ^ 3 - x < 0.1', 'x > 0.5']),
             ('annulus_wedge', 'x = 1.2, y = 1.2: |.|^2 = 2.88 in (2, 4), y >= x', '[-3, 3] x, y',
              ['x ^ 2 + y ^ 2 > 2', 'x ^ 2 + y ^ 2 < 4', 'y >= x', 'x > 1']),
             ('abs_min_max', 'x = 2, y = 2.05: |x - y| = 0.05, max 2.05 > 2, min 2 < 2.01', '[0, 5] x, y',
              ['abs(x - y) < 0.1', 'max(x, y) > 2', 'min(x, y) < 2.01', 'x != y']),
             ('sextic_lens', 'x = 0, y = 0.9: 0.81 < 1 and 0.81 + 0.81 > 1.5', '[-2, 2] x, y',
              ['x ^ 6 + y ^ 2 < 1', 'x ^ 2 + 2 * y ^ 2 > 1.5'])]
    for name, sol, decl, rel in ineqs:
        add('polynomial', name, f'Satisfiable: {sol}.', f'  float {decl};', lines(*rel))
    add('polynomial', 'choice_of_roots',
        'Satisfiable: b true and x = sqrt(2) about 1.414214 (or b false and x = sqrt(3)).',
        '  float [0, 4] x;\n  boole b;',
        lines('(b and x ^ 2 = 2) or (not b and x ^ 2 = 3)', 'x < 1.6'))
    add('polynomial', 'product_not_square',
        'Satisfiable: x = 2, y = 0.5 (x y = 1 with x != y).',
        '  float [0.1, 10] x, y;', lines('x * y = 1', 'x != y', 'x > 1.5'))


# ------------------------------------------------------------------ transcendental

def transcendental():
    for a in ['2', '3', '0.5', '10']:
        add('transcendental', f'exp_eq_{a.replace(".", "_")}',
            f'Satisfiable: x = ln({a}) about {math.log(float(a)):.9g}.',
            '  float [-3, 3] x;', lines(f'exp(x) = {a}'))
    for fn, v, rng in [('sin', '0.5', '[0, 1]'), ('sin', '0.3', '[0, 1]'), ('cos', '0.5', '[0, 2]'),
                       ('cos', '-0.2', '[0, 3]'), ('sin', '-0.75', '[-1.5, 0]')]:
        x = (math.asin if fn == 'sin' else math.acos)(float(v))
        add('transcendental', f'{fn}_eq_{v.replace(".", "_").replace("-", "m")}',
            f'Satisfiable: x = {"arcsin" if fn == "sin" else "arccos"}({v}) about {x:.9g}.',
            f'  float {rng} x;', lines(f'{fn}(x) = {v}'))
    fixed = [('dottie', 'cos(x) = x', '[0, 2]', 'x about 0.739085133 (the fixed point of cos)'),
             ('omega', 'exp(-x) = x', '[0, 2]', 'x about 0.567143290 (the omega constant)'),
             ('x_exp_x', 'x * exp(x) = 1', '[0, 2]', 'x about 0.567143290 (the omega constant again)'),
             ('sin_half', 'sin(x) = x * 0.5;\n  x > 1', '[0, 3]', 'x about 1.895494267'),
             ('exp_plus_x', 'exp(x) + x = 2', '[-2, 2]', 'x about 0.442854401')]
    for name, body, rng, sol in fixed:
        add('transcendental', name, f'Satisfiable: {sol}.', f'  float {rng} x;', f'  {body};')
    roots = [('nrt_square', 'nrt(x, 2) = 1.5', '[0, 10] x', 'x = 2.25'),
             ('nrt_cube', 'nrt(x, 3) = 2', '[0, 10] x', 'x = 8'),
             ('nrt_cube_negative', 'nrt(x, 3) = -1.5', '[-10, 10] x', 'x = -3.375'),
             ('nrt_fifth', 'nrt(x, 5) = 1.2', '[0, 10] x', 'x = 1.2^5 = 2.48832'),
             ('nrt_sum', 'nrt(x, 2) + nrt(y, 2) = 3;\n  x = 4', '[0, 10] x, y', 'x = 4, y = 1'),
             ('nrt_fixed', 'nrt(x, 2) = x - 2', '[0, 10] x', 'x = 4 (2 = 4 - 2)'),
             ('nrt_irrational', 'nrt(x, 3) = x - 1;\n  x > 1', '[0, 10] x',
              'x about 2.324717957 (x - 1 is the plastic number)')]
    for name, body, decl, sol in roots:
        add('transcendental', name, f'Satisfiable: {sol}.', f'  float {decl};', f'  {body};')
    mixed = [('exp_circle', 'x about 0.591346, y = exp(x) - 1 about 0.806418 on the unit circle', '[-2, 2] x, y',
              ['x ^ 2 + y ^ 2 = 1', 'y = exp(x) - 1', 'x > 0.1']),
             ('sin_cos_sum', 'x = pi/2 about 1.570796 (sin + cos = 1 at 0 and pi/2)', '[0, 3] x',
              ['sin(x) + cos(x) = 1', 'x > 0.5']),
             ('exp_window', 'x = 0.75: exp(0.75) about 2.117 > 2', '[0, 3] x',
              ['exp(x) > 2', 'x < 0.8']),
             ('sin_peak', 'x = 1.5: sin(1.5) about 0.997495 > 0.99', '[0, 3] x',
              ['sin(x) > 0.99', 'x < 1.6']),
             ('exp_sin_system', 'x about 0.567, y about 0.537: y = sin(x), x = exp(-x)', '[-2, 2] x, y',
              ['y = sin(x)', 'exp(-x) = x']),
             ('trig_identity', 'any x, e.g. 0.5 (sin^2 + cos^2 = 1 everywhere)', '[-1, 1] x',
              ['sin(x) ^ 2 + cos(x) ^ 2 = 1', 'x > 0.3'])]
    for name, sol, decl, rel in mixed:
        add('transcendental', name, f'Satisfiable: {sol}.', f'  float {decl};', lines(*rel))


# ------------------------------------------------------------------ integer

def integer():
    for p, (a, b, c) in [(12, (3, 4, 5)), (24, (6, 8, 10)), (40, (8, 15, 17)), (56, (7, 24, 25)),
                         (36, (9, 12, 15))]:
        add('integer', f'pythagoras_{p}', f'Satisfiable: a = {a}, b = {b}, c = {c}.',
            f'  int [1, {p}] a, b, c;', lines('a ^ 2 + b ^ 2 = c ^ 2', 'a < b', f'a + b + c = {p}'))
    for n, (a, b) in [(91, (7, 13)), (143, (11, 13)), (221, (13, 17)), (323, (17, 19)), (437, (19, 23))]:
        add('integer', f'factor_{n}', f'Satisfiable: a = {a}, b = {b} ({a} * {b} = {n}, both prime).',
            f'  int [1, {n}] a, b;', lines(f'a * b = {n}', 'a > 1', 'a < b'))
    for (p, q, r), (a, b) in [((5, 7, 53), (5, 4)), ((3, 8, 50), (6, 4)), ((11, 13, 100), (2, 6)),
                              ((4, 9, 61), (4, 5))]:
        assert p * a + q * b == r
        add('integer', f'coins_{p}_{q}_{r}', f'Satisfiable: a = {a}, b = {b} ({p}*{a} + {q}*{b} = {r}).',
            '  int [0, 30] a, b;', lines(f'{p} * a + {q} * b = {r}', 'a >= 1', 'b >= 1'))
    for n, (a, b) in [(25, (3, 4)), (65, (1, 8)), (85, (2, 9)), (50, (1, 7))]:
        add('integer', f'two_squares_{n}', f'Satisfiable: a = {a}, b = {b} ({a}^2 + {b}^2 = {n}).',
            '  int [-10, 10] a, b;', lines(f'a ^ 2 + b ^ 2 = {n}', 'a > 0', 'a < b'))
    add('integer', 'parity_chain',
        'Satisfiable: a, c, d true, b false (odd parity, a -> c, not both b and d).',
        '  boole a, b, c, d;', lines('a xor b xor c xor d', 'a -> c', 'b nand d', 'a'))
    add('integer', 'knights_knaves',
        'Satisfiable: a is a knave, b is a knight, c is a knave (a says "b is a knave", b says\n'
        '"a and c are of one kind", c says "I am a knight and a is a knight").',
        '  boole a, b, c;', lines('a <-> not b', 'b <-> (a <-> c)', 'c <-> (c and a)'))
    add('integer', 'exactly_one_of_three',
        'Satisfiable: p1 holds, p2 and p3 not (at least one, no two, p2 -> p3, not p3).',
        '  boole p1, p2, p3;',
        lines('p1 or p2 or p3', 'not (p1 and p2)', 'not (p1 and p3)', 'not (p2 and p3)', 'p2 -> p3',
              'not p3'))
    add('integer', 'bool_arith',
        'Satisfiable: a, b true, c false: a + b + c = 2 and a * c = 0, b >= c.',
        '  boole a, b, c;', lines('a + b + c = 2', 'a * c = 0', 'b >= c', 'a'))
    mixed = [('int_sqrt', 'n = 2, x = sqrt(2) about 1.414214', '  int [2, 3] n;\n  float [0, 5] x;',
              ['x * x = n', 'n < 3']),
             ('int_third', 'n = 3, x = 1/3 (n x = 1)', '  int [3, 3] n;\n  float [0, 1] x;',
              ['n * x = 1']),
             ('int_half', 'n = 5, x = 2.5 (2x = n, n odd, 2 < x < 3)', '  int [0, 10] n;\n  float [0, 10] x;',
              ['2 * x = n', 'x > 2', 'x < 3']),
             ('switch_offset', 'b true, n = 2, x = 2.5', '  int [0, 5] n;\n  boole b;\n  float [0, 6] x;',
              ['b -> x = n + 0.5', 'not b -> x = n', 'x > 2.2', 'x < 2.8']),
             ('int_circle', 'n = 3, x = 4 (n^2 + x^2 = 25, x real)', '  int [1, 3] n;\n  float [0, 10] x;',
              ['n ^ 2 + x ^ 2 = 25', 'n > 2']),
             ('int_product_bound', 'n = 2, x = 0.5 (0.5 * 2 = 1 and x^2 + n > 2)', '  int [0, 4] n;\n  float [0, 1] x;',
              ['x * n = 1', 'x ^ 2 + n > 2', 'x > 0.4'])]
    for name, sol, decl, rel in mixed:
        add('integer', name, f'Satisfiable: {sol}.', decl, lines(*rel))


# ------------------------------------------------------------------ bmc

def bmc():
    for step, target in [(1, 5), (2, 8), (3, 9), (5, 20)]:
        k = target // step
        add_bmc('bmc', f'counter_{step}_{target}',
                f'Satisfiable: x = 0, {step}, ..., {target} reaches {target} after {k} steps.',
                '  int [0, 50] x;', '  x = 0;', f"  x' = x + {step};", f'  x = {target};', f'--max_depth {k}')
    add_bmc('bmc', 'counter_choice',
            "Satisfiable: x = 0, 3, 6, 7 reaches 7 in three steps (up three, three, then one).",
            '  int [0, 20] x;\n  boole big;', '  x = 0;',
            "  big -> x' = x + 3;\n  not big -> x' = x + 1;", '  x = 7;', '--max_depth 4')
    add_bmc('bmc', 'triangular',
            'Satisfiable: y = 0, 0, 1, 3, 6, 10 with x = 0, 1, 2, 3, 4, 5: y = 10 after five steps.',
            '  int [0, 30] x, y;', '  x = 0;\n  y = 0;', "  x' = x + 1;\n  y' = y + x;", '  y = 10;',
            '--max_depth 5')
    add_bmc('bmc', 'doubling',
            'Satisfiable: x = 1, 2, 4, 8, 16, 32: x = 32 after five steps.',
            '  int [0, 100] x;', '  x = 1;', "  x' = 2 * x;", '  x = 32;', '--max_depth 5')
    # A heated tank: the heater adds 0.5 per step while on, the tank loses 0.3 while off, and
    # the heater switches off at 20 degrees.
    for start, target in [(18, '19.5'), (19, '20.4'), (17.5, '19')]:
        t, on, trace = Fraction(start), True, [Fraction(start)]
        k = 0
        while t < Fraction(target):
            t = t + Fraction(1, 2) if on else t - Fraction(3, 10)
            on = t < 20
            trace.append(t)
            k += 1
        add_bmc('bmc', f'heated_tank_{dec(start).replace(".", "_")}',
                f'Satisfiable: the temperature runs {", ".join(dec(v) for v in trace)} and reaches {target}\n'
                f'after {k} steps.',
                '  float [0, 40] temp;\n  boole heater;', f'  temp = {dec(start)};\n  heater;',
                "  heater -> temp' = temp + 0.5;\n  not heater -> temp' = temp - 0.3;\n  heater' <-> temp' < 20;",
                f'  temp >= {target};', f'--max_depth {k}')
    # The tank with a heater of uncertain power: any gain in [0.4, 0.6].
    add_bmc('bmc', 'heated_tank_uncertain',
            'Satisfiable: gaining 0.6 each step, the temperature runs 18, 18.6, 19.2, 19.8, 20.4 and\n'
            'exceeds 20.3 after four steps.',
            '  float [0, 40] temp;\n  float [0, 1] gain;', '  temp = 18;',
            "  gain' >= 0.4;\n  gain' <= 0.6;\n  temp' = temp + gain';", '  temp > 20.3;', '--max_depth 4')
    # A bouncing ball, explicit Euler steps of 0.1 s: h' = h + 0.1 v, v' = v - 0.981, and a
    # bounce (h' = 0, v' = -0.8 v) when the step would take it below the floor.
    for h0 in ['1', '1.5', '0.5']:
        h, v, k = Fraction(h0), Fraction(0), 0
        while not v > 0:
            if h + v / 10 >= 0:
                h, v = h + v / 10, v - Fraction(981, 1000)
            else:
                h, v = Fraction(0), -Fraction(4, 5) * v
            k += 1
        add_bmc('bmc', f'bouncing_ball_{h0.replace(".", "_")}',
                f'Satisfiable: dropped from {h0}, the ball bounces at step {k} and leaves the floor with\n'
                f'v = {dec(v)} > 0.',
                '  float [0, 3] h;\n  float [-10, 10] v;', f'  h = {h0};\n  v = 0;',
                "  h + 0.1 * v >= 0 -> (h' = h + 0.1 * v and v' = v - 0.981);\n"
                "  h + 0.1 * v < 0 -> (h' = 0 and v' = -0.8 * v);", '  v > 0;', f'--max_depth {k}')
    # Accumulators of a decimal step: the double sums miss the decimal values.
    for stepv, n, rel in [('0.1', 7, '='), ('0.1', 10, '>='), ('0.25', 6, '='), ('0.3', 5, '>=')]:
        total = Fraction(stepv) * n
        add_bmc('bmc', f'accumulator_{stepv.replace(".", "_")}_{n}',
                f'Satisfiable: s = {n} * {stepv} = {dec(total)} after {n} steps' +
                (' (exactly, not in doubles).' if Fraction(float(stepv)) != Fraction(stepv) else '.'),
                '  float [0, 10] s;', '  s = 0;', f"  s' = s + {stepv};", f'  s {rel} {dec(total)};',
                f'--max_depth {n}')
    add_bmc('bmc', 'accumulator_counted',
            'Satisfiable: after three steps n = 3 and s = 0.3 exactly (0.3000000000000000166 when the\n'
            'constants are read as doubles: s = 0.3 would then be unsatisfiable, s >= 0.3 is not).',
            '  float [0, 10] s;\n  int [0, 10] n;', '  s = 0;\n  n = 0;', "  s' = s + 0.1;\n  n' = n + 1;",
            '  n = 3 and s >= 0.3;', '--max_depth 3')
    # A leaky tank: it loses between 0.5 and 1.5 a step and is refilled by 3 below level 4.
    add_bmc('bmc', 'leaky_tank',
            'Satisfiable: losing 1.5 in each of two steps with the valve shut, the level runs 6, 4.5, 3\n'
            'and is below 3.2 after two steps.',
            '  float [0, 20] level, loss;\n  boole valve;', '  level = 6;\n  not valve;',
            "  loss' >= 0.5;\n  loss' <= 1.5;\n  valve -> level' = level + 3 - loss';\n"
            "  not valve -> level' = level - loss';\n  valve' <-> (level' < 4 or (valve and level' <= 8));",
            '  level < 3.2;', '--max_depth 2')
    add_bmc('bmc', 'static_rate',
            'Satisfiable: rate = 2.5 and s = 0, 2.5, 5, 7.5, 10 with the switch on, off from 10.',
            '  static float [0, 5] rate;\n  float [0, 100] s;\n  boole on;', '  s = 0;\n  on;',
            "  on -> s' = s + rate;\n  not on -> s' = s;\n  on' <-> s' < 9;", '  s >= 10;\n  rate = 2.5;',
            '--max_depth 4')
    add_bmc('bmc', 'spiral',
            'Satisfiable: (x, y) turns by 90 degrees and halves: (8, 0), (0, 4), (-2, 0), (0, -1),\n'
            '(0.5, 0) after four steps.',
            '  float [-10, 10] x, y;', '  x = 8;\n  y = 0;', "  x' = -0.5 * y;\n  y' = 0.5 * x;",
            '  x > 0.4 and x < 0.6;', '--max_depth 4')


def main():
    for make in (polynomial, transcendental, integer, bmc):
        make()
    for family in {f for f, _ in problems}:
        folder = HERE / family
        folder.mkdir(exist_ok=True)
        for old in folder.glob('*.krait'):
            old.unlink()
    for (family, name), text in sorted(problems.items()):
        (HERE / family / f'{name}.krait').write_text(text)
    counts = {}
    for family, _ in problems:
        counts[family] = counts.get(family, 0) + 1
    print(', '.join(f'{f}: {n}' for f, n in sorted(counts.items())), f'(total {len(problems)})')


if __name__ == '__main__':
    main()
