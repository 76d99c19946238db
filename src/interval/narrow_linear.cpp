// x = y + z and x = c * y.
#include "interval/rounding.hpp"
#include "solver/solver.hpp"

namespace {

endpoint rounded_sum(bool lower, endpoint a, endpoint b) {
  rounding::toward(lower);
  return add_endpoints(a, b);
}

endpoint rounded_difference(bool lower, endpoint a, endpoint b) {
  rounding::toward(lower);
  return subtract_endpoints(a, b);
}

}  // namespace

bool krait_solver::deduce_sum(bound_ref trigger, u32 t) {
  rule_inputs in;
  if (!read_rule_inputs(trigger, t, in)) return false;
  const tclause& tc = in.tc;
  const endpoint a = in.value;
  bool conflict = false;

  if (in.on_x()) {
    // x >= a: y >= a - z_hi, z >= a - y_hi.  x <= b: y <= b - z_lo, z <= b - y_lo.
    auto project = [&](u32 target, var_view& target_view, u32 other, const var_view& other_view) {
      if (in.is_lower && other_view.has_upper) {
        return narrow_rounded(target, target_view, true, rounded_difference(true, a, other_view.hi()), t,
                              {trigger, {other, other_view.upper_id}});
      }
      if (!in.is_lower && other_view.has_lower) {
        return narrow_rounded(target, target_view, false, rounded_difference(false, a, other_view.lo()), t,
                              {trigger, {other, other_view.lower_id}});
      }
      return false;
    };
    conflict = project(tc.y, in.y, tc.z, in.z) || project(tc.z, in.z, tc.y, in.y);
  } else {
    // Trigger on the operand p, o being the other one.
    // p >= a: o <= x_hi - a, x >= a + o_lo.  p <= b: o >= x_lo - b, x <= b + o_hi.
    const bool on_y = in.on_y();
    const u32 o = on_y ? tc.z : tc.y;
    var_view& ov = on_y ? in.z : in.y;
    if (in.is_lower) {
      if (in.x.has_upper) {
        conflict = narrow_rounded(o, ov, false, rounded_difference(false, in.x.hi(), a), t,
                                  {trigger, {tc.x, in.x.upper_id}});
      }
      if (!conflict && ov.has_lower) {
        conflict = narrow_rounded(tc.x, in.x, true, rounded_sum(true, a, ov.lo()), t, {trigger, {o, ov.lower_id}});
      }
    } else {
      if (in.x.has_lower) {
        conflict = narrow_rounded(o, ov, true, rounded_difference(true, in.x.lo(), a), t,
                                  {trigger, {tc.x, in.x.lower_id}});
      }
      if (!conflict && ov.has_upper) {
        conflict = narrow_rounded(tc.x, in.x, false, rounded_sum(false, a, ov.hi()), t, {trigger, {o, ov.upper_id}});
      }
    }
  }
  rounding::nearest();
  return conflict;
}

bool krait_solver::deduce_scale(bound_ref trigger, u32 t) {
  rule_inputs in;
  if (!read_rule_inputs(trigger, t, in)) return false;
  const double c = in.tc.c;
  // x = c * y: from x, y = x / c; from y, x = c * y. A negative factor flips the direction.
  const bool target_lower = in.is_lower == (c >= 0);
  rounding::toward(target_lower);
  const double value = in.on_x() ? rounding::div(in.value.value, c) : rounding::mul(c, in.value.value);
  // A zero factor makes the product exactly 0, reached whatever y is.
  const bool strict = in.value.strict && (in.on_x() || c != 0.0);
  const bool conflict = in.on_x() ? narrow_rounded(in.tc.y, in.y, target_lower, {strict, value}, t, {trigger})
                                  : narrow_rounded(in.tc.x, in.x, target_lower, {strict, value}, t, {trigger});
  rounding::nearest();
  return conflict;
}
