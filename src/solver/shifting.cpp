// Carrying learned clauses across unwinding depths: reuse of clauses independent of the target,
// and copies of transition-only clauses at every other step.
#include <algorithm>

#include "solver/solver.hpp"

namespace {

bool template_mask(u8 mask) {
  return (mask & KRAIT_PART_TRANS) && !(mask & KRAIT_PART_INIT) && !(mask & KRAIT_PART_TARGET);
}

}  // namespace

std::vector<saved_dclause> krait_solver::collect_reusable() const {
  std::vector<saved_dclause> saved;
  std::vector<u32> order = reusable_dclauses;
  std::sort(order.begin(), order.end());
  order.erase(std::unique(order.begin(), order.end()), order.end());
  saved.reserve(order.size());
  for (u32 i : order) saved.push_back({dclause_at(i).atoms, dclause_at(i).part_mask});
  return saved;
}

void krait_solver::reuse_dclauses(const std::vector<saved_dclause>& saved) {
  for (const saved_dclause& c : saved) {
    const auto [i, added] = learn_dclause(c.atoms, c.part_mask);
    num_reused += added;
    if (template_mask(c.part_mask)) pending_templates.push_back(i);
  }
}

// Copies of template t one step later (or earlier) at a time, as long as every variable of the
// last copy has an instance there and the copy differs from the last one.
u32 krait_solver::shift(u32 t, bool forward) {
  std::vector<bound> atoms = forward && dclause_at(t).latest_copy != 0 ? dclause_at(dclause_at(t).latest_copy).atoms
                                                                       : dclause_at(t).atoms;
  u32 copies = 0;
  for (;;) {
    bool moved = false;
    for (bound& a : atoms) {
      const u32 next = forward ? vars[a.var].next_var : vars[a.var].prev_var;
      if (next == 0) return copies;
      moved |= next != a.var;
      a.var = next;
    }
    // Atoms only on variables that are their own instance at every step (constants, terms of
    // static variables) hold at every step already: a copy would be the same clause again.
    if (!moved) return copies;
    const u32 i = add_dclause(atoms, true);
    dclause& copy = dclause_at(i);
    dclause& source = dclause_at(t);
    copy.part_mask = source.part_mask;
    copy.shift_template = false;
    copy.shift_copy = true;
    copy.shift_origin = forward ? t : source.shift_origin;
    source.copies.push_back(i);
    if (forward) source.latest_copy = i;
    ++copies;
  }
}

u32 krait_solver::shift_forward(u32 t) { return shift(t, true); }

u32 krait_solver::shift_backward(u32 t) { return shift(t, false); }

void krait_solver::shift_pending() {
  for (u32 t : pending_templates) {
    const u32 n = shift_forward(t);
    num_reused += n;
    num_shifted_copies += n;
  }
}
