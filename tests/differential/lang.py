"""Random Krait inputs: declarations, formula trees, transition systems and command-line options.

Trees are tuples. Arithmetic: ('var', name, primed), ('num', text) (unsigned: a literal as written
or a symbolic constant's name, worth the double nearest to the decimal), ('neg', a), ('+'|'-'|'*'|
'min'|'max', a, b), ('^'|'nrt', a, n), ('exp'|'cos'|'sin'|'abs', a). Boolean: ('lit', name,
primed) (a variable as a literal: it holds when the value is >= 1), ('true',), ('false',),
('not', spelling, f), (connective, f, g), ('rel', relation, a, b).
"""
from dataclasses import dataclass, field
from fractions import Fraction
from random import Random

CONNECTIVES = ('and', 'or', 'impl', '->', 'xor', 'nxor', '<->', 'nand', 'nor')
RELATIONS = ('<', '<=', '=', '!=', '>=', '>')
FUNCTIONS = ('exp', 'cos', 'sin', 'abs', 'min', 'max')
BRACKETS = ('()', '()', '()', '[]', '{}')
# The other connectives in terms of 'and', 'or', 'xor' and 'not' (three-valued logic keeps these).
REWRITE = {'nand': lambda g, h: ('not', '', ('and', g, h)), 'nor': lambda g, h: ('not', '', ('or', g, h)),
           'impl': lambda g, h: ('or', ('not', '', g), h), 'nxor': lambda g, h: ('not', '', ('xor', g, h))}
REWRITE.update({'->': REWRITE['impl'], '<->': REWRITE['nxor']})
# Constants that are not exact doubles next to ones that are.
DECIMALS = ('0.1', '0.2', '0.3', '1.3', '2.7', '0.7', '1.1', '3.3', '.5', '0.25', '2.5e-1', '1e-3', '1.5')


@dataclass
class Var:
    name: str
    kind: str          # 'int', 'float' or 'boole'
    lo: str = '0'      # range bounds as written
    hi: str = '1'
    static: bool = False

    @property
    def is_int(self):
        return self.kind != 'float'

    def bounds(self):
        return Fraction(float(self.lo)), Fraction(float(self.hi))


@dataclass
class Case:
    """One input file and its options. Plain: `expr` holds the conjuncts. BMC: init/trans/target."""
    family: str
    vars: list
    defines: dict = field(default_factory=dict)   # symbolic constant name -> text of its value
    expr: list = None
    init: list = None
    trans: list = None
    target: list = None
    options: list = field(default_factory=list)
    max_depth: int = 0
    brackets: int = 0   # seed for swapping round brackets; 0 keeps them all round

    @property
    def bmc(self):
        return self.expr is None

    def var(self, name):
        return next(v for v in self.vars if v.name == name)

    def sections(self):
        return [('INIT', self.init), ('TRANS', self.trans), ('TARGET', self.target)] if self.bmc else [('EXPR', self.expr)]

    def args(self):
        return [*self.options, *(['--max_depth', str(self.max_depth)] if self.bmc else [])]

    def text(self):
        lines = ['DECL', *(f'  define {n} = {t};' for n, t in self.defines.items())]
        for v in self.vars:
            ends = (f'- {b[1:]}' if b.startswith('-') else b for b in (v.lo, v.hi))   # '--' opens a comment
            rng = '' if v.kind == 'boole' else f' [{", ".join(ends)}]'
            lines.append(f'  {"static " * v.static}{v.kind}{rng} {v.name};')
        for title, conjuncts in self.sections():
            lines += [title, *(f'  {show(c)};' for c in conjuncts)]
        text = '\n'.join(lines) + '\n'
        return rebracket(text, Random(self.brackets)) if self.brackets else text


def value(case, text):
    """The double a literal or symbolic constant denotes, as an exact fraction (a Fraction stands
    for itself)."""
    return text if isinstance(text, Fraction) else Fraction(float(case.defines.get(text, text)))


def nodes(t):
    """t and every subtree of it."""
    yield t
    for c in t[1:]:
        if isinstance(c, tuple):
            yield from nodes(c)


