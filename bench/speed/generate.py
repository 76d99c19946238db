#!/usr/bin/env python3
"""Writes the speed corpus: problems that keep propagation busy, under bench/speed/corpus/.

    generate.py            rewrites every problem file (the output is committed)

Families: random polynomial systems, products of sums, a hard class of six real variables
under some thirty arithmetic operations, and transition systems unwound to depth 30 (disturbed
logistic maps that need search at every depth, and small tanks, counters and rotations that
exercise reuse, shifting and the unwinding orders). Each file
starts with `-- options:` giving the arguments of its run. The seeds below were chosen so that
every problem takes between a few hundredths of a second and a few seconds: enough search to
measure, little enough for the whole corpus to run in minutes.
"""
import random
from pathlib import Path

HERE = Path(__file__).resolve().parent
CORPUS = HERE / 'corpus'
problems = {}


def add(name, options, decl, sections):
    text = f'-- options: {options}\n' if options else '-- options:\n'
    text += 'DECL\n' + ''.join(f'  {d}\n' for d in decl)
    for head, lines in sections:
        text += f'{head}\n' + ''.join(f'  {line};\n' for line in lines)
    problems[name] = text


def monomial(rng, names, degree):
    factors = [rng.choice(names) for _ in range(rng.randint(1, degree))]
    parts = []
    for v in sorted(set(factors)):
        k = factors.count(v)
        parts.append(v if k == 1 else f'{v} ^ {k}')
    return ' * '.join(parts)


def polynomial(rng, names, terms, degree):
    out = ''
    for i in range(terms):
        c = rng.choice([-5, -4, -3, -2, -1, 1, 2, 3, 4, 5])
        m = monomial(rng, names, degree)
        term = m if abs(c) == 1 else f'{abs(c)} * {m}'
        if i == 0:
            out = ('-' if c < 0 else '') + term
        else:
            out += (' - ' if c < 0 else ' + ') + term
    return out


def poly_system(seed, n, m, degree, msw):
    rng = random.Random(seed)
    names = [f'x{i}' for i in range(n)]
    lines = []
    for _ in range(m):
        p = polynomial(rng, names, rng.randint(2, 4), degree)
        rel = rng.choice(['<=', '>=', '='])
        lines.append(f'{p} {rel} {rng.randint(-6, 6)}')
    add(f'poly_{seed}', f'--msw {msw}', [f'float [-4, 4] {", ".join(names)};'], [('EXPR', lines)])


def product_of_sums(seed, n, m, msw):
    rng = random.Random(seed)
    names = [f'v{i}' for i in range(n)]

    def sum_term():
        a, b = rng.sample(names, 2)
        return f'({a} {rng.choice(["+", "-"])} {b})'

    lines = []
    for _ in range(m):
        lhs = ' * '.join(sum_term() for _ in range(rng.randint(2, 3)))
        rhs = ' * '.join(sum_term() for _ in range(2))
        rel = rng.choice(['<=', '>='])
        if rng.random() < 0.3:
            c = rng.choice(names)
            lines.append(f'{lhs} {rel} {rhs} + {rng.randint(-3, 3)} or {c} {rng.choice(["<", ">"])} {rng.randint(-1, 2)}')
        else:
            lines.append(f'{lhs} {rel} {rhs} + {rng.randint(-3, 3)}')
    add(f'prodsum_{seed}', f'--msw {msw}', [f'float [-2, 3] {", ".join(names)};'], [('EXPR', lines)])


def hard36(seed, eps, cross):
    # Two vectors of R^3 with given lengths and a dot product just beyond what Cauchy and Schwarz
    # allow: unsatisfiable, but interval propagation sees it only on small boxes, so the search
    # splits and learns thousands of times. The cross-product form of the same bound (Lagrange's
    # identity) brings the class to six unknowns under thirty operations.
    rng = random.Random(seed)
    a, b = rng.choice([1, 4]), rng.choice([1, 4])
    u, v = ['y0', 'y1', 'y2'], ['y3', 'y4', 'y5']
    rng.shuffle(v)
    bound = round((a * b) ** 0.5 * (1 + eps), 3)
    lines = [f'{u[0]} ^ 2 + {u[1]} ^ 2 + {u[2]} ^ 2 = {a}', f'{v[0]} ^ 2 + {v[1]} ^ 2 + {v[2]} ^ 2 = {b}',
             f'{u[0]} * {v[0]} + {u[1]} * {v[1]} + {u[2]} * {v[2]} >= {bound}']
    if cross:
        lines.append(f'({u[0]} * {v[1]} - {u[1]} * {v[0]}) ^ 2 + ({u[1]} * {v[2]} - {u[2]} * {v[1]}) ^ 2 + '
                     f'({u[2]} * {v[0]} - {u[0]} * {v[2]}) ^ 2 <= {a * b}')
    add(f'hard36_{seed}', '--msw 0.01', ['float [-3, 3] y0, y1, y2, y3, y4, y5;'], [('EXPR', lines)])


