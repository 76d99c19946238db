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
  switch (test_bound(var, is_lower, strict, value, static_cast<origin_kind>(why.kind), view)) {
    case bound_effect::conflict:
      conflict_origin = why;
      return true;
    case bound_effect::none:
      return false;
    case bound_effect::news:
      push_tested(var, is_lower, strict, value, why, view);
      return false;
  }
  return false;
}

void krait_solver::push_tested(u32 var, bool is_lower, bool strict, double value, const origin& why,
                               var_view& view) {
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
}

void krait_solver::enqueue_implication(u32 var, bool is_lower) {
  bool& queued = is_lower ? vars[var].queued_lower : vars[var].queued_upper;
  if (queued) return;
  queued = true;
  implication_queue.push_back({var, is_lower});
}
