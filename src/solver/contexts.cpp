// Contexts: everything added after a push is removed again by the matching pop.
#include "base/error.hpp"
#include "solver/solver.hpp"

void krait_solver::push_context() {
  if (propagate()) {
    error("Conjunction of INIT and TRANS is unsatisfiable.\n"
          "This is probably due to an error in the encoding of the model.");
  }
  context_frame& f = context_stack.emplace_back();
  f.var_count = num_variables;
  f.tclause_last = tclauses.size() - 1;
  f.learned_L = num_learned;
  f.learned_T = num_templates;
  f.learned_C = num_shifted_copies;
  f.learned_O = num_other_learned;
  f.level0_bounds = static_cast<u32>(trail[0].bounds.size());
  f.level0_reasons = static_cast<u32>(trail[0].reason_dclauses.size());
}

void krait_solver::pop_context() {
  context_frame& f = context_stack.back();
  // The next search's statistics start here, so the jump out of a candidate box counts in them.
  num_assignments = num_ineffective = num_decisions = num_conflicts = 0;
  num_restarts = max_backjump = max_dlevel = max_dlevel_depth = 0;
  time_solver = 0.0;
  backtrack(0);

  // Level-0 bounds and reasons added since the push, newest first.
  trail_level& level0 = trail[0];
  level0.birth = ++level_births;
  while (level0.bounds.size() > f.level0_bounds) {
    const bound_ref r = level0.bounds.back();
    pop_bound(r.var, id_is_lower(r.id));
    level0.bounds.pop_back();
  }
  while (level0.reason_dclauses.size() > f.level0_reasons) {
    clear_reason(level0.reason_dclauses.back());
    level0.reason_dclauses.pop_back();
  }

  for (u64 t = f.tclause_last + 1; t < tclauses.size(); ++t) mark_tclause_deleted(static_cast<u32>(t));
  purge_deleted_tclauses();
  for (u32 d : f.added_dclauses) delete_dclause(d);
  purge_deleted_dclauses();

  for (u64 v = f.var_count + 1; v < vars.size(); ++v) {
    const variable& var = vars[v];
    if (var.constant) {
      --num_constant;
    } else {
      if (var.boolean) --num_boolean;
      if (var.intvar) {
        --num_integer;
      } else {
        --num_real;
      }
    }
    if (var.prev_var != 0) vars[var.prev_var].next_var = 0;
  }
  clear_queues();
  resize_vars(f.var_count + 1);
  num_variables = f.var_count;
  num_learned = f.learned_L;
  num_templates = f.learned_T;
  num_shifted_copies = f.learned_C;
  num_other_learned = f.learned_O;

  for (const auto& [position, polarity] : f.changed_sharables) sharables.at(position).polarity = polarity;
  for (u32 position : f.added_sharables) sharables.erase(position);
  context_stack.pop_back();
}
