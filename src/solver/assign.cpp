// The single entry point of every new bound.
#include <cmath>

#include "base/numbers.hpp"
#include "solver/solver.hpp"

bool krait_solver::assign_bound(u32 var, bool is_lower, bool strict, double value, const origin& why,
                                var_view& view) {
  // A bound computed through overflow, underflow, a division by zero or an invalid operation
  // is not trustworthy: drop it silently.
  if (fp_exceptions_raised()) return false;
  return check_and_push(var, is_lower, strict, value, why, view);
}

bool krait_solver::check_and_push(u32 var, bool is_lower, bool strict, double value, const origin& why,
                                  var_view& view) {
  if (value == 0.0) value = 0.0;  // never store -0.0
  fpenv::set_rounding(fpenv::to_nearest);

  // The opposite bound: does the new one leave the range empty?
  const bool has_opposite = is_lower ? view.has_upper : view.has_lower;
  const double opposite = is_lower ? view.upper : view.lower;
  const bool opposite_strict = is_lower ? view.upper_strict : view.lower_strict;
  if (has_opposite) {
    const bool crossed = is_lower ? value > opposite : value < opposite;
    if (crossed || (value == opposite && (strict || opposite_strict))) {
      conflict_bound = {var, is_lower, strict, value};
      conflict_origin = why;
      return true;
    }
  }

  // Does it improve the current bound of its side by more than min_bound_delta?
  const bool has_current = is_lower ? view.has_lower : view.has_upper;
  if (has_current && why.kind != KRAIT_ORIGIN_DECISION) {
    const double current = is_lower ? view.lower : view.upper;
    const bool current_strict = is_lower ? view.lower_strict : view.upper_strict;
    const double d = is_lower ? value - current : current - value;
    const bool accepted = why.kind == KRAIT_ORIGIN_DCLAUSE ? d > 0 : d > min_bound_delta;
    const bool only_tightens_strictness = value == current && strict && !current_strict;
    // The distance between two huge bounds may overflow, and infinite ones give no distance:
    // the flags that raises must not drop the next, unrelated bound. A finite distance raised
    // none of them.
    if (!std::isfinite(d)) clear_fp_exceptions();
    if (!accepted && !only_tightens_strictness) {
      ++num_ineffective;
      return false;
    }
  }

  ++num_assignments;
  const u32 id = push_bound(var, is_lower, strict, value, why);
  current_trail().bounds.push_back({var, id});
  enqueue_implication(var, is_lower);

  if (is_lower) {
    view.has_lower = true;
    view.lower_strict = strict;
    view.lower = value;
    view.lower_id = id;
  } else {
    view.has_upper = true;
    view.upper_strict = strict;
    view.upper = value;
    view.upper_id = id;
  }
  return false;
}

void krait_solver::enqueue_implication(u32 var, bool is_lower) {
  bool& queued = is_lower ? vars[var].queued_lower : vars[var].queued_upper;
  if (queued) return;
  queued = true;
  implication_queue.push_back({var, is_lower});
}
