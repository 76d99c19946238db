#pragma once

#include "solver/solver.hpp"

// Builds solver states by hand, below the definition interface: plain variables, ranges pushed
// at level 0, and tclause records.
namespace test_solver {

inline u32 add_var(krait_solver& s, bool is_int = false) {
  s.vars.emplace_back();
  s.vars.back().intvar = is_int;
  return static_cast<u32>(++s.num_variables);
}

inline bound lower(u32 v, double value, bool strict = false) { return {v, true, strict, value}; }
inline bound upper(u32 v, double value, bool strict = false) { return {v, false, strict, value}; }

inline origin decision() { return {KRAIT_ORIGIN_DECISION, 0, {}}; }

// Pushes a bound without any of the assignment's tests.
inline u32 push(krait_solver& s, u32 var, bool is_lower, bool strict, double value, origin why = decision()) {
  const u32 id = s.push_bound(var, is_lower, strict, value, why);
  s.current_trail().bounds.push_back({var, id});
  return id;
}

inline u32 add_range(krait_solver& s, double lo, double hi, bool is_int = false) {
  const u32 v = add_var(s, is_int);
  push(s, v, true, false, lo);
  push(s, v, false, false, hi);
  return v;
}

inline u32 add_tclause(krait_solver& s, u32 functor, u32 x, u32 y, u32 z, double c = 0.0) {
  tclause tc;
  tc.functor = functor;
  tc.x = x;
  tc.y = y;
  tc.z = z;
  tc.c = c;
  s.tclauses.push_back(tc);
  return static_cast<u32>(s.tclauses.size() - 1);
}

}  // namespace test_solver
