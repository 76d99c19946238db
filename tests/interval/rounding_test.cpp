// Directed rounding must survive the optimiser: these tests run in the optimised build and
// compare every computed end with the exact value, using MPFR as the reference.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <cfenv>
#include <cmath>
#include <random>

#include "interval/endpoint.hpp"
#include "interval/rounding.hpp"

namespace {

constexpr mpfr_prec_t precision = 256;

// A double with a random sign, a random 52-bit mantissa and an exponent from [lo_exp, hi_exp].
double random_double(std::mt19937_64& rng, int lo_exp, int hi_exp, bool allow_negative = true) {
  std::uniform_int_distribution<int> exponent(lo_exp, hi_exp);
  const double mantissa = 1.0 + static_cast<double>(rng() >> 12) * 0x1p-52;
  const double value = std::ldexp(mantissa, exponent(rng));
  return allow_negative && (rng() & 1) ? -value : value;
}

// An exact result as two roundings at `precision` bits: a double is at most `exact` iff it is
// at most `down` (the largest representable number not above it), and alike for `up`.
struct exact_value {
  mpfr_t down, up;
  exact_value() {
    mpfr_init2(down, precision);
    mpfr_init2(up, precision);
  }
  ~exact_value() {
    mpfr_clear(down);
    mpfr_clear(up);
  }
  bool lower_ok(double lower) const { return mpfr_cmp_d(down, lower) >= 0; }
  bool upper_ok(double upper) const { return mpfr_cmp_d(up, upper) <= 0; }
  bool exact() const { return mpfr_equal_p(down, up) && mpfr_get_d(down, MPFR_RNDN) == mpfr_get_d(down, MPFR_RNDD); }
};

template <typename Op>
void compute(exact_value& e, Op op) {
  op(e.down, MPFR_RNDD);
  op(e.up, MPFR_RNDU);
}

// Exact results of MPFR's binary operations with a double operand and of its functions.
void exact_binary(exact_value& e, int (*f)(mpfr_ptr, mpfr_srcptr, double, mpfr_rnd_t), double a, double b) {
  compute(e, [&](mpfr_t r, mpfr_rnd_t m) {
    mpfr_set_d(r, a, m);
    f(r, r, b, m);
  });
}

void exact_unary(exact_value& e, int (*f)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t), double x) {
  compute(e, [&](mpfr_t r, mpfr_rnd_t m) {
    mpfr_set_d(r, x, m);
    f(r, r, m);
  });
}

// The same operation for both ends in one function, with the mode switched in between: without
// the barriers the optimiser is free to compute it once.
struct enclosure {
  double lower, upper;
};

template <endpoint (*op)(endpoint, endpoint)>
enclosure enclose(double a, double b) {
  rounding::downward();
  const double lower = op({false, a}, {false, b}).value;
  rounding::upward();
  const double upper = op({false, a}, {false, b}).value;
  rounding::nearest();
  return {lower, upper};
}

enclosure product(double a, double b) { return enclose<multiply_endpoints>(a, b); }
enclosure quotient(double a, double b) { return enclose<divide_endpoints>(a, b); }
enclosure sum(double a, double b) { return enclose<add_endpoints>(a, b); }
enclosure difference(double a, double b) { return enclose<subtract_endpoints>(a, b); }

// The shape the narrowing operators have: the arithmetic is inlined into a function that
// switches modes around it, inside a loop. Unprotected, the optimiser computes each operation
// once for both ends (or hoists it out of the loop).
template <double (*op)(double, double)>
int collapsed_enclosures(const double* a, const double* b, int n) {
  int collapsed = 0;
  for (int i = 0; i < n; ++i) {
    rounding::downward();
    const double lower = op(a[i], b[i]);
    rounding::upward();
    const double upper = op(a[i], b[i]);
    rounding::nearest();
    collapsed += !(lower < upper);
  }
  return collapsed;
}

void expect_enclosure(const exact_value& e, enclosure r, double a, double b) {
  ASSERT_TRUE(e.lower_ok(r.lower)) << a << " , " << b << " lower " << r.lower;
  ASSERT_TRUE(e.upper_ok(r.upper)) << a << " , " << b << " upper " << r.upper;
  if (!e.exact()) {
    ASSERT_LT(r.lower, r.upper) << a << " , " << b;
  }
}

}  // namespace

