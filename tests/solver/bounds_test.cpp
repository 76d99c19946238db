// Bound values, backtracking and the assignment of a new bound.
#include <cfloat>
#include <cmath>

#include "test_solver.hpp"

using namespace test_solver;

TEST(BoundValues, ConflictNormaliseAndNegate) {
  krait_solver s;
  const u32 r = s.define_float_var(-9, 9), i = s.define_int_var(-9, 9);
  // Equal values conflict only with a strict side; no integer lies between consecutive ones.
  const struct { bound a, b; bool conflict; } conflicts[] = {
      {lower(r, 2), upper(r, 2), false},       {upper(r, 2), lower(r, 2, true), true},
      {lower(r, 3), upper(r, 2), true},        {lower(r, 5), lower(r, 1), false},
      {lower(r, 5), upper(i, 1), false},       {lower(i, 3, true), upper(i, 4, true), true},
      {lower(i, 3, true), upper(i, 5, true), false}, {lower(i, 2.2), upper(i, 2.8), true},
      {lower(i, 2.5, true), upper(i, 3.5, true), false}, {lower(i, -0.5, true), upper(i, -0.5), true}};
  for (const auto& [a, b, conflict] : conflicts) EXPECT_EQ(s.bounds_conflict(a, b), conflict) << a.value;
  const struct { bound in, normalised, negated; } forms[] = {
      {upper(i, 4, true), upper(i, 3), lower(i, 4)}, {lower(i, 2.2, true), lower(i, 3), upper(i, 2)},
      {upper(i, -2.5), upper(i, -3), lower(i, -2)},  {lower(r, 3, true), lower(r, 3, true), upper(r, 3)}};
  for (const auto& [in, normalised, negated] : forms) {
    EXPECT_TRUE(bounds_equal(s.normalize_bound(in), normalised) && bounds_equal(s.negate_bound(in), negated));
  }
}

TEST(Backtracking, PopsLevelsRecordsTheJumpAndFindsTheOldestFalsifier) {
  krait_solver s;
  const u32 a = s.define_float_var(0, 10), b = s.define_float_var(0, 10);
  ASSERT_FALSE(s.propagate());
  std::vector<u32> ids;
  for (u32 level = 1; level <= 5; ++level) {
    s.open_decision_level();
    var_view va = s.view_of(a), vb = s.view_of(b);
    s.assign_bound(a, true, false, level, decision(), va);
    s.assign_bound(b, false, false, 10 - level, decision(), vb);
    ids.push_back(vb.upper_id);
  }
  // Against every entry of b's upper stack in turn (its range end 10, then 9 down to 5, then
  // b < 5): the oldest that falsifies the atom (b >= 7.5: b <= 7, not the later b <= 6), or none.
  s.open_decision_level();
  var_view vb = s.view_of(b);
  s.assign_bound(b, false, true, 5, decision(), vb);
  ids.insert(ids.begin(), ids[0] - 2);  // the range end, the entry below the first decision
  ids.push_back(vb.upper_id);
  for (double v = 4; v <= 10.5; v += 0.5) {
    for (const bool strict : {false, true}) {
      u32 oldest = 0;
      for (u32 id : ids) {
        bound u{b, false, s.vars[b].bounds.entry(id).strict, s.vars[b].bounds.entry(id).value};
        if (oldest == 0 && s.bounds_conflict(lower(b, v, strict), u)) oldest = id;
      }
      EXPECT_EQ(s.find_falsifying_bound(lower(b, v, strict)).id, oldest) << v << (strict ? " strict" : "");
    }
  }
  s.backtrack(5);
  s.backtrack(2);
  EXPECT_TRUE(s.dlevel == 2 && s.max_backjump == 3 && current(s, a).lo == 2 && current(s, b).hi == 8);
  s.backtrack(1);
  EXPECT_EQ(s.max_backjump, 3u);  // a shorter jump does not lower the record
}

TEST(Assignment, ConflictDeltaAndStrictnessRules) {
  krait_solver s;
  const u32 x = s.define_float_var(1, 5);
  ASSERT_FALSE(s.propagate());
  const origin tc{KRAIT_ORIGIN_TCLAUSE, 1, {}}, dc{KRAIT_ORIGIN_DCLAUSE, 1, {}};
  var_view v = s.view_of(x);
  // A rule must improve by more than 0.01, a clause at all; a decision always goes in, and so
  // does a bound that only becomes strict.
  const struct { origin why; bool strict; double value; u64 assignments, ineffective; } steps[] = {
      {tc, false, 1.005, 2, 1}, {dc, false, 1.005, 3, 1}, {decision(), false, 1.005, 4, 1},
      {tc, true, 1.005, 5, 1},  {tc, false, 1.02, 6, 1}};
  for (const auto& [why, strict, value, assignments, ineffective] : steps) {
    EXPECT_FALSE(s.assign_bound(x, true, strict, value, why, v));
    EXPECT_TRUE(s.num_assignments == assignments && s.num_ineffective == ineffective) << value;
  }
  EXPECT_TRUE(v.lower == 1.02 && v.lower_id == 11);
  // Against the upper bound 5: equal values conflict only if one side is strict.
  EXPECT_TRUE(s.assign_bound(x, true, true, 5.0, tc, v));
  EXPECT_TRUE(bounds_equal(s.conflict_bound, lower(x, 5, true)) && s.conflict_origin.kind == KRAIT_ORIGIN_TCLAUSE);
  EXPECT_FALSE(s.assign_bound(x, true, false, 5.0, tc, v));
  // Each stack is queued once, however many bounds arrive before it is visited.
  EXPECT_TRUE(s.implication_queue.size() == 1 && s.vars[x].queued_lower && !s.vars[x].queued_upper);
}

TEST(Assignment, FloatingPointTroubleDropsOnlyTheBoundItTainted) {
  krait_solver s;
  const u32 x = s.define_float_var(-1e308, 1e308), y = s.define_float_var(-1, 1);
  volatile double huge = DBL_MAX;
  [[maybe_unused]] volatile double raised = huge * 2.0;  // earlier work's flags say nothing about the ranges
  ASSERT_TRUE(!s.propagate() && current(s, x).lo == -1e308);
  const origin rule{KRAIT_ORIGIN_TCLAUSE, 1, {}};
  var_view vx = s.view_of(x), vy = s.view_of(y);
  fpenv::set_rounding(fpenv::upward);
  EXPECT_FALSE(s.assign_bound(y, false, false, huge * 2.0, rule, vy));  // computed through an overflow
  EXPECT_TRUE(s.num_ineffective == 0 && fpenv::raised(fpenv::overflow) == 0);
  EXPECT_FALSE(s.assign_bound(y, true, false, -0.0, rule, vy));
  EXPECT_TRUE(fpenv::rounding() == fpenv::to_nearest && !std::signbit(current(s, y).lo));  // never -0
  // The improvement test of this one computes 1e308 - (-1e308): the next bound still goes in.
  EXPECT_FALSE(s.assign_bound(x, true, false, 1e308, rule, vx));
  EXPECT_FALSE(s.assign_bound(y, false, false, 0.5, rule, vy));
  EXPECT_EQ(current(s, y).hi, 0.5);
}
