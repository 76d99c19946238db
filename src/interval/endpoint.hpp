#pragma once

#include <cstddef>

#include "interval/rounding.hpp"

// One end of an interval. Unbounded sides are never endpoints: they are empty bound stacks.
struct endpoint {
  bool strict = false;  // open end: the value itself is excluded
  double value = 0.0;
};

inline bool closed_zero(endpoint e) { return !e.strict && e.value == 0.0; }
// Fatal: a divisor that is exactly 0.
[[noreturn]] void division_by_zero();

// The arithmetic operations, rounded down for a lower end and up for an upper one. They leave
// the rounding direction upward. Product and quotient are inline: the product rule calls them
// four times per end.
inline endpoint multiply_endpoints(bool lower, endpoint a, endpoint b) {
  if (closed_zero(a) || closed_zero(b)) return {false, 0.0};
  return {a.strict || b.strict, rounding::mul_toward(lower, a.value, b.value)};
}
inline endpoint divide_endpoints(bool lower, endpoint numerator, endpoint denominator) {
  if (closed_zero(denominator)) division_by_zero();
  if (closed_zero(numerator)) return {false, 0.0};
  return {numerator.strict || denominator.strict, rounding::div_toward(lower, numerator.value, denominator.value)};
}
endpoint add_endpoints(bool lower, endpoint a, endpoint b);
endpoint subtract_endpoints(bool lower, endpoint a, endpoint b);

// As lower ends: does `b` exclude more than `a`?
bool lower_weaker(endpoint a, endpoint b);
// As upper ends: does `b` exclude more than `a`?
bool upper_weaker(endpoint a, endpoint b);

// Smallest and largest endpoint of a non-empty list; on equal values the closed end wins, so
// the hull keeps the looser end. Inline: a caller that uses one side pays for that side only.
inline void endpoint_hull(const endpoint* list, std::size_t count, endpoint& lo, endpoint& hi) {
  lo = hi = list[0];
  for (std::size_t i = 1; i < count; ++i) {
    const endpoint e = list[i];
    if (e.value < lo.value || (e.value == lo.value && lo.strict && !e.strict)) lo = e;
    if (e.value > hi.value || (e.value == hi.value && hi.strict && !e.strict)) hi = e;
  }
}

// Tightens an end of an integer variable to the nearest integer inside; the result is closed.
// Does nothing for a real variable.
void round_endpoint_for_int(bool is_int, bool is_lower, bool& strict, double& value);

// x^n and the n-th root of x for a positive integral n, not above (want_lower) or not below
// the exact value. Each leaves the rounding mode at round-to-nearest.
double krait_pow(double x, double n, bool want_lower);
double krait_nrt(double x, double n, bool want_lower);

// x^n for an integral n >= 0 by repeated multiplication, every product rounded toward the wanted
// side: the two ends are equal exactly when x^n is a double. Leaves round-to-nearest.
double power_by_multiplication(double x, double n, bool want_lower);

// Library functions widened outward by 1e-12, evaluated at round-to-nearest.
double cos_rounded(double x, bool want_lower);
double acos_rounded(double x, bool want_lower);
double exp_rounded(double x, bool want_lower);
double log_rounded(double x, bool want_lower);
