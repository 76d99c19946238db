// x = exp(y) and x = cos(y), through the widened library functions.
#include <cmath>

#include "interval/rounding.hpp"
#include "interval/rule.hpp"

void narrow_exp(rule& r) {
  const endpoint a = r.trigger();
  // exp and log are increasing: each end maps to an end of the same side.
  const double value = r.on_x() ? log_rounded(a.value, r.lower()) : exp_rounded(a.value, r.lower());
  r.emit(r.on_x() ? 1 : 0, r.lower(), {a.strict, value}, {r.trigger_end()});
}

namespace {

constexpr double two_pi = 6.283185307179586;  // just below the true 2*pi
constexpr double pi = 3.141592653589793;
constexpr double three_pi = 9.42477796076938;
// The true 2*pi lies strictly between these two doubles.
const double two_pi_below = two_pi;
const double two_pi_above = std::nextafter(two_pi, 10.0);

// k periods, rounded toward `lower`: k * 2*pi lies between shift(k, true) and shift(k, false).
double period_shift(double k, bool lower) {
  rounding::toward(lower);
  const double a = rounding::mul(k, two_pi_below), b = rounding::mul(k, two_pi_above);
  return lower ? std::fmin(a, b) : std::fmax(a, b);
}

// v - k * 2*pi (or + with `add`), rounded toward `lower`, keeping every true value on its side.
double shifted(double v, double k, bool lower, bool add) {
  const double s = period_shift(k, add ? lower : !lower);
  rounding::toward(lower);
  return add ? rounding::add(v, s) : rounding::sub(v, s);
}

// Do a lower and an upper end leave no real number between them? The pieces live in y shifted
// by whole periods, where integrality means nothing.
bool disjoint(endpoint lower, endpoint upper) {
  return lower.value > upper.value || (lower.value == upper.value && (lower.strict || upper.strict));
}

double periods_below(double v) {
  rounding::nearest();
  return std::floor(rounding::div(v, two_pi));
}

endpoint cos_end(endpoint e, bool lower) { return {e.strict, cos_rounded(e.value, lower)}; }

bool in_range(endpoint e, double from, double to) { return from <= e.value && e.value <= to; }

// Forward: y's range, moved by whole periods into [0, 2*pi), decides which monotone pieces of
// cos it covers.
void forward(rule& r) {
  const var_ends& y = r.y();
  if (!y.has_lo || !y.has_hi) return;
  rounding::nearest();
  if (!(rounding::sub(y.hi.value, y.lo.value) < two_pi)) return;
  const double k = periods_below(y.lo.value);
  const endpoint lo{y.lo.strict, shifted(y.lo.value, k, true, false)};
  const endpoint hi{y.hi.strict, shifted(y.hi.value, k, false, false)};
  rounding::nearest();
  if (in_range(lo, 0, pi) && in_range(hi, 0, pi)) {
    r.emit(0, true, cos_end(hi, true), {Y_LO, Y_HI});
    r.emit(0, false, cos_end(lo, false), {Y_LO, Y_HI});
  } else if (in_range(lo, pi, two_pi) && in_range(hi, pi, two_pi)) {
    r.emit(0, true, cos_end(lo, true), {Y_LO, Y_HI});
    r.emit(0, false, cos_end(hi, false), {Y_LO, Y_HI});
  } else if (in_range(lo, 0, pi) && in_range(hi, pi, two_pi)) {
    const endpoint a = cos_end(lo, false), b = cos_end(hi, false);
    r.emit(0, false, upper_weaker(a, b) ? a : b, {Y_LO, Y_HI});
  } else if (in_range(lo, pi, two_pi) && in_range(hi, two_pi, three_pi)) {
    const endpoint a = cos_end(lo, true), b = cos_end(hi, true);
    r.emit(0, true, lower_weaker(a, b) ? a : b, {Y_LO, Y_HI});
  }
}

// Backward: within one period, cos y lies in [x_lo, x_hi] on the pieces [-q, -p], [p, q],
// [2*pi - q, 2*pi - p] and [2*pi + p, 2*pi + q], with p = acos(x_hi) and q = acos(x_lo),
// both rounded outward so that every true point stays inside a piece.
void backward(rule& r) {
  const var_ends &x = r.x(), &y = r.y();
  if (!x.has_lo || !x.has_hi || !(-1.0 < x.lo.value) || !(x.hi.value < 1.0)) return;
  const endpoint p{x.hi.strict, acos_rounded(x.hi.value, true)};
  const endpoint q{x.lo.strict, acos_rounded(x.lo.value, false)};
  struct piece {
    endpoint from, to;
  };
  rounding::downward();
  const double p3_from = rounding::sub(two_pi_below, q.value), p4_from = rounding::add(two_pi_below, p.value);
  rounding::upward();
  const double p3_to = rounding::sub(two_pi_above, p.value), p4_to = rounding::add(two_pi_above, q.value);
  rounding::nearest();
  const piece pieces[4] = {{{q.strict, -q.value}, {p.strict, -p.value}},
                           {p, q},
                           {{q.strict, p3_from}, {p.strict, p3_to}},
                           {{p.strict, p4_from}, {q.strict, p4_to}}};

  if (y.has_lo) {
    // The least point of the pieces not below y_lo. Points below -1 after the shift would need
    // pieces of the previous period, so nothing is concluded there.
    const double k = periods_below(y.lo.value);
    const endpoint s{y.lo.strict, shifted(y.lo.value, k, true, false)};
    rounding::nearest();
    if (s.value >= -1.0) {
      for (const piece& pc : pieces) {
        if (disjoint(s, pc.to)) continue;
        const endpoint from = lower_weaker(s, pc.from) ? pc.from : s;
        const endpoint back{from.strict, shifted(from.value, k, true, true)};
        rounding::nearest();
        r.emit(1, true, back, {X_LO, X_HI, Y_LO});
        break;
      }
    }
  }
  if (y.has_hi) {
    const double k = periods_below(y.hi.value);
    const endpoint s{y.hi.strict, shifted(y.hi.value, k, false, false)};
    rounding::nearest();
    if (s.value <= two_pi + 1.0) {
      for (int i = 3; i >= 0; --i) {
        const piece& pc = pieces[i];
        if (disjoint(pc.from, s)) continue;
        const endpoint to = upper_weaker(s, pc.to) ? pc.to : s;
        const endpoint back{to.strict, shifted(to.value, k, false, true)};
        rounding::nearest();
        r.emit(1, false, back, {X_LO, X_HI, Y_HI});
        break;
      }
    }
  }
}

}  // namespace

void narrow_cos(rule& r) {
  if (r.on_x()) {
    backward(r);
  } else {
    forward(r);
  }
}