def show(t):
    """Input syntax. Every compound is bracketed, so precedence never matters, and a blank follows
    every minus sign, so that two of them never open a comment."""
    op = t[0]
    if op in ('var', 'lit'):
        return t[1] + "'" * t[2]
    if op in ('num', 'true', 'false'):
        return t[1] if op == 'num' else op
    if op in ('not', 'neg'):
        return f'({t[1]} {show(t[2])})' if op == 'not' else f'(- {show(t[1])})'
    if op in ('^', 'nrt'):
        return f'({show(t[1])} ^ {t[2]})' if op == '^' else f'nrt({show(t[1])}, {t[2]})'
    if op in FUNCTIONS:
        return f'{op}({", ".join(map(show, t[1:]))})'
    if op == 'rel':
        return f'({show(t[2])} {t[1]} {show(t[3])})'
    return f'({show(t[1])} {op} {show(t[2])})'


def rebracket(text, rng):
    """Swaps some round brackets for square or curly ones (the grammar reads them alike)."""
    out, stack = [], []
    for ch in text:
        if ch == '(':
            call = ''.join(out[-4:]).endswith(('nrt',) + FUNCTIONS)
            stack.append('()' if call else rng.choice(BRACKETS))
            ch = stack[-1][0]
        elif ch == ')':
            ch = stack.pop()[1]
        out.append(ch)
    return ''.join(out)


