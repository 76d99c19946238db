#pragma once

#include <cmath>
#include <initializer_list>

#include "base/numbers.hpp"
#include "interval/narrowing.hpp"
#include "interval/rounding.hpp"

// What every rule works with: its input, and the derivation it fills end by end.
struct rule {
  const narrowing_input& in;
  derivation& out;
  // False on a first run, whose caller reads the flags once at its end: its ends are marked
  // trusted, and if any flag was raised the run is repeated with this set.
  bool flags_per_end;

  const var_ends& x() const { return in.v[0]; }
  const var_ends& y() const { return in.v[1]; }
  const var_ends& z() const { return in.v[2]; }
  bool on_x() const { return in.trigger == 0; }
  bool on_y() const { return in.trigger == 1; }
  bool lower() const { return in.trigger_lower; }
  // The end that changed, and its name among the operand ends.
  endpoint trigger() const {
    const var_ends& own = in.v[in.trigger];
    return in.trigger_lower ? own.lo : own.hi;
  }
  operand_end trigger_end() const { return end_of(in.trigger, in.trigger_lower); }

  // Appends one derived end. Whatever the computation since the previous end (or the rule's
  // start) raised marks it untrusted; the flags are cleared for the next one.
  void emit(std::uint8_t target, bool is_lower, endpoint e, std::initializer_list<operand_end> reasons) {
    derived_end& d = out.ends[out.count++];
    d.target = target;
    d.is_lower = is_lower;
    d.end = e;
    d.untrusted = flags_per_end && fp_exceptions_raised();
    d.reason_count = 0;
    for (operand_end r : reasons) d.reasons[d.reason_count++] = r;
  }
  // The same, first rounding the end inward to an integer for an integer target. The step past
  // a strict integral end is exact below 2^53; beyond, it is rounded in the end's direction.
  void emit_rounded(std::uint8_t target, bool is_lower, endpoint e, std::initializer_list<operand_end> reasons) {
    if (in.v[target].is_int && e.strict && !(std::fabs(e.value) < 0x1p53)) rounding::toward(is_lower);
    round_endpoint_for_int(in.v[target].is_int, is_lower, e.strict, e.value);
    emit(target, is_lower, e, reasons);
  }
};

void narrow_sum(rule& r);
void narrow_scale(rule& r);
void narrow_product(rule& r);
void narrow_extremum(rule& r, bool joint_is_lower);
void narrow_abs(rule& r);
void narrow_exp(rule& r);
void narrow_cos(rule& r);
void narrow_power(rule& r, bool base_is_y);
