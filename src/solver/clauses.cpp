// The dclause and tclause stores: adding a dclause under a partial assignment, atom and clause
// status, watches, deletion and purging.
#include <algorithm>

#include "base/error.hpp"
#include "solver/solver.hpp"

namespace {

constexpr u32 atom_open = 0, atom_true = 1, atom_false = 2;

}  // namespace

bool krait_solver::has_two_operands(u32 functor) {
  return functor == KRAIT_SUM || functor == KRAIT_PRODUCT || functor == KRAIT_MAX || functor == KRAIT_MIN;
}

u32 krait_solver::get_atom_status(bound atom) const {
  bound opposite{atom.var, !atom.is_lower, false, 0.0};
  if ((atom.is_lower ? get_upper_bound(atom.var, opposite.strict, opposite.value)
                     : get_lower_bound(atom.var, opposite.strict, opposite.value)) &&
      bounds_conflict(atom, opposite)) {
    return atom_false;
  }
  bound same{atom.var, atom.is_lower, false, 0.0};
  if (!(atom.is_lower ? get_lower_bound(atom.var, same.strict, same.value)
                      : get_upper_bound(atom.var, same.strict, same.value))) {
    return atom_open;
  }
  // True when the current bound leaves no room for the atom's complement.
  return bounds_conflict(same, negate_bound(atom)) ? atom_true : atom_open;
}

u32 krait_solver::get_dclause_status(u32 index) const {
  u32 count[3] = {0, 0, 0};
  for (const bound& a : dclause_at(index).atoms) {
    const u32 status = get_atom_status(a);
    if (status > atom_false) error("Unexpected case in get_dclause_status.");
    ++count[status];
  }
  const std::size_t n = dclause_at(index).atoms.size();
  if (count[atom_false] == n) return 0;
  if (count[atom_true] > 0) return 1;
  if (count[atom_open] == 1) return 2;
  if (count[atom_open] >= 2) return 3;
  error("Unexpected case in get_dclause_status.");
}

u32 krait_solver::get_dlevel_of_bound(bound atom) const {
  const u32 status = get_atom_status(atom);
  const bm& stacks = vars[atom.var].bounds;
  if (status == atom_true) {
    // The oldest entry of the atom's direction that entails it.
    const u32 id = stacks.oldest_where(atom.is_lower, [&](bool strict, double value) {
      return bounds_conflict({atom.var, atom.is_lower, strict, value}, negate_bound(atom));
    });
    if (id != 0) return stacks.entry(id).dlevel;
  }
  if (status == atom_false) return stacks.entry(find_falsifying_bound(atom).id).dlevel;
  error("Unexpected case in get_dlevel_of_bound.");
}

void krait_solver::add_watch(u32 dclause_index, u32 position, bound atom) {
  (atom.is_lower ? vars[atom.var].dclause_watches_lb : vars[atom.var].dclause_watches_ub)
      .push_back({dclause_index, position, atom});
}

void krait_solver::register_watches(u32 index) {
  const dclause& c = dclause_at(index);
  for (u32 position : hot[index].watch) add_watch(index, position, c.atoms[position]);
}

void krait_solver::request_backjump(u32 level) {
  if (!backjump_pending || level < backjump_level) backjump_level = level;
  backjump_pending = true;
}

void krait_solver::queue_pending(u32 level, bound atom, u32 dclause_index) {
  pending_implications.push_back({level, atom, {KRAIT_ORIGIN_DCLAUSE, dclause_index, {}}});
}