class Generator:
    """Random cases of one family: 'int' (brute force applies), 'real', 'mixed' or 'extreme'
    (huge magnitudes and tiny splitting widths)."""

    def __init__(self, rng, family, bmc):
        self.rng, self.family, self.bmc, self.primed_ok = rng, family, bmc, False
        r = rng
        n_int, n_float, n_bool = {'int': (r.randint(1, 3), 0, r.randint(0, 2)),
                                  'real': (r.randint(0, 1), r.randint(1, 2), r.randint(0, 1)),
                                  'mixed': (r.randint(1, 2), r.randint(1, 2), r.randint(0, 1)),
                                  'extreme': (r.randint(0, 1), r.randint(1, 2), r.randint(0, 1))}[family]
        names, vs = iter(self.names(n_int + n_float + n_bool)), []
        for _ in range(n_int):
            lo = r.randint(-3, 1)
            vs.append(Var(next(names), 'int', str(lo), str(r.randint(lo + 1, 8 if bmc else 4))))
        vs += [Var(next(names), 'float', *self.float_range()) for _ in range(n_float)]
        vs += [Var(next(names), 'boole') for _ in range(n_bool)]
        for v in vs if bmc else ():
            v.static = r.random() < 0.15
        self.case = Case(family, vs)
        if r.random() < 0.15:
            self.case.defines['c' + str(r.randint(0, 9))] = r.choice(DECIMALS + ('3', '2'))

    def names(self, n):
        pool = [f'{p}{i}' for p in 'xyzpq' for i in range(3)] + ['X', 'Y', 'a_b', 'speed', 'Z1']
        if self.rng.random() < 0.05:
            pool.append(f'V_{self.rng.randint(1, 9)}')   # a user name that looks like a helper symbol
        self.rng.shuffle(pool)
        return pool[:n]

    def float_range(self):
        r = self.rng
        if self.family == 'extreme':
            kind = r.randrange(4)
            if kind < 2:
                return (('-100000000000000001', '100000000000000001'), ('1e300', '1.7e308'))[kind]
            if kind == 2:
                return '-1e17', str(r.randint(-3, 3))
        if r.random() < 0.3:
            lo = r.choice(DECIMALS)
            lo = ('-' + lo) if r.random() < 0.5 else lo
            return lo, str(int(float(lo)) + r.randint(1, 3))
        lo = Fraction(r.randint(-4, 1), 2)
        return repr(float(lo)), repr(float(lo + Fraction(r.randint(2, 6), 2)))

    def constant(self):
        r, roll = self.rng, self.rng.random()
        if self.case.defines and roll < 0.08:
            text = r.choice(list(self.case.defines))
        elif self.family == 'extreme' and roll < 0.25:
            text = r.choice(('100000000000000001', '1e17', '1e308', '1e-300', '0.1'))
        elif self.family != 'int' and roll < 0.3 or roll < 0.12:
            text = r.choice(DECIMALS)
        elif self.family != 'int' and roll < 0.45:
            text = repr(r.randint(1, 12) / 4)
        else:
            text = str(r.randint(0, 6))
        return ('neg', ('num', text)) if r.random() < 0.25 and text != '0' else ('num', text)

    def variable(self, literal=False):
        v = self.rng.choice(self.case.vars)
        return ('lit' if literal else 'var', v.name, self.primed_ok and not v.static and self.rng.random() < 0.5)

    def term(self, depth):
        r = self.rng
        if depth == 0 or r.random() < 0.3:
            return self.variable() if r.random() < 0.75 else self.constant()
        op = r.choices(('+', '-', '*', 'scale', 'neg', '^', 'nrt', 'exp', 'cos', 'sin', 'abs', 'min', 'max'),
                       (4, 3, 4, 2, 1, 3, 1, 1, 1, 0.3, 1, 1, 1))[0]
        if op == 'scale':
            k, a = self.constant(), self.term(depth - 1)
            return ('*', k, a) if r.random() < 0.5 else ('*', a, k)
        if op == '^':
            return ('^', self.term(depth - 1), r.choices((0, 1, 2, 3, 4), (1, 1, 4, 2, 1))[0])
        if op == 'nrt':
            return ('nrt', self.term(depth - 1), r.choice((2, 2, 3, 4)))
        if op in ('neg', 'abs', 'exp', 'cos', 'sin'):
            return (op, self.term(depth - 1))
        return (op, self.term(depth - 1), self.term(depth - 1))

    def relation(self):
        rhs = self.constant() if self.rng.random() < 0.6 else self.term(1)
        return ('rel', self.rng.choice(RELATIONS), self.term(2), rhs)

    def formula(self, depth):
        r = self.rng
        if depth == 0 or r.random() < 0.3:
            roll = r.random()
            return self.relation() if roll < 0.85 else self.variable(literal=True) if roll < 0.97 \
                else (r.choice(('true', 'false')),)
        if r.random() < 0.15:
            return ('not', r.choice(('not', '!')), self.formula(depth - 1))
        return (r.choice(CONNECTIVES), self.formula(depth - 1), self.formula(depth - 1))

    def update(self):
        """x' = f(x, ...): the usual shape of a transition, mostly a small step."""
        r = self.rng
        v = r.choice([v for v in self.case.vars if not v.static] or self.case.vars)
        self.primed_ok = False
        x = ('var', v.name, False)
        rhs = r.choice([('+', x, self.constant()), ('-', x, self.constant()), ('*', self.constant(), x),
                        ('max', x, self.constant()), self.term(1), self.term(2)])
        self.primed_ok = True
        return ('rel', r.choice(('=', '=', '<=', '>=')), ('var', v.name, not v.static), rhs)

    def start(self):
        """INIT: most variables start at one value of their range, and some condition may hold."""
        r, out = self.rng, []
        for v in self.case.vars:
            if r.random() < 0.6:
                lo, hi = v.bounds()
                text = str(r.randint(int(lo), int(hi))) if v.is_int else r.choice((v.lo, v.hi))
                num = ('neg', ('num', text[1:])) if text.startswith('-') else ('num', text)
                out.append(('rel', '=', ('var', v.name, False), num))
        if r.random() < 0.3 or not out:
            out.append(self.formula(r.randint(0, 1)))
        return out

    def conjuncts(self, lo, hi):
        return [self.formula(self.rng.randint(0, 3)) for _ in range(self.rng.randint(lo, hi))]

    def options(self):
        r, opts = self.rng, []
        if r.random() < 0.3:
            opts += ['--msw', r.choice(('1e-17', '1e-9') if self.family == 'extreme' else ('0.5', '0.05', '0.01', '0.001'))]
        if r.random() < 0.2:
            opts += ['--mbd', r.choice(('0', '0.1', '0.001'))]
        if r.random() < 0.2:
            opts += ['--var_order', str(r.randint(0, 9))]
        if r.random() < 0.15:
            a = r.randint(1, 20)
            opts += ['--rst', str(a), str(a + r.randint(0, 50)), '1.5', r.choice(('1.5', '2'))]
        return opts + [o for o in ('--reuse', '--shifting') if self.bmc and r.random() < 0.3]

    def make(self):
        c, r = self.case, self.rng
        if self.bmc:
            c.init = self.start()
            self.primed_ok = True
            c.trans = [self.update() for _ in range(r.randint(0, 2))]
            c.trans = (c.trans + (self.conjuncts(1, 1) if r.random() < 0.3 else [])) or [self.update()]
            self.primed_ok = False
            c.target, c.max_depth = self.conjuncts(1, 2), r.randint(1, 3)
        else:
            c.expr = self.conjuncts(1, 3)
        c.options = self.options()
        c.brackets = r.randint(1, 10**6) if r.random() < 0.2 else 0
        return c


def make_case(rng, family=None, bmc=None):
    family = family or rng.choices(('int', 'real', 'mixed', 'extreme'), (4, 3, 3, 0.4))[0]
    return Generator(rng, family, rng.random() < 0.3 if bmc is None else bmc).make()
