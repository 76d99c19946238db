// x = exp(y) and x = cos(y), through the widened library functions.
#include <cmath>

#include "interval/rounding.hpp"
#include "solver/solver.hpp"

bool krait_solver::deduce_exp(bound_ref trigger, u32 t) {
  rule_inputs in;
  if (!read_rule_inputs(trigger, t, in)) return false;
  // exp and log are increasing: each bound maps to a bound of the same side.
  const double value = in.on_x() ? log_rounded(in.value.value, in.is_lower) : exp_rounded(in.value.value, in.is_lower);
  const endpoint e{in.value.strict, value};
  return in.on_x() ? narrow(in.tc.y, in.y, in.is_lower, e, t, {trigger})
                   : narrow(in.tc.x, in.x, in.is_lower, e, t, {trigger});
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

}  // namespace

bool krait_solver::deduce_cos(bound_ref trigger, u32 t) {
  rule_inputs in;
  if (!read_rule_inputs(trigger, t, in)) return false;
  const u32 x = in.tc.x, y = in.tc.y;
  const var_view& xv = in.x;
  const var_view& yv = in.y;
  bool conflict = false;

  if (!in.on_x()) {
    // Forward: y's range, moved by whole periods into [0, 2*pi), decides which monotone
    // pieces of cos it covers.
    if (!yv.has_lower || !yv.has_upper) return false;
    rounding::nearest();
    if (!(rounding::sub(yv.upper, yv.lower) < two_pi)) return false;
    const double k = periods_below(yv.lower);
    const endpoint lo{yv.lower_strict, shifted(yv.lower, k, true, false)};
    const endpoint hi{yv.upper_strict, shifted(yv.upper, k, false, false)};
    rounding::nearest();
    const antecedent_list reasons{{y, yv.lower_id}, {y, yv.upper_id}};
    auto cos_end = [](endpoint e, bool lower) { return endpoint{e.strict, cos_rounded(e.value, lower)}; };
    auto in_range = [](endpoint e, double from, double to) { return from <= e.value && e.value <= to; };
    if (in_range(lo, 0, pi) && in_range(hi, 0, pi)) {
      conflict = narrow(x, in.x, true, cos_end(hi, true), t, reasons) ||
                 narrow(x, in.x, false, cos_end(lo, false), t, reasons);
    } else if (in_range(lo, pi, two_pi) && in_range(hi, pi, two_pi)) {
      conflict = narrow(x, in.x, true, cos_end(lo, true), t, reasons) ||
                 narrow(x, in.x, false, cos_end(hi, false), t, reasons);
    } else if (in_range(lo, 0, pi) && in_range(hi, pi, two_pi)) {
      const endpoint a = cos_end(lo, false), b = cos_end(hi, false);
      conflict = narrow(x, in.x, false, upper_weaker(a, b) ? a : b, t, reasons);
    } else if (in_range(lo, pi, two_pi) && in_range(hi, two_pi, three_pi)) {
      const endpoint a = cos_end(lo, true), b = cos_end(hi, true);
      conflict = narrow(x, in.x, true, lower_weaker(a, b) ? a : b, t, reasons);
    }
    rounding::nearest();
    return conflict;
  }

  // Backward: within one period, cos y lies in [x_lo, x_hi] on the pieces [-q, -p], [p, q],
  // [2*pi - q, 2*pi - p] and [2*pi + p, 2*pi + q], with p = acos(x_hi) and q = acos(x_lo),
  // both rounded outward so that every true point stays inside a piece.
  if (!xv.has_lower || !xv.has_upper || !(-1.0 < xv.lower) || !(xv.upper < 1.0)) return false;
  const endpoint p{xv.upper_strict, acos_rounded(xv.upper, true)};
  const endpoint q{xv.lower_strict, acos_rounded(xv.lower, false)};
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
  const bound_ref x_lo{x, xv.lower_id}, x_hi{x, xv.upper_id};

  if (yv.has_lower) {
    // The least point of the pieces not below y_lo. Points below -1 after the shift would need
    // pieces of the previous period, so nothing is concluded there.
    const double k = periods_below(yv.lower);
    const endpoint s{yv.lower_strict, shifted(yv.lower, k, true, false)};
    rounding::nearest();
    if (s.value >= -1.0) {
      for (const piece& pc : pieces) {
        if (disjoint(s, pc.to)) continue;
        const endpoint from = lower_weaker(s, pc.from) ? pc.from : s;
        const endpoint back{from.strict, shifted(from.value, k, true, true)};
        rounding::nearest();
        conflict = narrow(y, in.y, true, back, t, {x_lo, x_hi, {y, yv.lower_id}});
        break;
      }
    }
  }
  if (!conflict && yv.has_upper) {
    const double k = periods_below(yv.upper);
    const endpoint s{yv.upper_strict, shifted(yv.upper, k, false, false)};
    rounding::nearest();
    if (s.value <= two_pi + 1.0) {
      for (int i = 3; i >= 0; --i) {
        const piece& pc = pieces[i];
        if (disjoint(pc.from, s)) continue;
        const endpoint to = upper_weaker(s, pc.to) ? pc.to : s;
        const endpoint back{to.strict, shifted(to.value, k, false, true)};
        rounding::nearest();
        conflict = narrow(y, in.y, false, back, t, {x_lo, x_hi, {y, yv.upper_id}});
        break;
      }
    }
  }
  rounding::nearest();
  return conflict;
}
