// x = y + z and x = c * y.
#include "interval/rounding.hpp"
#include "interval/rule.hpp"

namespace {

endpoint rounded_sum(bool lower, endpoint a, endpoint b) { return add_endpoints(lower, a, b); }

endpoint rounded_difference(bool lower, endpoint a, endpoint b) { return subtract_endpoints(lower, a, b); }

}  // namespace

void narrow_sum(rule& r) {
  const endpoint a = r.trigger();
  const bool lower = r.lower();
  const operand_end trigger = r.trigger_end();

  if (r.on_x()) {
    // x >= a: y >= a - z_hi, z >= a - y_hi.  x <= b: y <= b - z_lo, z <= b - y_lo.
    auto project = [&](std::uint8_t target, std::uint8_t other) {
      const var_ends& o = r.in.v[other];
      if (lower && o.has_hi) {
        r.emit_rounded(target, true, rounded_difference(true, a, o.hi), {trigger, end_of(other, false)});
      } else if (!lower && o.has_lo) {
        r.emit_rounded(target, false, rounded_difference(false, a, o.lo), {trigger, end_of(other, true)});
      }
    };
    project(1, 2);
    project(2, 1);
    return;
  }
  // Trigger on the operand p, o being the other one.
  // p >= a: o <= x_hi - a, x >= a + o_lo.  p <= b: o >= x_lo - b, x <= b + o_hi.
  const std::uint8_t o = r.on_y() ? 2 : 1;
  const var_ends& x = r.x();
  const var_ends& ov = r.in.v[o];
  if (lower) {
    if (x.has_hi) r.emit_rounded(o, false, rounded_difference(false, x.hi, a), {trigger, X_HI});
    if (ov.has_lo) r.emit_rounded(0, true, rounded_sum(true, a, ov.lo), {trigger, end_of(o, true)});
  } else {
    if (x.has_lo) r.emit_rounded(o, true, rounded_difference(true, x.lo, a), {trigger, X_LO});
    if (ov.has_hi) r.emit_rounded(0, false, rounded_sum(false, a, ov.hi), {trigger, end_of(o, false)});
  }
}

void narrow_scale(rule& r) {
  const double c = r.in.c;
  const endpoint a = r.trigger();
  // x = c * y: from x, y = x / c; from y, x = c * y. A negative factor flips the direction.
  const bool target_lower = r.lower() == (c >= 0);
  const double value =
      r.on_x() ? rounding::div_toward(target_lower, a.value, c) : rounding::mul_toward(target_lower, c, a.value);
  // A zero factor makes the product exactly 0, reached whatever y is.
  const bool strict = a.strict && (r.on_x() || c != 0.0);
  r.emit_rounded(r.on_x() ? 1 : 0, target_lower, {strict, value}, {r.trigger_end()});
}
