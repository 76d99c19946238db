// Variables and their bound stacks: the bound value operations, pushing and reading bounds,
// and backtracking.
#include <cmath>

#include "base/error.hpp"
#include "solver/solver.hpp"

krait_solver::krait_solver() : vars(1), tops(1), trail(1), dclause_records(1), dclause_slot(1), hot(1), tclauses(1) {}

bound krait_solver::normalize_bound(bound b) const {
  round_endpoint_for_int(vars[b.var].intvar, b.is_lower, b.strict, b.value);
  return b;
}

bound krait_solver::make_bound(u32 var, u32 relation, double value) {
  if (relation > 3) error("Unexpected case in krait_solver::make_bound.");
  // The variable now occurs in an atom, so it is no longer a mere arithmetic auxiliary.
  vars[var].arith_auxvar = false;
  return {var, relation >= 2, relation == 1 || relation == 3, value};
}

bound krait_solver::negate_bound(bound b) const {
  return normalize_bound({b.var, !b.is_lower, !b.strict, b.value});
}

bool krait_solver::get_lower_bound(u32 var, bool& strict, double& value) const {
  const var_view& t = tops[var];
  strict = t.lower_strict;
  value = t.lower;
  return t.has_lower;
}

bool krait_solver::get_upper_bound(u32 var, bool& strict, double& value) const {
  const var_view& t = tops[var];
  strict = t.upper_strict;
  value = t.upper;
  return t.has_upper;
}

void krait_solver::resize_vars(std::size_t count) {
  vars.resize(count);
  tops.resize(count);
  reason_slots.resize(count);
}

u32 krait_solver::push_bound(u32 var, bool is_lower, bool& strict, double& value, const origin& why) {
  round_endpoint_for_int(vars[var].intvar, is_lower, strict, value);
  bm& stacks = vars[var].bounds;
  const u32 id = is_lower ? stacks.push_lower(value, strict, why) : stacks.push_upper(value, strict, why);
  stacks.dlevel(id) = dlevel;
  var_view& t = tops[var];
  if (is_lower) {
    t.has_lower = true, t.lower_strict = strict, t.lower = value, t.lower_id = id;
  } else {
    t.has_upper = true, t.upper_strict = strict, t.upper = value, t.upper_id = id;
  }
  return id;
}

void krait_solver::pop_bound(u32 var, bool is_lower) {
  bm& stacks = vars[var].bounds;
  stacks.pop(is_lower);
  var_view& t = tops[var];
  if (is_lower) {
    t.has_lower = stacks.get_lower(t.lower, t.lower_strict);
    t.lower_id = stacks.top_lower_id();
  } else {
    t.has_upper = stacks.get_upper(t.upper, t.upper_strict);
    t.upper_id = stacks.top_upper_id();
  }
}

bound_ref krait_solver::find_falsifying_bound(bound b) const {
  return {b.var, vars[b.var].bounds.oldest_where(!b.is_lower, [&](bool strict, double value) {
            return bounds_conflict(b, {b.var, !b.is_lower, strict, value});
          })};
}

void krait_solver::backtrack(u32 level) {
  if (dlevel - level > max_backjump) max_backjump = dlevel - level;
  while (dlevel > level) {
    trail_level& record = trail[dlevel];
    // Newest first: every bound of this level lies above those of lower levels on its stack.
    for (auto r = record.bounds.rbegin(); r != record.bounds.rend(); ++r) {
      pop_bound(r->var, id_is_lower(r->id));
    }
    for (u32 d : record.reason_dclauses) clear_reason(d);
    record.bounds.clear();
    record.reason_dclauses.clear();
    --dlevel;
  }
}

bound krait_solver::bound_of(bound_ref r) const {
  bound b;
  b.var = r.var;
  vars[r.var].bounds.get_bound_info(r.id, b.is_lower, b.strict, b.value);
  return b;
}

void krait_solver::open_decision_level() {
  ++dlevel;
  // Records of abandoned levels are kept empty and reused, so deciding does not allocate.
  if (trail.size() <= dlevel) trail.emplace_back();
  trail[dlevel].birth = ++level_births;
}