def logistic(seed, r, noise, bound, options):
    # A logistic map with a small disturbance in every step; the target lies just above what the
    # map can reach, so every depth is refuted only after splitting.
    add(f'bmc_logistic_{seed}', f'--max_depth 30 --msw 0.001 {options}'.strip(),
        ['float [0, 1] x;', f'float [-{noise}, {noise}] u;'],
        [('INIT', ['x >= 0.2', 'x <= 0.21']), ('TRANS', [f"x' = {r} * x * (1 - x) + u'"]), ('TARGET', [f'x > {bound}'])])


def tank(seed, gain, options):
    add(f'bmc_tank_{seed}', f'--max_depth 30 {options}'.strip(),
        ['float [0, 20] level, loss;', 'boole valve;'],
        [('INIT', ['level = 6', 'not valve']),
         ('TRANS', ["loss' >= 0.5", "loss' <= 1.5", f"valve -> level' = level + {gain} - loss'",
                    "not valve -> level' = level - loss'", "valve' <-> (level' < 4 or (valve and level' <= 8))"]),
         ('TARGET', ['level < 1'])])


def counters(seed, step, options):
    add(f'bmc_counters_{seed}', f'--max_depth 30 {options}'.strip(),
        ['int [0, 200] a, b;', 'boole turn;'],
        [('INIT', ['a = 0', 'b = 1', 'turn']),
         ('TRANS', [f"turn -> a' = a + {step} and b' = b", f"not turn -> b' = b + {step} and a' = a",
                    "turn' <-> not turn"]),
         ('TARGET', ['a = b'])])


def rotation(seed, options):
    # A point turned by a rational rotation: its squared norm stays at 1, never at 1.5.
    add(f'bmc_rotation_{seed}', f'--max_depth 30 {options}'.strip(),
        ['float [-2, 2] x, y;'],
        [('INIT', ['x = 1', 'y = 0']), ('TRANS', ["x' = 0.6 * x - 0.8 * y", "y' = 0.8 * x + 0.6 * y"]),
         ('TARGET', ['x ^ 2 + y ^ 2 >= 1.5'])])


def main():
    for seed in (11, 23, 25, 29):
        poly_system(seed, 4, 5, 2, 0.001)
    for seed in (103, 104, 105, 107, 108, 112, 125, 135):
        poly_system(seed, 5, 6, 3, 0.001)
    for seed in (201, 212, 215, 228, 233, 242, 245, 247, 258, 260):
        product_of_sums(seed, 6, 3, 0.02)
    # 306 is the class's reference problem: 38 variables, 32 tclauses, some 23,000 decisions.
    for seed in (301, 302, 303, 304, 306, 307, 308, 309, 312, 313, 314, 317, 318, 319):
        hard36(seed, 0.1 + (seed % 5) * 0.04, seed % 2 == 0)
    for seed in (2, 5, 11, 12, 14, 15, 17, 20):
        r = 3.6 + 0.05 * (seed % 4)
        margin = 0.005 * (seed % 3 + 1) if seed < 10 else [0.015, 0.012, 0.01][seed // 4 % 3]
        logistic(seed, r, 0.02, round(r / 4 + 0.02 + margin, 4), ['', '--reuse', '--reuse --shifting'][seed % 3])
    tank(1, 3, '')
    tank(2, 3, '--reuse')
    tank(3, 2.5, '--reuse --shifting')
    tank(4, 3, '--var_order 3')
    counters(1, 2, '')
    counters(2, 2, '--reuse --shifting')
    counters(3, 4, '--var_order 4')
    rotation(1, '')
    rotation(2, '--reuse --shifting')

    CORPUS.mkdir(exist_ok=True)
    for old in CORPUS.glob('*.krait'):
        old.unlink()
    for name, text in sorted(problems.items()):
        (CORPUS / f'{name}.krait').write_text(text)
    print(f'{len(problems)} problems in {CORPUS}')


if __name__ == '__main__':
    main()