TEST(DirectedRounding, ConstantOperandsAreNotFoldedAtNearest) {
  // Known-inexact operations on literals: a compile-time evaluation would give one value.
  const enclosure p = product(0.1, 0.3);
  EXPECT_LT(p.lower, p.upper);
  const enclosure q = quotient(1.0, 3.0);
  EXPECT_LT(q.lower, q.upper);
  const enclosure s = sum(0.1, 0.2);
  EXPECT_LT(s.lower, s.upper);
  const enclosure d = difference(1.0, 1e-20);
  EXPECT_LT(d.lower, d.upper);
  EXPECT_EQ(d.upper, 1.0);
  EXPECT_EQ(std::fegetround(), FE_TONEAREST);
}

TEST(DirectedRounding, InlinedArithmeticStaysBetweenModeSwitches) {
  // Every pair is inexact for all four operations.
  const double a[] = {3.0, 1.0 / 3.0, 1e16 + 2.0, 0.1};
  const double b[] = {0.1, 1e-20, 1.1, 7.0};
  EXPECT_EQ(collapsed_enclosures<rounding::mul>(a, b, 4), 0);
  EXPECT_EQ(collapsed_enclosures<rounding::div>(a, b, 4), 0);
  EXPECT_EQ(collapsed_enclosures<rounding::add>(a, b, 4), 0);
  EXPECT_EQ(collapsed_enclosures<rounding::sub>(a, b, 4), 0);
}

TEST(DirectedRounding, ProductsQuotientsSumsEncloseTheExactValue) {
  std::mt19937_64 rng(20261122);
  exact_value e;
  for (int i = 0; i < 20000; ++i) {
    const double a = random_double(rng, -60, 60), b = random_double(rng, -60, 60);
    exact_binary(e, mpfr_mul_d, a, b);
    expect_enclosure(e, product(a, b), a, b);
    exact_binary(e, mpfr_div_d, a, b);
    expect_enclosure(e, quotient(a, b), a, b);
    exact_binary(e, mpfr_add_d, a, b);
    expect_enclosure(e, sum(a, b), a, b);
    exact_binary(e, mpfr_sub_d, a, b);
    expect_enclosure(e, difference(a, b), a, b);
  }
}

TEST(DirectedRounding, PowersAndRootsEncloseTheExactValue) {
  std::mt19937_64 rng(7);
  exact_value e;
  bool some_power_inexact = false;
  for (int i = 0; i < 20000; ++i) {
    const unsigned n = 1 + static_cast<unsigned>(rng() % 9);
    const double x = random_double(rng, -20, 20);
    compute(e, [&](mpfr_t r, mpfr_rnd_t m) {
      mpfr_set_d(r, x, m);
      mpfr_pow_ui(r, r, n, m);
    });
    const enclosure p{krait_pow(x, n, true), krait_pow(x, n, false)};
    expect_enclosure(e, p, x, n);
    some_power_inexact |= !e.exact();

    const double y = (n % 2 == 1) ? x : std::fabs(x);
    compute(e, [&](mpfr_t r, mpfr_rnd_t m) {
      mpfr_set_d(r, y, m);
      mpfr_rootn_ui(r, r, n, m);
    });
    const enclosure root{krait_nrt(y, n, true), krait_nrt(y, n, false)};
    expect_enclosure(e, root, y, n);
  }
  EXPECT_TRUE(some_power_inexact);
  EXPECT_EQ(std::fegetround(), FE_TONEAREST);
}

TEST(DirectedRounding, TranscendentalsEncloseTheExactValue) {
  std::mt19937_64 rng(99);
  exact_value e;
  std::uniform_real_distribution<double> wide(-700.0, 700.0), unit(-1.0, 1.0), angle(-100.0, 100.0);
  for (int i = 0; i < 20000; ++i) {
    const double x = wide(rng);
    exact_unary(e, mpfr_exp, x);
    expect_enclosure(e, {exp_rounded(x, true), exp_rounded(x, false)}, x, 0);

    const double c = angle(rng);
    exact_unary(e, mpfr_cos, c);
    expect_enclosure(e, {cos_rounded(c, true), cos_rounded(c, false)}, c, 0);

    const double u = unit(rng);
    exact_unary(e, mpfr_acos, u);
    expect_enclosure(e, {acos_rounded(u, true), acos_rounded(u, false)}, u, 0);

    const double l = random_double(rng, -1000, 1000, false);
    exact_unary(e, mpfr_log, l);
    expect_enclosure(e, {log_rounded(l, true), log_rounded(l, false)}, l, 0);
  }
  EXPECT_EQ(std::fegetround(), FE_TONEAREST);
}
