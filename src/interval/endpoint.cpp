#include "interval/endpoint.hpp"

#include <cmath>

#include "base/error.hpp"
#include "interval/rounding.hpp"

namespace {

constexpr double correction_step = 1e-12;
constexpr int max_corrections = 99;

}  // namespace

void division_by_zero() { error("Division by zero in divide_endpoints."); }

endpoint add_endpoints(bool lower, endpoint a, endpoint b) {
  return {a.strict || b.strict, rounding::add_toward(lower, a.value, b.value)};
}

endpoint subtract_endpoints(bool lower, endpoint a, endpoint b) {
  return {a.strict || b.strict, rounding::sub_toward(lower, a.value, b.value)};
}

bool lower_weaker(endpoint a, endpoint b) {
  return b.value > a.value || (b.value == a.value && !a.strict && b.strict);
}

bool upper_weaker(endpoint a, endpoint b) {
  return a.value > b.value || (a.value == b.value && !a.strict && b.strict);
}

void round_endpoint_for_int(bool is_int, bool is_lower, bool& strict, double& value) {
  if (!is_int) return;
  if (std::trunc(value) == value) {
    if (strict) value += is_lower ? 1.0 : -1.0;
  } else {
    value = is_lower ? std::ceil(value) : std::floor(value);
  }
  strict = false;
}

namespace {

// x^n for x >= 0 and integral n >= 1 by repeated squaring, every product rounded in the current
// direction: each factor is non-negative, so rounding every step down (up) gives a value not
// above (not below) the exact power.
// The exponent is walked bit by bit as a double, since it may exceed every integer type.
double directed_power(double x, double n) {
  double result = 1.0, square = x;
  for (double e = n; e >= 1.0;) {
    const double half = std::floor(e * 0.5);  // exact: e is integral
    if (e != half * 2.0) result = rounding::mul(result, square);
    e = half;
    if (e >= 1.0) square = rounding::mul(square, square);
  }
  return result;
}

bool is_odd(double n) { return std::fmod(n, 2.0) != 0.0; }

// The correction loops below check their result at round-to-nearest, which can leave it an
// ulp on the wrong side of the exact value. A proof by directed multiplication settles it,
// without touching the exception flags the caller will look at.
double proven_power(double base, double n, bool want_lower) {
  const unsigned flags = fpenv::raised(fpenv::all_flags);
  fpenv::set_rounding_and_flags(want_lower ? fpenv::downward : fpenv::upward, flags);
  const double bound = directed_power(base, n);
  fpenv::set_rounding_and_flags(fpenv::to_nearest, flags);
  return bound;
}

// The root `base` of x (x >= 0) is on the requested side when base^n, rounded against it, still
// is. One ulp at a time first; a start farther off (the library's x^(1/n) loses accuracy on
// subnormal arguments) is left by doubling steps. A lower end that would cross 0 stops at 0, a
// lower end of every root of x >= 0.
double proven_root(double base, double x, double n, bool want_lower) {
  if (want_lower && base <= 0.0) return base;
  const unsigned flags = fpenv::raised(fpenv::all_flags);
  const double away = want_lower ? -HUGE_VAL : HUGE_VAL;
  double gap = 0.0;
  for (int step = 0; std::isfinite(base); ++step) {
    // What the loop raises is dropped at its end: the switches need not keep it.
    fpenv::set_rounding_and_flags(want_lower ? fpenv::upward : fpenv::downward, flags);
    const double power = directed_power(base, n);
    fpenv::set_rounding_and_flags(fpenv::to_nearest, flags);
    if (want_lower ? power <= x : power >= x) break;
    if (step < max_corrections) {
      base = std::nextafter(base, away);
      continue;
    }
    if (gap == 0.0) gap = std::fabs(std::nextafter(base, away) - base);
    gap *= 2.0;
    base = want_lower ? base - gap : base + gap;
    if (want_lower && base <= 0.0) {
      base = 0.0;
      break;
    }
  }
  fpenv::set_rounding_and_flags(fpenv::last_set, flags);
  return base;
}

double pinned_pow(double x, double y) {
  rounding::pin(x);
  rounding::pin(y);
  double r = std::pow(x, y);
  rounding::pin(r);
  return r;
}

// Steps `base` by 1e-12 under the directed mode until base^check_exponent, computed at
// round-to-nearest, lies on the wanted side of x. The check itself is off by a few ulps for large
// magnitudes (its exponent 1/n is rounded) and each step moves it by a fraction of an ulp there,
// so after 99 steps the corrections stop; the directed proof that follows settles the side.
// An infinite base has overflowed already and is condemned by the raised flag, so it is not
// stepped. A lower end stepped below 0 with `floor_at_zero` stays at 0: 0 is a lower end of
// every even root, and below it the even power of the check only grows.
double correct(double base, double x, double check_exponent, bool want_lower, bool floor_at_zero) {
  double check = pinned_pow(base, check_exponent);
  for (int steps = 0; (want_lower ? check > x : check < x) && std::isfinite(base) && steps < max_corrections;
       ++steps) {
    rounding::toward(want_lower);
    base = want_lower ? rounding::sub(base, correction_step) : rounding::add(base, correction_step);
    rounding::nearest();
    if (floor_at_zero && base < 0.0) base = 0.0;
    check = pinned_pow(base, check_exponent);
  }
  return base;
}

// The library functions are not correctly rounded and 1e-12 vanishes next to large values;
// one ulp outward then covers the library's error.
double widen(double value, bool want_lower) {
  double widened =
      want_lower ? rounding::sub(value, correction_step) : rounding::add(value, correction_step);
  if (widened == value) widened = std::nextafter(value, want_lower ? -HUGE_VAL : HUGE_VAL);
  return widened;
}

template <double (*function)(double)>
double rounded_call(double x, bool want_lower) {
  rounding::nearest();
  rounding::pin(x);
  double value = function(x);
  rounding::pin(value);
  return widen(value, want_lower);
}

double library_cos(double x) { return std::cos(x); }
double library_acos(double x) { return std::acos(x); }
double library_exp(double x) { return std::exp(x); }
double library_log(double x) { return std::log(x); }

}  // namespace

