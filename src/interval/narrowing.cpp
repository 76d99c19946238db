// The machinery shared by the deduction rules of the tclause functors.
#include <cfenv>

#include "driver/error.hpp"
#include "solver/solver.hpp"

bool krait_solver::deduce(bound_ref trigger, u32 t) {
  switch (tclauses[t].functor) {
    case KRAIT_SUM: return deduce_sum(trigger, t);
    case KRAIT_SCALE: return deduce_scale(trigger, t);
    case KRAIT_PRODUCT: return deduce_product(trigger, t);
    case KRAIT_MAX: return deduce_max(trigger, t);
    case KRAIT_MIN: return deduce_min(trigger, t);
    case KRAIT_ABS: return deduce_abs(trigger, t);
    case KRAIT_EXP: return deduce_exp(trigger, t);
    case KRAIT_COS: return deduce_cos(trigger, t);
    case KRAIT_POW: return deduce_pow(trigger, t);
    case KRAIT_NRT: return deduce_nrt(trigger, t);
    default: error("No deduction rules for this functor implemented yet.");
  }
}

bool krait_solver::read_rule_inputs(bound_ref trigger, u32 t, rule_inputs& in) const {
  // Whatever an earlier computation raised must not drop the bounds this rule derives.
  clear_fp_exceptions();
  const bound_entry& e = vars[trigger.var].bounds.entry(trigger.id);
  // A real bound this tclause produced itself cannot narrow anything further through it;
  // integer bounds may have been rounded on the way in, so they are looked at again.
  if (e.reason.kind == KRAIT_ORIGIN_TCLAUSE && e.reason.index == t && !vars[trigger.var].intvar) {
    return false;
  }
  in.tc = tclauses[t];
  in.trigger = trigger;
  in.is_lower = id_is_lower(trigger.id);
  in.value = {e.strict, e.value};
  in.x = view_of(in.tc.x);
  in.y = view_of(in.tc.y);
  in.z = view_of(in.tc.z);
  // The trigger is the bound the rule works from, even if a newer one lies above it.
  var_view& own = in.on_x() ? in.x : in.on_y() ? in.y : in.z;
  if (in.is_lower) {
    own.lower_strict = e.strict;
    own.lower = e.value;
    own.lower_id = trigger.id;
  } else {
    own.upper_strict = e.strict;
    own.upper = e.value;
    own.upper_id = trigger.id;
  }
  return true;
}

bool krait_solver::narrow(u32 var, var_view& view, bool is_lower, endpoint e, u32 t, antecedent_list reasons) {
  origin why;
  why.kind = KRAIT_ORIGIN_TCLAUSE;
  why.index = t;
  why.antecedents = reasons;
  return assign_bound(var, is_lower, e.strict, e.value, why, view);
}

bool krait_solver::narrow_rounded(u32 var, var_view& view, bool is_lower, endpoint e, u32 t,
                                  antecedent_list reasons) {
  round_endpoint_for_int(vars[var].intvar, is_lower, e.strict, e.value);
  return narrow(var, view, is_lower, e, t, reasons);
}

bool krait_solver::entails(bound p, bound q) const {
  return bounds_conflict(p, negate_bound(q));
}
