// x = max(y, z), x = min(y, z), x = abs(y): no arithmetic beyond exact negation.
#include "interval/rule.hpp"

namespace {

// Of two ends on the same side, the one that excludes less; on equal values the closed one.
endpoint looser(bool lower, endpoint a, endpoint b) {
  return (lower ? lower_weaker(a, b) : upper_weaker(a, b)) ? a : b;
}

endpoint negated(endpoint e) { return {e.strict, -e.value}; }

}  // namespace

// max and min are mirror images: in the direction `joint` (upper for max, lower for min) x is
// bounded by both operands together, in the other by each operand alone.
void narrow_extremum(rule& r, bool joint_is_lower) {
  const bool lower = r.lower();
  const bool joint = lower == joint_is_lower;
  const endpoint a = r.trigger();
  if (r.on_x()) {
    // max: x <= b gives y <= b and z <= b; x >= a says nothing (min alike).
    if (!joint) return;
    r.emit(1, lower, a, {r.trigger_end()});
    r.emit(2, lower, a, {r.trigger_end()});
    return;
  }
  if (!joint) {
    r.emit(0, lower, a, {r.trigger_end()});
    return;
  }
  const std::uint8_t other = r.on_y() ? 2 : 1;
  const var_ends& o = r.in.v[other];
  if (!(joint_is_lower ? o.has_lo : o.has_hi)) return;
  const endpoint other_end = joint_is_lower ? o.lo : o.hi;
  r.emit(0, joint_is_lower, looser(joint_is_lower, a, other_end), {r.trigger_end(), end_of(other, joint_is_lower)});
}

void narrow_abs(rule& r) {
  const var_ends& y = r.y();

  if (!r.on_x()) {
    if (y.has_lo && y.lo.value >= 0.0) {
      // y >= 0 throughout: x = y.
      r.emit(0, true, y.lo, {Y_LO});
      if (y.has_hi) r.emit(0, false, y.hi, {Y_LO, Y_HI});
      return;
    }
    if (y.has_lo && y.has_hi && y.hi.value > 0.0) {
      // y straddles 0: x in [0, max(-y_lo, y_hi)].
      r.emit(0, true, {false, 0.0}, {});
      r.emit(0, false, looser(false, negated(y.lo), y.hi), {Y_LO, Y_HI});
      return;
    }
    // y <= y_hi: x >= -y_hi holds whatever the sign of y_hi; x <= -y_lo only once y <= 0.
    if (y.has_hi) r.emit(0, true, negated(y.hi), {Y_HI});
    if (y.has_lo && y.has_hi && y.hi.value <= 0.0) r.emit(0, false, negated(y.lo), {Y_LO, Y_HI});
    return;
  }

  const endpoint a = r.trigger();
  if (!r.lower()) {
    // x <= b: -b <= y <= b, each only where it tightens an end y already has.
    const endpoint from_below{a.strict, -a.value};
    if (y.has_lo && end_entails(true, from_below, y.lo, y.is_int)) r.emit(1, true, from_below, {X_HI});
    if (y.has_hi && end_entails(false, a, y.hi, y.is_int)) r.emit(1, false, a, {X_HI});
    return;
  }
  // x >= a: y <= -a or y >= a; a side that contradicts y's range leaves the other.
  const endpoint at_most{a.strict, -a.value};
  if (y.has_hi && ends_conflict(a, y.hi, y.is_int)) r.emit(1, false, at_most, {X_LO, Y_HI});
  if (y.has_lo && ends_conflict(y.lo, at_most, y.is_int)) r.emit(1, true, a, {X_LO, Y_LO});
}
