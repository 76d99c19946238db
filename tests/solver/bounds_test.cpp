#include <gtest/gtest.h>

#include <cfenv>
#include <cfloat>
#include <cmath>

#include "support/capture.hpp"
#include "test_solver.hpp"

using namespace test_solver;

TEST(BoundValues, ConflictsRespectStrictnessAndIntegrality) {
  krait_solver s;
  const u32 r = add_var(s), i = add_var(s, true), other = add_var(s);
  EXPECT_FALSE(s.bounds_conflict(lower(r, 2), upper(r, 2)));
  EXPECT_TRUE(s.bounds_conflict(lower(r, 2, true), upper(r, 2)));
  EXPECT_TRUE(s.bounds_conflict(upper(r, 2), lower(r, 2, true)));  // either order
  EXPECT_TRUE(s.bounds_conflict(lower(r, 2), upper(r, 2, true)));
  EXPECT_TRUE(s.bounds_conflict(lower(r, 3), upper(r, 2)));
  EXPECT_FALSE(s.bounds_conflict(lower(r, 2, true), upper(r, 2.0000001, true)));
  // Same direction or different variables never conflict.
  EXPECT_FALSE(s.bounds_conflict(lower(r, 5), lower(r, 1)));
  EXPECT_FALSE(s.bounds_conflict(lower(r, 5), upper(other, 1)));

  EXPECT_TRUE(s.bounds_conflict(lower(i, 2.5, true), upper(i, 3, true)));
  EXPECT_TRUE(s.bounds_conflict(lower(i, 3, true), upper(i, 4, true)));
  EXPECT_FALSE(s.bounds_conflict(lower(i, 3, true), upper(i, 5, true)));
  EXPECT_TRUE(s.bounds_conflict(lower(i, 2.2), upper(i, 2.8)));   // no integer in between
  EXPECT_FALSE(s.bounds_conflict(lower(i, 2.2), upper(i, 3.1)));
  EXPECT_FALSE(s.bounds_conflict(lower(i, 2.5, true), upper(i, 3.5, true)));  // 3 lies inside
  EXPECT_TRUE(s.bounds_conflict(lower(i, -0.5, true), upper(i, -0.5)));
}

TEST(BoundValues, NormalizeNegateAndOrder) {
  krait_solver s;
  const u32 r = add_var(s), i = add_var(s, true);
  const bound a = s.normalize_bound(upper(i, 4, true));
  EXPECT_TRUE(krait_solver::bounds_equal(a, upper(i, 3)));
  EXPECT_TRUE(krait_solver::bounds_equal(s.normalize_bound(lower(i, 2.2, true)), lower(i, 3)));
  EXPECT_TRUE(krait_solver::bounds_equal(s.normalize_bound(upper(i, -2.5)), upper(i, -3)));
  EXPECT_TRUE(krait_solver::bounds_equal(s.normalize_bound(lower(r, 2.2, true)), lower(r, 2.2, true)));
  EXPECT_TRUE(krait_solver::bounds_equal(s.negate_bound(lower(r, 3)), upper(r, 3, true)));
  EXPECT_TRUE(krait_solver::bounds_equal(s.negate_bound(lower(i, 3)), upper(i, 2)));
  EXPECT_TRUE(krait_solver::bounds_equal(s.negate_bound(upper(i, 2, true)), lower(i, 2)));
  EXPECT_FALSE(krait_solver::bounds_equal(lower(r, 1), lower(r, 1, true)));

  // Variable first, lower before upper, weakest first, non-strict before strict.
  const bound sorted[] = {lower(r, 1), lower(r, 1, true), lower(r, 2), upper(r, 9), upper(r, 5), upper(r, 5, true),
                          lower(i, -7)};
  for (std::size_t k = 0; k + 1 < std::size(sorted); ++k) {
    EXPECT_TRUE(krait_solver::bound_less(sorted[k], sorted[k + 1])) << k;
    EXPECT_FALSE(krait_solver::bound_less(sorted[k + 1], sorted[k])) << k;
  }
  EXPECT_FALSE(krait_solver::bound_less(lower(r, 1), lower(r, 1)));

  const bound made = s.make_bound(r, 1, 4.5);
  EXPECT_TRUE(krait_solver::bounds_equal(made, upper(r, 4.5, true)));
  EXPECT_TRUE(krait_solver::bounds_equal(s.make_bound(r, 0, 1), upper(r, 1)));
  EXPECT_TRUE(krait_solver::bounds_equal(s.make_bound(r, 2, 1), lower(r, 1)));
  EXPECT_TRUE(krait_solver::bounds_equal(s.make_bound(r, 3, 1), lower(r, 1, true)));
  s.vars[i].arith_auxvar = true;
  s.make_bound(i, 2, 0);
  EXPECT_FALSE(s.vars[i].arith_auxvar);
}

