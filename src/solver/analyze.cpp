// Conflict analysis: the first unique implication point of the current level, the learned
// dclause over the collected bounds, and the parts of the formula it depends on.
#include <algorithm>

#include "base/error.hpp"
#include "solver/solver.hpp"

u8 krait_solver::part_mask_of(const origin& why) const {
  switch (why.kind) {
    case KRAIT_ORIGIN_DCLAUSE: return dclause_at(why.index).part_mask;
    case KRAIT_ORIGIN_TCLAUSE: return tclauses[why.index].part_mask;
    case KRAIT_ORIGIN_DECISION: return 0;
    case KRAIT_ORIGIN_NONE: error("Unexpected case in krait_solver::analyze_conflict.");
    case KRAIT_ORIGIN_MULTIPLE: error("Case KRAIT_ORIGIN_MULTIPLE not implemented in krait_solver::analyze_conflict.");
    default: return 0;
  }
}

bool krait_solver::analyze_conflict() {
  ++num_conflicts;
  const u32 depth = static_cast<u32>(current_trail().bounds.size());
  if (depth + 1 > max_dlevel_depth) max_dlevel_depth = depth + 1;
  clear_queues();
  open_count = 0;
  if (++analysis_stamp == 0) {  // the stamps wrapped: none may look current
    for (reason_slot& s : reason_slots) s = reason_slot{};
    analysis_stamp = 1;
  }

  mark_reason(conflict_bound, conflict_origin);
  u8 mask = part_mask_of(conflict_origin);

  // Both contradicting bounds are resolved at once; the opposite one itself is never marked.
  const bm& stacks = vars[conflict_bound.var].bounds;
  const u32 opposite_id = conflict_bound.is_lower ? stacks.top_upper_id() : stacks.top_lower_id();
  const bound opposite = bound_of({conflict_bound.var, opposite_id});
  const bound_entry& opposite_entry = stacks.entry(opposite_id);
  if (opposite_entry.dlevel < dlevel) {
    add_reason_bound(opposite, false);
  } else {
    const origin why = opposite_entry.reason;
    mark_reason(opposite, why);
    mask |= part_mask_of(why);
  }

  // Newest first through the current level until one marked bound is left: the first unique
  // implication point.
  const std::vector<bound_ref>& level = current_trail().bounds;
  for (std::size_t k = level.size(); k-- > 0;) {
    const bound_ref r = level[k];
    bound_entry& e = vars[r.var].bounds.entry(r.id);
    if (e.mark == 0) continue;
    e.mark = 0;
    if (--open_count == 0) {
      add_reason_bound(bound_of(r), false);
      break;
    }
    const origin why = e.reason;
    mark_reason(bound_of(r), why);
    mask |= part_mask_of(why);
  }

  if (dlevel == 0) {
    reason_vars[0].clear();
    reason_vars[1].clear();
    return false;
  }
  // Lower bounds first, each direction by variable.
  learned_atoms.clear();
  for (const int side : {1, 0}) {
    std::vector<u32>& collected = reason_vars[side];
    std::sort(collected.begin(), collected.end());
    for (u32 var : collected) learned_atoms.push_back(negate_bound(reason_slots[var].kept[side]));
    collected.clear();
  }
  learn_dclause(learned_atoms, mask);
  return true;
}

void krait_solver::mark_reason(bound b, const origin& why) {
  switch (why.kind) {
    case KRAIT_ORIGIN_NONE: error("Unexpected case in krait_solver::mark_reason.");
    case KRAIT_ORIGIN_DECISION: add_reason_bound(b, false); break;
    case KRAIT_ORIGIN_DCLAUSE: {
      const std::vector<bound>& atoms = dclause_at(why.index).atoms;
      if (atoms.size() == 1) {
        add_reason_bound(b, false);
        break;
      }
      // The other atoms were false: their oldest falsifying bounds are the reasons. The atom
      // that became true is recognised in integer form too (x > 2.5 is stored as x >= 3).
      const bound implied = normalize_bound(b);
      for (const bound& a : atoms) {
        if (!bounds_equal(normalize_bound(a), implied)) mark_antecedent(find_falsifying_bound(a));
      }
      break;
    }
    case KRAIT_ORIGIN_TCLAUSE:
      for (bound_ref r : why.antecedents) mark_antecedent(r);
      break;
    case KRAIT_ORIGIN_MULTIPLE: error("Case KRAIT_ORIGIN_MULTIPLE not implemented in krait_solver::mark_reason.");
    default: break;
  }
}

void krait_solver::mark_antecedent(bound_ref r) {
  bound_entry& e = vars[r.var].bounds.entry(r.id);
  if (e.dlevel != dlevel) {
    add_reason_bound(bound_of(r), false);
  } else if (e.mark == 0) {
    e.mark = 1;
    ++open_count;
  }
}

bool krait_solver::add_reason_bound(bound b, bool keep_weaker) {
  reason_slot& slot = reason_slots[b.var];
  const int side = b.is_lower ? 1 : 0;
  if (slot.stamp[side] != analysis_stamp) {
    slot.stamp[side] = analysis_stamp;
    slot.kept[side] = b;
    reason_vars[side].push_back(b.var);
    return false;
  }
  // b implies the bound kept so far when it contradicts its negation.
  const bool b_stronger = bounds_conflict(b, negate_bound(slot.kept[side]));
  if (b_stronger != keep_weaker) {
    slot.kept[side] = b;
    return false;
  }
  return true;
}

std::pair<u32, u32> krait_solver::learn_dclause(const std::vector<bound>& atoms, u8 part_mask) {
  const u32 i = add_dclause(atoms, true);
  dclause_at(i).part_mask = part_mask;
  u32 count = 1;
  const bool trans_only = (part_mask & KRAIT_PART_TRANS) && !(part_mask & KRAIT_PART_INIT);
  if (shifting && trans_only && !(part_mask & KRAIT_PART_TARGET)) {
    // It holds at every transition: copy it to all the other steps.
    dclause& c = dclause_at(i);
    c.shift_template = true;
    c.shift_origin = i;
    c.latest_copy = 0;
    const u32 k = shift_backward(i);
    const u32 copies = k + shift_forward(i);
    ++num_templates;
    num_shifted_copies += copies;
    count = copies + 1;
  } else {
    ++num_other_learned;
    // A clause that depends on the target goes with it, so it is not carried further.
    if (part_mask & KRAIT_PART_TARGET) return {i, 1};
  }
  reusable_dclauses.push_back(i);
  return {i, count};
}
