// The search loop: propagate, learn from conflicts, split, restart on schedule.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iostream>

#include "base/error.hpp"
#include "solver/solver.hpp"

bool krait_solver::solve() {
  timer.start();
  init_var_order();
  conflicts_since_restart = 0;
  restart_limit_a = a_init;
  restart_limit_b = b_init;
  reusable_dclauses.clear();
  split_pos = static_cast<u32>(vars.size()) - 1;
  budget_exhausted = false;
  unsplittable_range = false;

  bool unsatisfiable;
  for (;;) {
    if (step_budget != 0 && num_decisions + num_conflicts >= step_budget) {
      budget_exhausted = true;
      unsatisfiable = false;
      break;
    }
    if (!propagate()) {
      if (decide()) continue;
      unsatisfiable = false;
      break;
    }
    if (!analyze_conflict()) {
      unsatisfiable = true;
      break;
    }
    ++conflicts_since_restart;
    if (restarts && conflicts_since_restart >= restart_limit_a) restart();
  }

  timer.stop(time_solver);
  if (restarts && num_restarts != 0) std::cout << std::endl;
  if (!unsatisfiable && !budget_exhausted && unsplittable_range) {
    warning("The candidate box is wider than min_split_width where a range cannot be split further.");
  }
  fold_statistics();
  return unsatisfiable;
}

namespace {

// floor(limit * factor) in double precision, truncated to 64 bits (saturating beyond them, as
// a huge growth factor can ask), keeping the low 32.
u32 grown(u32 limit, double factor) {
  return static_cast<u32>(truncated_int64(std::floor(static_cast<double>(limit) * factor)));
}

}  // namespace

void krait_solver::restart() {
  std::cout << "    Restarting (number of conflicts: " << num_conflicts << ")" << std::endl;
  ++num_restarts;
  conflicts_since_restart = 0;
  // The conflict limit grows geometrically until it reaches the outer limit, which then grows.
  if (restart_limit_a < restart_limit_b) {
    restart_limit_a = grown(restart_limit_a, f_a);
  } else {
    restart_limit_a = a_init;
    restart_limit_b = grown(restart_limit_b, f_b);
  }
  backtrack(0);
}

void krait_solver::fold_statistics() {
  tot_assignments += num_assignments;
  tot_ineffective += num_ineffective;
  tot_decisions += num_decisions;
  tot_conflicts += num_conflicts;
  tot_restarts += num_restarts;
  tot_max_backjump = std::max(tot_max_backjump, max_backjump);
  tot_max_dlevel = std::max(tot_max_dlevel, max_dlevel);
  tot_max_dlevel_depth = std::max(tot_max_dlevel_depth, max_dlevel_depth);
  tot_time_solver += time_solver;
}
