// Propagation to a fixpoint or a conflict: pending implications first, then the watched
// dclauses and the tclauses of every stack that changed, in the order the stacks changed.
#include <cmath>

#include "solver/solver.hpp"

void krait_solver::note_reason(u32 dclause_index) {
  hot[dclause_index].passed_over |= reason_flag;
  current_trail().reason_dclauses.push_back(dclause_index);
}

void krait_solver::clear_reason(u32 dclause_index) {
  dclause_hot& c = hot[dclause_index];
  c.passed_over &= static_cast<u8>(~reason_flag);
  if (c.passed_over != skipped_asleep) return;
  // A walk passed over its watches while it slept: they may have been left out of the summaries
  // of the blocks where that happened.
  c.passed_over = 0;
  for (int k = 0; k < 2; ++k) {
    const bound a = c.atoms[c.watch[k]];
    (a.is_lower ? vars[a.var].dclause_watches_lb : vars[a.var].dclause_watches_ub).wake(c.slept_at[k], a.value);
  }
}

// The contract's single watch visit; `visit_bound` decides the first step from the watch lists
// in bulk and calls `move_watch_or_assert` itself.
bool krait_solver::visit_watch(bound_ref trigger, dclause_watch w, bool& remove) {
  remove = false;
  if (!bounds_conflict(bound_of(trigger), w.atom)) return false;
  return move_watch_or_assert(w, remove);
}

// The watched atom is false: move the watch to an atom that is not, or assert the other one.
bool krait_solver::move_watch_or_assert(dclause_watch w, bool& remove) {
  dclause_hot& c = hot[w.dclause];
  const u32 other = c.watch[0] == w.position ? c.watch[1] : c.watch[0];
  // Bounds only tighten while a level lives: atoms found false before still are.
  const bool prefix_holds = c.false_level <= dlevel && trail[c.false_level].birth == c.false_birth;
  c.false_level = dlevel;
  c.false_birth = trail[dlevel].birth;
  for (u32 q = prefix_holds ? c.false_prefix : 0; q < c.size; ++q) {
    if (q == c.watch[0] || q == c.watch[1]) continue;
    const bound a = c.atoms[q];
    const var_view& now = tops[a.var];
    // Is the atom false under the opposite bound? Integer bounds are stored as integers and
    // never strict: the real test is exact for them. Written without branches: the outcome
    // follows no pattern the processor could learn.
    const bool has = a.is_lower ? now.has_upper : now.has_lower;
    const double opposite = a.is_lower ? now.upper : now.lower;
    const bool opposite_strict = a.is_lower ? now.upper_strict : now.lower_strict;
    const bool beyond = a.is_lower ? a.value > opposite : a.value < opposite;
    if (has & (beyond | ((a.value == opposite) & (a.strict | opposite_strict)))) continue;
    // The watch given up is false too: every unwatched atom before q is.
    (c.watch[0] == w.position ? c.watch[0] : c.watch[1]) = q;
    c.false_prefix = q;
    add_watch(w.dclause, q, a);
    remove = true;
    return false;
  }
  c.false_prefix = c.size;

  // Every other atom is false: the clause asserts its other watched atom.
  const bound o = c.atoms[other];
  var_view view = view_of(o.var);
  const bool conflict = assign_bound(o.var, o.is_lower, o.strict, o.value, {KRAIT_ORIGIN_DCLAUSE, w.dclause, {}}, view);
  note_reason(w.dclause);
  return conflict;
}

bool krait_solver::visit_bound(bound_ref trigger) {
  // A new lower bound can falsify upper atoms, a new upper bound lower atoms.
  const bool is_lower = id_is_lower(trigger.id);
  watch_list& watches = is_lower ? vars[trigger.var].dclause_watches_ub : vars[trigger.var].dclause_watches_lb;
  const bound t = bound_of(trigger);
  // The bounds of an integer variable are stored rounded inward to integers, never strict
  // (`push_bound`): the test of a real variable is then exact for them too, and no atom beyond
  // the trigger's value is falsified.
  const auto falsified = [t](bound a) { return opposite_bounds_conflict(false, t, a); };
  // Passed over (deleted, or a reason on this level): the walk does not stop there.
  const auto asleep = [this](const dclause_watch& w, std::size_t i) {
    dclause_hot& c = hot[w.dclause];
    if ((c.passed_over & (deleted_flag | reason_flag)) == 0) return false;
    c.passed_over |= skipped_asleep;
    c.slept_at[c.watch[0] == w.position ? 0 : 1] = static_cast<u32>(i);
    return true;
  };
  for (std::size_t i = watches.next_candidate(0, t.value, falsified, asleep); i < watches.size();
       i = watches.next_candidate(i, t.value, falsified, asleep)) {
    const dclause_watch w = watches[i];
    bool remove = false;
    if (move_watch_or_assert(w, remove)) return true;
    if (remove) {
      watches.remove_swapping_last(i);
    } else {
      ++i;
    }
  }
  for (u32 t : vars[trigger.var].tclause_watches) {
    if (deduce(trigger, t)) return true;
  }
  return false;
}

bool krait_solver::propagate() {
  // Parsing, preprocessing and translation compute too; what they raised says nothing about
  // the atoms asserted here.
  clear_fp_exceptions();
  if (backjump_pending) {
    backjump_pending = false;
    if (backjump_level < dlevel) backtrack(backjump_level);
  }
  for (;;) {
    if (!pending_implications.empty()) {
      const pending_implication p = pending_implications.front();
      pending_implications.pop_front();
      if (p.level != dlevel) continue;  // meant for a level that is gone
      var_view view = view_of(p.atom.var);
      if (assign_bound(p.atom.var, p.atom.is_lower, p.atom.strict, p.atom.value, p.why, view)) return true;
      note_reason(p.why.index);
      continue;
    }
    if (implication_queue.empty()) return false;
    const queued_stack q = implication_queue.front();
    implication_queue.pop_front();
    variable& v = vars[q.var];
    (q.is_lower ? v.queued_lower : v.queued_upper) = false;
    // The newest bound of the stack stands for every bound pushed since it was queued.
    const u32 id = q.is_lower ? v.bounds.top_lower_id() : v.bounds.top_upper_id();
    if (id != 0 && visit_bound({q.var, id})) return true;
  }
}

void krait_solver::clear_queues() {
  while (!implication_queue.empty()) {
    const queued_stack q = implication_queue.front();
    implication_queue.pop_front();
    (q.is_lower ? vars[q.var].queued_lower : vars[q.var].queued_upper) = false;
  }
  pending_implications.clear();
}
