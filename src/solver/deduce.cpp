// Deduction through a tclause: the narrowing operator derives ends from the current bounds, and
// each one is asserted with the tclause and the bounds it rests on as its origin.
#include "base/error.hpp"
#include "interval/narrowing.hpp"
#include "solver/solver.hpp"

namespace {

var_ends ends_of(const var_view& v, bool is_int) {
  return {v.has_lower, v.has_upper, v.lo(), v.hi(), is_int};
}

}  // namespace

bool krait_solver::deduce(bound_ref trigger, u32 t) {
  const tclause tc = tclauses[t];
  if (tc.functor > KRAIT_NRT) error("No deduction rules for this functor implemented yet.");
  const bound_entry& e = vars[trigger.var].bounds.entry(trigger.id);
  // A real bound this tclause produced itself cannot narrow anything further through it;
  // integer bounds may have been rounded on the way in, so they are looked at again.
  if (e.reason.kind == KRAIT_ORIGIN_TCLAUSE && e.reason.index == t && !vars[trigger.var].intvar) return false;

  const u32 var_of[3] = {tc.x, tc.y, tc.z};
  var_view views[3] = {view_of(tc.x), view_of(tc.y), view_of(tc.z)};
  const std::uint8_t own = trigger.var == tc.x ? 0 : trigger.var == tc.y ? 1 : 2;
  const bool is_lower = id_is_lower(trigger.id);
  // The trigger is the bound the rule works from, even if a newer one lies above it.
  var_view& trigger_view = views[own];
  if (is_lower) {
    trigger_view.lower_strict = e.strict;
    trigger_view.lower = e.value;
    trigger_view.lower_id = trigger.id;
  } else {
    trigger_view.upper_strict = e.strict;
    trigger_view.upper = e.value;
    trigger_view.upper_id = trigger.id;
  }

  const narrowing_input in{tc.functor, tc.c, own, is_lower,
                           {ends_of(views[0], views[0].intvar), ends_of(views[1], views[1].intvar),
                            ends_of(views[2], views[2].intvar)}};
  // The bounds each end rests on, as they were read: asserting one end does not move them.
  const bound_ref rests_on[6] = {{tc.x, views[0].lower_id}, {tc.x, views[0].upper_id}, {tc.y, views[1].lower_id},
                                 {tc.y, views[1].upper_id}, {tc.z, views[2].lower_id}, {tc.z, views[2].upper_id}};
  derivation out;
  narrow_tclause(in, out);

  // Each end was tested for flags as the rule derived it, and the rule leaves none raised: the
  // ends go in without the assignment's own test.
  for (int i = 0; i < out.count; ++i) {
    const derived_end& d = out.ends[i];
    if (d.untrusted) continue;  // dropped silently, as a bound computed through trouble
    const u32 var = var_of[d.target];
    double value = d.end.value;
    const bound_effect effect = test_bound(var, d.is_lower, d.end.strict, value, KRAIT_ORIGIN_TCLAUSE, views[d.target]);
    if (effect == bound_effect::none) continue;  // most ends: their origin is never built
    origin why;
    why.kind = KRAIT_ORIGIN_TCLAUSE;
    why.index = t;
    for (int k = 0; k < d.reason_count; ++k) why.antecedents.push_back(rests_on[d.reasons[k]]);
    if (effect == bound_effect::conflict) {
      conflict_origin = why;
      return true;
    }
    push_tested(var, d.is_lower, d.end.strict, value, why, views[d.target]);
  }
  return false;
}

bool krait_solver::entails(bound p, bound q) const { return bounds_conflict(p, negate_bound(q)); }