double power_by_multiplication(double x, double n, bool want_lower) {
  const bool negative = x < 0 && is_odd(n);
  // |x|^n rounded toward the side that becomes the wanted one after the sign.
  rounding::toward(negative ? !want_lower : want_lower);
  double power = directed_power(std::fabs(x), n);
  rounding::nearest();
  return negative ? -power : power;
}

double krait_pow(double x, double n, bool want_lower) {
  const bool odd = is_odd(n);
  rounding::nearest();
  const bool negative = x < 0;
  if (negative) {
    if (odd) want_lower = !want_lower;
    x = std::fabs(x);
  }
  double base = pinned_pow(x, n);
  base = correct(base, x, rounding::div(1.0, n), want_lower, false);
  const double proven = proven_power(x, n, want_lower);
  base = want_lower ? std::fmin(base, proven) : std::fmax(base, proven);
  if (odd && negative) base = -base;  // negation is exact in every mode
  rounding::nearest();
  return base;
}

double krait_nrt(double x, double n, bool want_lower) {
  rounding::nearest();
  const bool negative = x < 0;
  if (negative) {
    want_lower = !want_lower;
    x = std::fabs(x);
  }
  double base = pinned_pow(x, rounding::div(1.0, n));
  const bool even = std::fmod(n, 2.0) == 0.0;
  base = correct(base, x, n, want_lower, even);
  base = proven_root(base, x, n, want_lower);
  if (negative) base = -base;
  rounding::nearest();
  return base;
}

double cos_rounded(double x, bool want_lower) { return rounded_call<library_cos>(x, want_lower); }
double acos_rounded(double x, bool want_lower) { return rounded_call<library_acos>(x, want_lower); }
double exp_rounded(double x, bool want_lower) { return rounded_call<library_exp>(x, want_lower); }
double log_rounded(double x, bool want_lower) { return rounded_call<library_log>(x, want_lower); }
