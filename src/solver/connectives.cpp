// Literals that stand for disjunctions and conjunctions of bounds, with their defining clauses.
#include <map>

#include "solver/solver.hpp"

bound krait_solver::define_or(const std::vector<bound>& literals, u32 polarity) {
  return define_connective(literals, polarity, true);
}

bound krait_solver::define_and(const std::vector<bound>& literals, u32 polarity) {
  return define_connective(literals, polarity, false);
}

bound krait_solver::define_connective(const std::vector<bound>& literals, u32 polarity, bool is_or) {
  // One literal per variable and direction: a disjunction keeps the weaker, a conjunction the
  // stronger. Two literals on one variable may settle the whole connective.
  std::map<u32, bound> lowers, uppers;
  for (const bound& l : literals) {
    std::map<u32, bound>& same = l.is_lower ? lowers : uppers;
    const auto [it, inserted] = same.try_emplace(l.var, l);
    if (!inserted) {
      const bool absorbed = is_or ? entails(l, it->second) : !entails(l, it->second);
      if (absorbed) continue;
      it->second = l;
    }
    const std::map<u32, bound>& opposite = l.is_lower ? uppers : lowers;
    const auto o = opposite.find(l.var);
    if (o == opposite.end()) continue;
    if (is_or && bounds_conflict(negate_bound(l), negate_bound(o->second))) return true_bound();
    if (!is_or && bounds_conflict(l, o->second)) return negate_bound(true_bound());
  }

  // Literals on the constant 1 are decided: they drop out or decide the connective.
  const u32 one = find_constant_var(1.0);
  std::vector<bound> list;
  for (const std::map<u32, bound>* set : {&lowers, &uppers}) {
    for (const auto& [var, l] : *set) {
      const bound n = normalize_bound(l);
      if (var == one && one != 0) {
        const bool holds = n.is_lower ? (n.strict ? 1.0 > n.value : 1.0 >= n.value)
                                      : (n.strict ? 1.0 < n.value : 1.0 <= n.value);
        if (holds == is_or) return holds ? true_bound() : negate_bound(true_bound());
        continue;
      }
      list.push_back(n);
    }
  }
  if (list.empty()) return is_or ? negate_bound(true_bound()) : true_bound();
  if (list.size() == 1) return list[0];

  bound_set set(list.begin(), list.end());
  std::unique_ptr<sharable_expr> key = is_or ? std::unique_ptr<sharable_expr>(std::make_unique<sharable_or>(set))
                                             : std::make_unique<sharable_and>(set);
  sharable_entry found;
  bound rep;
  u32 to_encode;
  if (lookup_sharable_expr(key, polarity, found)) {
    rep = found.rep;
    to_encode = found.polarity;
  } else {
    const u32 r = define_var(true, true, true, false, 0.0, true, 1.0);
    rep = {r, true, false, 1.0};
    insert_sharable_expr(std::move(key), rep, polarity);
    to_encode = polarity;
  }

  // Positive: rep implies the connective; negative: the connective implies rep.
  const bool positive = to_encode == 1 || to_encode == 3, negative = to_encode == 2 || to_encode == 3;
  const bound not_rep = negate_bound(rep);
  if (is_or) {
    if (positive) {
      std::vector<bound> clause = list;
      clause.push_back(not_rep);
      add_dclause(clause, false);
    }
    if (negative) {
      for (const bound& b : list) add_dclause({negate_bound(b), rep}, false);
    }
  } else {
    if (positive) {
      for (const bound& b : list) add_dclause({not_rep, b}, false);
    }
    if (negative) {
      std::vector<bound> clause;
      for (const bound& b : list) clause.push_back(negate_bound(b));
      clause.push_back(rep);
      add_dclause(clause, false);
    }
  }
  return rep;
}
