// The dispatch over functors and the emptiness tests the rules share.
#include "interval/narrowing.hpp"

#include <cmath>

#include "interval/rounding.hpp"
#include "interval/rule.hpp"

namespace {

bool run_rule(rule& r) {
  switch (r.in.functor) {
    case 0: narrow_sum(r); break;
    case 1: narrow_scale(r); break;
    case 2: narrow_product(r); break;
    case 3: narrow_extremum(r, false); break;
    case 4: narrow_extremum(r, true); break;
    case 5: narrow_abs(r); break;
    case 6: narrow_exp(r); break;
    case 7: narrow_cos(r); break;
    case 8: narrow_power(r, true); break;
    case 9: narrow_power(r, false); break;
    default: return false;
  }
  return true;
}

// Whatever an earlier computation raised must not mark the ends the rule derives. Sums,
// scalings and products compute every end upward, so that direction is set at once; the
// others start in the direction in force.
void start_rule(const narrowing_input& in) {
  fpenv::set_rounding_and_flags(in.functor <= 2 ? fpenv::upward : fpenv::last_set, 0);
}

}  // namespace

bool narrow_tclause(const narrowing_input& in, derivation& out) {
  out.count = 0;
  start_rule(in);
  // Reading the flags costs far more than the arithmetic of a rule, and they are nearly always
  // clear: the rule runs once without looking at them, and only if it raised any does it run
  // again from the same start, looking after each end. A rule is a function of its input, so
  // the second run derives the same ends.
  rule r{in, out, false};
  if (!run_rule(r)) return false;
  if (fpenv::raised(fpenv::watched) != 0) {
    out.count = 0;
    start_rule(in);
    rule checked{in, out, true};
    run_rule(checked);
  }
  fpenv::set_rounding_and_flags(fpenv::to_nearest, 0);
  return true;
}

bool ends_conflict(endpoint lower, endpoint upper, bool is_int) {
  if (is_int) {
    const double lower_value = std::ceil(lower.value), upper_value = std::floor(upper.value);
    if (lower_value != lower.value) lower = {false, lower_value};
    if (upper_value != upper.value) upper = {false, upper_value};
    // No integer lies strictly between two consecutive integers.
    if (lower.strict && upper.strict && lower.value == upper.value - 1.0) return true;
  }
  return lower.value > upper.value || (lower.value == upper.value && (lower.strict || upper.strict));
}

bool end_entails(bool lower, endpoint p, endpoint q, bool is_int) {
  // p entails q when p together with the complement of q leaves nothing.
  endpoint complement{!q.strict, q.value};
  round_endpoint_for_int(is_int, !lower, complement.strict, complement.value);
  return lower ? ends_conflict(p, complement, is_int) : ends_conflict(complement, p, is_int);
}