u32 krait_solver::add_dclause(const std::vector<bound>& atoms, bool learned) {
  u32 index;
  if (!free_dclause_indices.empty()) {
    index = free_dclause_indices.front();
    free_dclause_indices.pop_front();
  } else {
    index = static_cast<u32>(dclause_slot.size());
    dclause_slot.push_back(0);
  }
  dclause_slot[index] = static_cast<u32>(dclause_records.size());
  if (hot.size() <= index) hot.resize(index + 1);
  dclause& c = dclause_records.emplace_back();
  c.atoms = atoms;
  c.index = index;
  hot[index] = {c.atoms.data(), static_cast<u32>(atoms.size()), {0, 0}, 0};
  c.learned = learned;
  if (!learned && current_part != 0) c.part_mask |= static_cast<u8>(2u << (current_part - 1));
  ++num_dclauses;
  if (learned) ++num_learned;
  if (!context_stack.empty()) context_stack.back().added_dclauses.push_back(index);

  auto watch = [&](u32 first, u32 second) {
    hot[index].watch[0] = first;
    hot[index].watch[1] = second;
    register_watches(index);
  };
  const u32 n = static_cast<u32>(atoms.size());
  if (n == 1) {
    request_backjump(0);
    queue_pending(0, atoms[0], index);
    return index;
  }
  switch (n == 0 ? 4 : get_dclause_status(index)) {
    case 3: {
      u32 open[2], found = 0;
      for (u32 i = 0; i < n && found < 2; ++i) {
        if (get_atom_status(atoms[i]) == atom_open) open[found++] = i;
      }
      watch(open[0], open[1]);
      break;
    }
    case 2: {
      // Unit: the open atom becomes true at the highest level of the false ones.
      u32 open = 0, latest = 0, latest_level = 0;
      bool any_false = false;
      for (u32 i = 0; i < n; ++i) {
        const u32 status = get_atom_status(atoms[i]);
        if (status == atom_true) error("Unexpected case in add_dclause.");
        if (status == atom_open) {
          open = i;
          continue;
        }
        const u32 level = get_dlevel_of_bound(atoms[i]);
        if (!any_false || level > latest_level) latest = i, latest_level = level;
        any_false = true;
      }
      watch(open, latest);
      request_backjump(latest_level);
      queue_pending(latest_level, atoms[open], index);
      break;
    }
    case 1: {
      std::vector<u32> by_status[3];
      for (u32 i = 0; i < n; ++i) by_status[get_atom_status(atoms[i])].push_back(i);
      const std::vector<u32>& trues = by_status[atom_true];
      if (trues.size() >= 2) {
        watch(trues[0], trues[1]);
      } else if (!by_status[atom_open].empty()) {
        watch(trues[0], by_status[atom_open][0]);
      } else {
        // Satisfied by one atom only: if it became true later than the rest became false,
        // it must be asserted again at the level where they did.
        const u32 t = get_dlevel_of_bound(atoms[trues[0]]);
        u32 latest = by_status[atom_false][0], f = get_dlevel_of_bound(atoms[latest]);
        for (u32 i : by_status[atom_false]) {
          const u32 level = get_dlevel_of_bound(atoms[i]);
          if (level > f) latest = i, f = level;
        }
        watch(trues[0], latest);
        if (f < t) {
          request_backjump(f);
          queue_pending(f, atoms[trues[0]], index);
        }
      }
      break;
    }
    case 0: {
      // All false: the two latest atoms are watched; the clause asserts its latest atom at
      // the second latest level, or becomes open one level below a shared latest level.
      u32 p1 = 0, p2 = 0, m1 = 0, m2 = 0;
      bool have1 = false, have2 = false;
      for (u32 i = 0; i < n; ++i) {
        const u32 level = get_dlevel_of_bound(atoms[i]);
        if (!have1 || level > m1) {
          if (have1) p2 = p1, m2 = m1, have2 = true;
          p1 = i, m1 = level, have1 = true;
        } else if (!have2 || level > m2) {
          p2 = i, m2 = level, have2 = true;
        }
      }
      watch(p1, p2);
      if (m1 == m2) {
        if (m1 > 0) {
          request_backjump(m1 - 1);
        } else {
          request_backjump(0);
          queue_pending(0, atoms[p1], index);
        }
      } else {
        request_backjump(m2);
        queue_pending(m2, atoms[p1], index);
      }
      break;
    }
    default: error("Unexpected case in add_dclause.");
  }
  return index;
}

u32 krait_solver::add_unit_dclause(bound atom) { return add_dclause({atom}, false); }

void krait_solver::mark_tclause_deleted(u32 t) {
  tclause& tc = tclauses[t];
  if (tc.functor > KRAIT_NRT) error("Unexpected case in krait_solver::mark_tclause_deleted.");
  tc.deleted = true;
  vars[tc.x].watches_dirty = true;
  vars[tc.y].watches_dirty = true;
  if (has_two_operands(tc.functor) && tc.z != tc.y) vars[tc.z].watches_dirty = true;
  --num_tclauses;
  if (lowest_deleted_tclause == 0 || t < lowest_deleted_tclause) lowest_deleted_tclause = t;
}

void krait_solver::purge_deleted_tclauses() {
  if (lowest_deleted_tclause == 0) return;
  for (std::size_t v = 1; v < vars.size(); ++v) {
    variable& var = vars[v];
    if (!var.watches_dirty) continue;
    std::erase_if(var.tclause_watches, [&](u32 t) { return tclauses[t].deleted; });
    var.watches_dirty = false;
  }
  tclauses.resize(lowest_deleted_tclause);
  lowest_deleted_tclause = 0;
}

void krait_solver::delete_dclause(u32 index) {
  dclause& c = dclause_at(index);
  c.deleted = true;
  hot[index].passed_over |= deleted_flag;
  const u32 slot = dclause_slot[index];
  if (lowest_deleted_dclause_slot == 0 || slot < lowest_deleted_dclause_slot) lowest_deleted_dclause_slot = slot;
  for (u32 position : hot[index].watch) {
    const bound& a = c.atoms[position];
    (a.is_lower ? vars[a.var].lb_watches_dirty : vars[a.var].ub_watches_dirty) = true;
  }
  --num_dclauses;
  if (c.learned) {
    --num_learned;
    if (c.shift_template) {
      --num_templates;
    } else if (c.shift_copy) {
      --num_shifted_copies;
    } else {
      --num_other_learned;
    }
  }
}

void krait_solver::purge_deleted_dclauses() {
  if (lowest_deleted_dclause_slot == 0) return;
  auto deleted = [&](const dclause_watch& w) { return dclause_at(w.dclause).deleted; };
  for (std::size_t v = 1; v < vars.size(); ++v) {
    variable& var = vars[v];
    if (var.lb_watches_dirty) var.dclause_watches_lb.erase_if(deleted);
    if (var.ub_watches_dirty) var.dclause_watches_ub.erase_if(deleted);
    var.lb_watches_dirty = var.ub_watches_dirty = false;
  }
  u32 kept = lowest_deleted_dclause_slot;
  for (u32 slot = lowest_deleted_dclause_slot; slot < dclause_records.size(); ++slot) {
    dclause& c = dclause_records[slot];
    if (c.deleted) {
      dclause_slot[c.index] = 0;
      free_dclause_indices.push_back(c.index);
      continue;
    }
    if (kept != slot) dclause_records[kept] = std::move(c);
    dclause_slot[dclause_records[kept].index] = kept;
    ++kept;
  }
  dclause_records.resize(kept);
  lowest_deleted_dclause_slot = 0;
}
