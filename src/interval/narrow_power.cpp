// x = pow(y, n) and x = nrt(y, n): one rule for the relation power = base^n.
#include <cmath>

#include "interval/rounding.hpp"
#include "solver/solver.hpp"

bool krait_solver::deduce_pow(bound_ref trigger, u32 t) {
  rule_inputs in;
  if (!read_rule_inputs(trigger, t, in)) return false;
  return deduce_power_relation(in, t, true);
}

// nrt(y, n) = x is read as y = x^n: for even n both roots x and -x are admitted (y >= 0 is a
// clause of its own).
bool krait_solver::deduce_nrt(bound_ref trigger, u32 t) {
  rule_inputs in;
  if (!read_rule_inputs(trigger, t, in)) return false;
  return deduce_power_relation(in, t, false);
}

bool krait_solver::deduce_power_relation(rule_inputs& in, u32 t, bool base_is_y) {
  const u32 base = base_is_y ? in.tc.y : in.tc.x;
  const u32 power = base_is_y ? in.tc.x : in.tc.y;
  var_view& bv = base_is_y ? in.y : in.x;
  var_view& pv = base_is_y ? in.x : in.y;
  const double n = std::nearbyint(in.tc.c);
  const bool odd = std::fmod(n, 2.0) != 0.0;
  const bound_ref trigger = in.trigger;
  const bool on_power = trigger.var == power;
  const endpoint a = in.value;

  if (odd) {
    // Increasing on the whole line: each bound maps to a bound of the same side.
    if (on_power) return narrow(base, bv, in.is_lower, {a.strict, krait_nrt(a.value, n, in.is_lower)}, t, {trigger});
    return narrow(power, pv, in.is_lower, {a.strict, krait_pow(a.value, n, in.is_lower)}, t, {trigger});
  }

  if (on_power) {
    if (!in.is_lower) {
      // power <= b: -r <= base <= r, each only where it tightens a bound base already has.
      const double r = krait_nrt(a.value, n, false);
      const bound from_below{base, true, a.strict, -r};
      const bound from_above{base, false, a.strict, r};
      if (bv.has_lower && entails(from_below, {base, true, bv.lower_strict, bv.lower}) &&
          narrow(base, bv, true, {a.strict, -r}, t, {trigger})) {
        return true;
      }
      return bv.has_upper && entails(from_above, {base, false, bv.upper_strict, bv.upper}) &&
             narrow(base, bv, false, {a.strict, r}, t, {trigger});
    }
    // power >= a: base <= -r or base >= r; a side that contradicts base's range leaves the other.
    const double r = krait_nrt(a.value, n, true);
    const bound at_least{base, true, a.strict, r};
    const bound at_most{base, false, a.strict, -r};
    const bound_ref base_lo{base, bv.lower_id}, base_hi{base, bv.upper_id};
    if (bv.has_upper && bounds_conflict(at_least, {base, false, bv.upper_strict, bv.upper}) &&
        narrow(base, bv, false, {a.strict, -r}, t, {trigger, base_hi})) {
      return true;
    }
    return bv.has_lower && bounds_conflict(at_most, {base, true, bv.lower_strict, bv.lower}) &&
           narrow(base, bv, true, {a.strict, r}, t, {trigger, base_lo});
  }

  // Trigger on the base, even n: the power falls towards 0 and rises away from it.
  const bound_ref base_lo{base, bv.lower_id}, base_hi{base, bv.upper_id};
  auto power_of = [&](endpoint e, bool lower) { return endpoint{e.strict, krait_pow(e.value, n, lower)}; };
  if (bv.has_lower && bv.lower >= 0.0) {
    if (narrow(power, pv, true, power_of(bv.lo(), true), t, {base_lo})) return true;
    return bv.has_upper && narrow(power, pv, false, power_of(bv.hi(), false), t, {base_lo, base_hi});
  }
  if (bv.has_upper && bv.upper <= 0.0) {
    if (narrow(power, pv, true, power_of(bv.hi(), true), t, {base_hi})) return true;
    return bv.has_lower && narrow(power, pv, false, power_of(bv.lo(), false), t, {base_lo, base_hi});
  }
  if (bv.has_lower && bv.has_upper) {
    // The base straddles 0: the power lies in [0, max(lo^n, hi^n)].
    if (narrow(power, pv, true, {false, 0.0}, t, {})) return true;
    const endpoint from_lo = power_of(bv.lo(), false), from_hi = power_of(bv.hi(), false);
    const bound c1{power, false, from_lo.strict, from_lo.value}, c2{power, false, from_hi.strict, from_hi.value};
    return narrow(power, pv, false, entails(c1, c2) ? from_hi : from_lo, t, {base_lo, base_hi});
  }
  return false;
}
