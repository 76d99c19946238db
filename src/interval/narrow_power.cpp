// x = pow(y, n) and x = nrt(y, n): one rule for the relation power = base^n.
#include <cmath>

#include "interval/rule.hpp"

// nrt(y, n) = x is read as y = x^n: for even n both roots x and -x are admitted (y >= 0 is a
// clause of its own). The base is y for pow and x for nrt.
void narrow_power(rule& r, bool base_is_y) {
  const std::uint8_t base = base_is_y ? 1 : 0, power = base_is_y ? 0 : 1;
  const var_ends& bv = r.in.v[base];
  const var_ends& pv = r.in.v[power];
  const double n = std::nearbyint(r.in.c);
  const bool odd = std::fmod(n, 2.0) != 0.0;
  const bool on_power = r.in.trigger == power;
  const bool lower = r.lower();
  const endpoint a = r.trigger();
  const operand_end trigger = r.trigger_end();

  if (odd) {
    // Increasing on the whole line: each end maps to an end of the same side.
    if (on_power) {
      r.emit(base, lower, {a.strict, krait_nrt(a.value, n, lower)}, {trigger});
    } else {
      r.emit(power, lower, {a.strict, krait_pow(a.value, n, lower)}, {trigger});
    }
    return;
  }

  const operand_end base_lo = end_of(base, true), base_hi = end_of(base, false);
  if (on_power) {
    if (!lower) {
      // power <= b: -r <= base <= r, each only where it tightens an end base already has.
      const double root = krait_nrt(a.value, n, false);
      const endpoint from_below{a.strict, -root}, from_above{a.strict, root};
      if (bv.has_lo && end_entails(true, from_below, bv.lo, bv.is_int)) r.emit(base, true, from_below, {trigger});
      if (bv.has_hi && end_entails(false, from_above, bv.hi, bv.is_int)) r.emit(base, false, from_above, {trigger});
      return;
    }
    // power >= a: base <= -r or base >= r; a side that contradicts base's range leaves the other.
    const double root = krait_nrt(a.value, n, true);
    const endpoint at_least{a.strict, root}, at_most{a.strict, -root};
    if (bv.has_hi && ends_conflict(at_least, bv.hi, bv.is_int)) r.emit(base, false, at_most, {trigger, base_hi});
    if (bv.has_lo && ends_conflict(bv.lo, at_most, bv.is_int)) r.emit(base, true, at_least, {trigger, base_lo});
    return;
  }

  // Trigger on the base, even n: the power falls towards 0 and rises away from it.
  auto power_of = [&](endpoint e, bool to_lower) { return endpoint{e.strict, krait_pow(e.value, n, to_lower)}; };
  if (bv.has_lo && bv.lo.value >= 0.0) {
    r.emit(power, true, power_of(bv.lo, true), {base_lo});
    if (bv.has_hi) r.emit(power, false, power_of(bv.hi, false), {base_lo, base_hi});
    return;
  }
  if (bv.has_hi && bv.hi.value <= 0.0) {
    r.emit(power, true, power_of(bv.hi, true), {base_hi});
    if (bv.has_lo) r.emit(power, false, power_of(bv.lo, false), {base_lo, base_hi});
    return;
  }
  if (bv.has_lo && bv.has_hi) {
    // The base straddles 0: the power lies in [0, max(lo^n, hi^n)].
    r.emit(power, true, {false, 0.0}, {});
    const endpoint from_lo = power_of(bv.lo, false), from_hi = power_of(bv.hi, false);
    r.emit(power, false, end_entails(false, from_lo, from_hi, pv.is_int) ? from_hi : from_lo, {base_lo, base_hi});
  }
}
