// Looking up and recording shared definitions, with the per-context undo logs.
#include "base/error.hpp"
#include "solver/solver.hpp"

bool krait_solver::lookup_sharable_expr(std::unique_ptr<sharable_expr>& key, u32 polarity, sharable_entry& out) {
  u32 position = sharables.find(*key);
  bool dual = false;
  if (position == sharable_table::npos) {
    const unsigned kind = key->get_sharable_kind();
    if (kind != SHARABLE_OR && kind != SHARABLE_AND) return false;
    // De Morgan: a disjunction is the complement of the conjunction of the complements.
    bound_set complements;
    for (const bound& b : static_cast<const sharable_connective&>(*key).bounds) complements.insert(negate_bound(b));
    const sharable_connective dual_key(kind == SHARABLE_OR ? SHARABLE_AND : SHARABLE_OR, std::move(complements));
    position = sharables.find(dual_key);
    if (position == sharable_table::npos) return false;
    dual = true;
    polarity = toggle_polarity(polarity);
  }
  key.reset();

  sharable_entry& entry = sharables.at(position);
  out.rep = entry.rep;
  const u32 stored = entry.polarity;
  if (stored == 0) error("Unexpected case in lookup_sharable_expr.");
  if (stored == 3 || stored == polarity) {
    out.polarity = 0;
  } else {
    // The other direction is still missing; the caller encodes it right away.
    out.polarity = stored == 1 ? 2 : 1;
    entry.polarity = 3;
    if (!context_stack.empty()) context_stack.back().changed_sharables.emplace_back(position, stored);
  }
  if (dual) {
    out.rep = negate_bound(out.rep);
    out.polarity = toggle_polarity(out.polarity);
  }
  return true;
}

void krait_solver::insert_sharable_expr(std::unique_ptr<sharable_expr> key, bound rep, u32 polarity) {
  const u32 position = sharables.insert(std::move(key), {rep, polarity});
  if (!context_stack.empty()) context_stack.back().added_sharables.push_back(position);
}

u32 krait_solver::find_constant_var(double value) const {
  const u32 position = sharables.find(sharable_arithconst(value));
  return position == sharable_table::npos ? 0 : sharables.at(position).rep.var;
}
