// x = max(y, z), x = min(y, z), x = abs(y): no arithmetic beyond exact negation.
#include "interval/rounding.hpp"
#include "solver/solver.hpp"

namespace {

// Of two ends on the same side, the one that excludes less; on equal values the closed one.
endpoint looser(bool lower, endpoint a, endpoint b) {
  return (lower ? lower_weaker(a, b) : upper_weaker(a, b)) ? a : b;
}

endpoint negated(endpoint e) { return {e.strict, -e.value}; }

}  // namespace

// max and min are mirror images: in the direction `joint` (upper for max, lower for min) x is
// bounded by both operands together, in the other by each operand alone.
static bool deduce_extremum(krait_solver& s, bound_ref trigger, u32 t, bool joint_is_lower) {
  krait_solver::rule_inputs in;
  if (!s.read_rule_inputs(trigger, t, in)) return false;
  const tclause& tc = in.tc;
  const bool joint = in.is_lower == joint_is_lower;
  if (in.on_x()) {
    // max: x <= b gives y <= b and z <= b; x >= a says nothing (min alike).
    if (!joint) return false;
    return s.narrow(tc.y, in.y, in.is_lower, in.value, t, {trigger}) ||
           s.narrow(tc.z, in.z, in.is_lower, in.value, t, {trigger});
  }
  if (!joint) return s.narrow(tc.x, in.x, in.is_lower, in.value, t, {trigger});
  const u32 other = in.on_y() ? tc.z : tc.y;
  const var_view& ov = in.on_y() ? in.z : in.y;
  const bool has = joint_is_lower ? ov.has_lower : ov.has_upper;
  if (!has) return false;
  const endpoint other_end = joint_is_lower ? ov.lo() : ov.hi();
  const u32 other_id = joint_is_lower ? ov.lower_id : ov.upper_id;
  return s.narrow(tc.x, in.x, joint_is_lower, looser(joint_is_lower, in.value, other_end), t,
                  {trigger, {other, other_id}});
}

bool krait_solver::deduce_max(bound_ref trigger, u32 t) { return deduce_extremum(*this, trigger, t, false); }

bool krait_solver::deduce_min(bound_ref trigger, u32 t) { return deduce_extremum(*this, trigger, t, true); }

bool krait_solver::deduce_abs(bound_ref trigger, u32 t) {
  rule_inputs in;
  if (!read_rule_inputs(trigger, t, in)) return false;
  const u32 x = in.tc.x, y = in.tc.y;
  const var_view& yv = in.y;
  const bound_ref y_lo{y, yv.lower_id}, y_hi{y, yv.upper_id};

  if (!in.on_x()) {
    if (yv.has_lower && yv.lower >= 0.0) {
      // y >= 0 throughout: x = y.
      if (narrow(x, in.x, true, yv.lo(), t, {y_lo})) return true;
      return yv.has_upper && narrow(x, in.x, false, yv.hi(), t, {y_lo, y_hi});
    }
    if (yv.has_lower && yv.has_upper && yv.upper > 0.0) {
      // y straddles 0: x in [0, max(-y_lo, y_hi)].
      if (narrow(x, in.x, true, {false, 0.0}, t, {})) return true;
      return narrow(x, in.x, false, looser(false, negated(yv.lo()), yv.hi()), t, {y_lo, y_hi});
    }
    // y <= y_hi: x >= -y_hi holds whatever the sign of y_hi; x <= -y_lo only once y <= 0.
    if (yv.has_upper && narrow(x, in.x, true, negated(yv.hi()), t, {y_hi})) return true;
    return yv.has_lower && yv.has_upper && yv.upper <= 0.0 &&
           narrow(x, in.x, false, negated(yv.lo()), t, {y_lo, y_hi});
  }

  if (!in.is_lower) {
    // x <= b: -b <= y <= b, each only where it tightens a bound y already has.
    const bound from_below{y, true, in.value.strict, -in.value.value};
    const bound from_above{y, false, in.value.strict, in.value.value};
    if (yv.has_lower && entails(from_below, {y, true, yv.lower_strict, yv.lower}) &&
        narrow(y, in.y, true, {from_below.strict, from_below.value}, t, {trigger})) {
      return true;
    }
    return yv.has_upper && entails(from_above, {y, false, yv.upper_strict, yv.upper}) &&
           narrow(y, in.y, false, in.value, t, {trigger});
  }
  // x >= a: y <= -a or y >= a; a side that contradicts y's range leaves the other.
  const bound at_least{y, true, in.value.strict, in.value.value};
  const bound at_most{y, false, in.value.strict, -in.value.value};
  if (yv.has_upper && bounds_conflict(at_least, {y, false, yv.upper_strict, yv.upper}) &&
      narrow(y, in.y, false, {at_most.strict, at_most.value}, t, {trigger, y_hi})) {
    return true;
  }
  return yv.has_lower && bounds_conflict(at_most, {y, true, yv.lower_strict, yv.lower}) &&
         narrow(y, in.y, true, in.value, t, {trigger, y_lo});
}