TEST(BoundStacks, IdsTopsAndEntries) {
  bm stacks;
  double value;
  bool strict;
  EXPECT_FALSE(stacks.get_lower(value, strict));
  EXPECT_EQ(stacks.top_lower_id(), 0u);
  EXPECT_EQ(stacks.push_lower(1, false, {}), 3u);
  EXPECT_EQ(stacks.push_lower(2, true, {}), 5u);
  EXPECT_EQ(stacks.push_upper(9, false, {}), 2u);
  EXPECT_EQ(stacks.push_lower(3, false, {}), 7u);
  EXPECT_EQ(stacks.push_upper(8, true, {KRAIT_ORIGIN_TCLAUSE, 4, {{1, 3}, {2, 2}}}), 4u);
  EXPECT_EQ(stacks.top_lower_id(), 7u);
  EXPECT_EQ(stacks.top_upper_id(), 4u);
  ASSERT_TRUE(stacks.get_upper(value, strict));
  EXPECT_EQ(value, 8);
  EXPECT_TRUE(strict);
  bool is_lower;
  stacks.get_bound_info(5, is_lower, strict, value);
  EXPECT_TRUE(is_lower);
  EXPECT_TRUE(strict);
  EXPECT_EQ(value, 2);
  const origin o = stacks.get_origin(4);
  EXPECT_EQ(o.kind, KRAIT_ORIGIN_TCLAUSE);
  ASSERT_EQ(o.antecedents.size(), 2u);
  EXPECT_EQ(o.antecedents[1].var, 2u);
  EXPECT_EQ(stacks.mark(4), 0u);
  u32 id;
  ASSERT_TRUE(stacks.lower_at(1, strict, value, id));
  EXPECT_EQ(id, 5u);
  EXPECT_FALSE(stacks.upper_at(2, strict, value, id));
  stacks.pop(true);
  EXPECT_EQ(stacks.top_lower_id(), 5u);

  const captured_run run = run_captured([] {
    bm empty;
    empty.dlevel(0);
  });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "\nError: Unexpected case in bm::get_bound_info.\n");
}

TEST(BoundStacks, PushNormalisesAndFindsTheOldestFalsifier) {
  krait_solver s;
  const u32 i = add_var(s, true);
  bool strict = true;
  double value = 2.2;
  const u32 id = s.push_bound(i, true, strict, value, decision());
  EXPECT_FALSE(strict);  // the caller sees what was stored
  EXPECT_EQ(value, 3.0);
  EXPECT_EQ(s.vars[i].bounds.dlevel(id), 0u);

  const u32 r = add_var(s);
  push(s, r, false, false, 10);
  const u32 second = push(s, r, false, false, 6);
  push(s, r, false, false, 4);
  // x >= 7 is falsified by x <= 6 first (x <= 10 does not falsify it).
  const bound_ref f = s.find_falsifying_bound(lower(r, 7));
  EXPECT_EQ(f.var, r);
  EXPECT_EQ(f.id, second);
}

TEST(Backtracking, PopsLevelsNewestFirstAndRecordsTheJump) {
  krait_solver s;
  const u32 a = add_range(s, 0, 10), b = add_range(s, 0, 10);
  s.add_dclause({lower(a, 0), upper(b, 0)}, false);  // dclause 1, as a reason
  for (u32 level = 1; level <= 5; ++level) {
    s.open_decision_level();
    push(s, a, true, false, level);
    push(s, b, false, false, 10 - level);
  }
  s.dclause_at(1).reason_here = true;
  s.trail[4].reason_dclauses.push_back(1);

  s.backtrack(5);
  EXPECT_EQ(s.dlevel, 5u);
  EXPECT_EQ(s.max_backjump, 0u);
  s.backtrack(2);
  EXPECT_EQ(s.dlevel, 2u);
  EXPECT_EQ(s.max_backjump, 3u);
  EXPECT_FALSE(s.dclause_at(1).reason_here);
  bool strict;
  double value;
  ASSERT_TRUE(s.get_lower_bound(a, strict, value));
  EXPECT_EQ(value, 2);
  ASSERT_TRUE(s.get_upper_bound(b, strict, value));
  EXPECT_EQ(value, 8);
  EXPECT_EQ(s.trail[2].bounds.size(), 2u);
  s.backtrack(1);
  EXPECT_EQ(s.max_backjump, 3u);  // a shorter jump does not lower the record
  // Abandoned levels come back empty.
  s.open_decision_level();
  EXPECT_TRUE(s.current_trail().bounds.empty());
}

