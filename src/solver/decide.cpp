// The variable order and the round-robin splitting decisions.
#include <algorithm>
#include <cmath>

#include "base/error.hpp"
#include "solver/solver.hpp"

namespace {

int key(const var_order_entry& e) { return static_cast<int>(e.order_key); }

// Each order as "a before b"; the sorts are stable, so ties keep variable-number order.
bool before(u32 order, const var_order_entry& a, const var_order_entry& b) {
  const bool forward = order == 3 || order == 5 || order == 6;
  const bool keyed = order >= 3;
  if (keyed && key(a) != key(b)) return forward ? key(a) < key(b) : key(a) > key(b);
  const bool booleans_first = order == 1 || order == 5 || order == 7;
  const bool booleans_last = order == 2 || order == 6 || order == 8;
  if (booleans_first) return a.boolean > b.boolean;
  if (booleans_last) return a.boolean < b.boolean;
  return false;
}

}  // namespace

void krait_solver::init_var_order() {
  const std::size_t n = vars.size();
  var_order_list.resize(n);
  for (u32 i = 1; i < n; ++i) var_order_list[i] = {i, vars[i].order_key, vars[i].boolean ? 1u : 0u};
  if (var_order == 0) return;
  if (var_order <= 8) {
    std::stable_sort(var_order_list.begin() + 1, var_order_list.end(),
                     [this](const var_order_entry& a, const var_order_entry& b) { return before(var_order, a, b); });
    return;
  }
  if (var_order != 9) error("Unexpected case in init_var_order.");
  if (n - 1 <= 1) return;
  for (std::size_t i = 1; i <= n - 2; ++i) {
    const double r = ran0();
    const std::size_t t = i + 1 + static_cast<std::size_t>(std::floor(static_cast<double>(n - 2 - i) * r));
    std::swap(var_order_list[i], var_order_list[t]);
  }
}

namespace {

// Where a range is cut: its midpoint, 1000 beyond a lone bound (or as far again as the bound
// lies from 0, where 1000 is absorbed by its magnitude), or 0 for no bound at all.
double split_point(bool has_lo, double lo, bool has_hi, double hi) {
  if (has_lo && has_hi) return midpoint(lo, hi);
  if (has_lo) return lo + 1000.0 == lo ? lo + std::fabs(lo) : lo + 1000.0;
  if (has_hi) return hi - 1000.0 == hi ? hi - std::fabs(hi) : hi - 1000.0;
  return 0.0;
}

// A cut that does not fall strictly inside the range would leave one half equal to the whole
// range, and the search could repeat it without end.
bool strictly_inside(bool has_lo, double lo, bool has_hi, double hi, double s) {
  return std::isfinite(s) && (!has_lo || lo < s) && (!has_hi || s < hi);
}

}  // namespace

bool krait_solver::decide() {
  const u32 depth = static_cast<u32>(current_trail().bounds.size());
  if (depth > max_dlevel_depth) max_dlevel_depth = depth;
  if (var_order_list.size() <= 1) return false;  // no variable at all
  const u32 last = static_cast<u32>(var_order_list.size()) - 1;
  if (split_pos > last) split_pos = last;
  unsplittable_range = false;  // only the scan that ends the search counts

  // Round robin from the position after the variable split last.
  u32 p = split_pos >= last ? 1 : split_pos + 1;
  u32 v;
  double split;
  for (;;) {
    v = var_order_list[p].var;
    bool strict, has_lo, has_hi;
    double lo = 0.0, hi = 0.0;
    has_lo = get_lower_bound(v, strict, lo);
    has_hi = get_upper_bound(v, strict, hi);
    if (!has_lo || !has_hi || !(hi - lo < min_split_width)) {
      // Only the cut itself is computed here; an overflow inside it does not taint the decision.
      clear_fp_exceptions();
      split = split_point(has_lo, lo, has_hi, hi);
      clear_fp_exceptions();
      if (strictly_inside(has_lo, lo, has_hi, hi, split)) break;
      unsplittable_range = true;
    }
    if (p == split_pos) return false;  // every position seen: a candidate box
    p = p == last ? 1 : p + 1;
  }

  ++num_decisions;
  open_decision_level();
  if (dlevel > max_dlevel) max_dlevel = dlevel;
  const bool upper_half = ran0() <= 0.5;  // v >= split; otherwise v <= split
  var_view view = view_of(v);
  // The split point lies strictly inside the range, so the decision cannot conflict.
  assign_bound(v, upper_half, false, split, {KRAIT_ORIGIN_DECISION, 0, {}}, view);
  split_pos = p;
  return true;
}