TEST(Assignment, ConflictDeltaAndStrictnessRules) {
  krait_solver s;
  const u32 x = add_range(s, 1.0, 5.0);
  const origin tc{KRAIT_ORIGIN_TCLAUSE, 1, {}};
  const origin dc{KRAIT_ORIGIN_DCLAUSE, 1, {}};
  var_view v = s.view_of(x);

  EXPECT_FALSE(s.assign_bound(x, true, false, 1.005, tc, v));  // improves by less than 0.01
  EXPECT_EQ(s.num_ineffective, 1u);
  EXPECT_EQ(s.num_assignments, 0u);
  EXPECT_FALSE(s.assign_bound(x, true, false, 1.005, dc, v));  // clauses need only improve
  EXPECT_EQ(s.num_assignments, 1u);
  EXPECT_EQ(v.lower, 1.005);
  EXPECT_EQ(v.lower_id, 5u);
  EXPECT_FALSE(s.assign_bound(x, true, false, 1.005, decision(), v));  // decisions always go in
  EXPECT_EQ(s.num_assignments, 2u);
  EXPECT_FALSE(s.assign_bound(x, true, true, 1.005, tc, v));  // only tightens strictness
  EXPECT_EQ(s.num_assignments, 3u);
  EXPECT_TRUE(v.lower_strict);
  EXPECT_FALSE(s.assign_bound(x, true, false, 1.02, tc, v));
  EXPECT_EQ(s.num_assignments, 4u);
  EXPECT_EQ(s.trail[0].bounds.size(), 2u + 4u);

  // Against the upper bound 5: equal values conflict only if one side is strict.
  EXPECT_TRUE(s.assign_bound(x, true, true, 5.0, tc, v));
  EXPECT_EQ(s.conflict_bound.var, x);
  EXPECT_TRUE(s.conflict_bound.is_lower);
  EXPECT_TRUE(s.conflict_bound.strict);
  EXPECT_EQ(s.conflict_origin.kind, KRAIT_ORIGIN_TCLAUSE);
  EXPECT_FALSE(s.assign_bound(x, true, false, 5.0, tc, v));
  EXPECT_EQ(v.lower, 5.0);

  // Each stack is queued once, however many bounds arrive before it is visited.
  EXPECT_EQ(s.implication_queue.size(), 1u);
  EXPECT_TRUE(s.vars[x].queued_lower);
  EXPECT_FALSE(s.vars[x].queued_upper);
}

TEST(Assignment, DropsBoundsComputedThroughFloatingPointTrouble) {
  krait_solver s;
  const u32 x = add_range(s, -1.0, 1.0);
  var_view v = s.view_of(x);
  volatile double big = DBL_MAX;
  std::fesetround(FE_UPWARD);
  const double overflowed = big * 2.0;
  EXPECT_FALSE(s.assign_bound(x, false, false, overflowed, {KRAIT_ORIGIN_TCLAUSE, 1, {}}, v));
  EXPECT_EQ(s.num_assignments, 0u);
  EXPECT_EQ(s.num_ineffective, 0u);
  EXPECT_EQ(std::fetestexcept(FE_OVERFLOW), 0);
  // The mode switched by the caller stays as it was: the flag test comes first.
  std::fesetround(FE_TONEAREST);

  // -0.0 is stored as +0.0; the assignment leaves round-to-nearest set.
  std::fesetround(FE_DOWNWARD);
  EXPECT_FALSE(s.assign_bound(x, true, false, -0.0, {KRAIT_ORIGIN_DECISION, 0, {}}, v));
  EXPECT_EQ(std::fegetround(), FE_TONEAREST);
  EXPECT_FALSE(std::signbit(v.lower));
}
