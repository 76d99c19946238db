// The deduction rules on small hand-made cases: which bounds each trigger yields, their
// strictness, and the reasons they record for conflict analysis.
#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <vector>

#include "solver/test_solver.hpp"
#include "support/capture.hpp"

using namespace test_solver;

namespace {

struct narrowing : ::testing::Test {
  krait_solver s;

  bound_ref top(u32 v, bool lower) const {
    return {v, lower ? s.vars[v].bounds.top_lower_id() : s.vars[v].bounds.top_upper_id()};
  }
  // Runs tclause t from the current top bound of v.
  bool fire(u32 v, bool lower, u32 t) { return s.deduce(top(v, lower), t); }

  // The current end of v on one side; NaN when v is unbounded there.
  double end(u32 v, bool lower) const {
    bool strict;
    double value;
    const bool has = lower ? s.get_lower_bound(v, strict, value) : s.get_upper_bound(v, strict, value);
    return has ? value : NAN;
  }
  bool end_strict(u32 v, bool lower) const {
    bool strict = false;
    double value;
    lower ? s.get_lower_bound(v, strict, value) : s.get_upper_bound(v, strict, value);
    return strict;
  }
  // The reason of the current end of v: the tclause and the (variable, id) pairs it names.
  std::vector<std::pair<u32, u32>> reasons(u32 v, bool lower, u32 t) const {
    const origin o = s.vars[v].bounds.get_origin(top(v, lower).id);
    EXPECT_EQ(o.kind, KRAIT_ORIGIN_TCLAUSE);
    EXPECT_EQ(o.index, t);
    std::vector<std::pair<u32, u32>> refs;
    for (bound_ref r : o.antecedents) refs.emplace_back(r.var, r.id);
    return refs;
  }
  u32 stack_size(u32 v, bool lower) const {
    return lower ? s.vars[v].bounds.lower_size() : s.vars[v].bounds.upper_size();
  }
};

using refs = std::vector<std::pair<u32, u32>>;

}  // namespace

TEST_F(narrowing, SumProjectsEachTriggerOntoTheOtherTwo) {
  const u32 x = add_range(s, -100, 5), y = add_range(s, 1, 2), z = add_range(s, 3, 4);
  const u32 t = add_tclause(s, KRAIT_SUM, x, y, z);
  EXPECT_FALSE(fire(y, true, t));
  EXPECT_EQ(end(x, true), 4.0);  // y >= 1 and z >= 3
  EXPECT_EQ(reasons(x, true, t), (refs{{y, 3}, {z, 3}}));
  EXPECT_EQ(stack_size(z, false), 1u);  // z <= 5 - 1 is no better than z <= 4

  // x <= 5 and z >= 3.5 give y <= 1.5; strictness follows the bounds used.
  push(s, z, true, true, 3.5);
  EXPECT_FALSE(fire(z, true, t));
  EXPECT_EQ(end(y, false), 1.5);
  EXPECT_TRUE(end_strict(y, false));
  EXPECT_EQ(reasons(y, false, t), (refs{{z, 5}, {x, 2}}));
  EXPECT_EQ(end(x, true), 4.5);
  EXPECT_TRUE(end_strict(x, true));

  // An integer result is rounded inward.
  const u32 i = add_var(s, true), a = add_range(s, 0.5, 1), b = add_range(s, 0.25, 2);
  const u32 t2 = add_tclause(s, KRAIT_SUM, i, a, b);
  EXPECT_FALSE(fire(a, true, t2));
  EXPECT_EQ(end(i, true), 1.0);
  EXPECT_FALSE(end_strict(i, true));
}

TEST_F(narrowing, ScaleDividesAndFlipsForNegativeFactors) {
  const u32 x = add_range(s, -6, 3), y = add_var(s);
  const u32 t = add_tclause(s, KRAIT_SCALE, x, y, y, -3.0);
  EXPECT_FALSE(fire(x, true, t));  // x >= -6: y <= 2
  EXPECT_EQ(end(y, false), 2.0);
  EXPECT_EQ(reasons(y, false, t), (refs{{x, 3}}));
  EXPECT_FALSE(fire(x, false, t));  // x <= 3: y >= -1
  EXPECT_EQ(end(y, true), -1.0);
  push(s, y, true, true, 0.5);
  EXPECT_FALSE(fire(y, true, t));  // y > 0.5: x < -1.5
  EXPECT_EQ(end(x, false), -1.5);
  EXPECT_TRUE(end_strict(x, false));

  // A zero factor cannot be divided by: the bound is dropped, not asserted.
  const u32 p = add_range(s, 1, 2), q = add_range(s, -5, 5);
  const u32 t0 = add_tclause(s, KRAIT_SCALE, p, q, q, 0.0);
  EXPECT_FALSE(fire(p, true, t0));
  EXPECT_EQ(stack_size(q, true), 1u);
  EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT & ~FE_INEXACT), 0);
}

TEST_F(narrowing, ProductUsesCornersAndSkipsDivisorsHoldingZero) {
  const u32 x = add_range(s, -1, 1), y = add_var(s), z = add_range(s, -1, 1);
  const u32 t = add_tclause(s, KRAIT_PRODUCT, x, y, z);
  EXPECT_FALSE(fire(x, true, t));
  EXPECT_EQ(stack_size(y, true), 0u);
  EXPECT_EQ(stack_size(y, false), 0u);

  // z in [0, 2] with a closed 0: still no y; y in [1, 3] gives x in [0, 6] with a closed 0.
  const u32 x2 = add_var(s), y2 = add_range(s, 1, 3), z2 = add_range(s, 0, 2);
  const u32 t2 = add_tclause(s, KRAIT_PRODUCT, x2, y2, z2);
  EXPECT_FALSE(fire(y2, true, t2));
  EXPECT_EQ(end(x2, true), 0.0);
  EXPECT_FALSE(end_strict(x2, true));
  EXPECT_EQ(end(x2, false), 6.0);
  EXPECT_EQ(reasons(x2, false, t2), (refs{{y2, 3}, {y2, 2}, {z2, 3}, {z2, 2}}));

  // Backward: x in [2, 8], z in ]1, 4]: y in ]0.5, 8[ ... limited by the corners.
  const u32 x3 = add_range(s, 2, 8), y3 = add_range(s, -100, 100), z3 = add_var(s);
  push(s, z3, true, true, 1.0);
  push(s, z3, false, false, 4.0);
  const u32 t3 = add_tclause(s, KRAIT_PRODUCT, x3, y3, z3);
  EXPECT_FALSE(fire(z3, false, t3));
  EXPECT_EQ(end(y3, true), 0.5);
  EXPECT_FALSE(end_strict(y3, true));  // 2 / 4, both closed
  EXPECT_EQ(end(y3, false), 8.0);
  EXPECT_TRUE(end_strict(y3, false));  // 8 / 1 with 1 excluded
  EXPECT_EQ(reasons(y3, true, t3), (refs{{x3, 3}, {x3, 2}, {z3, 3}, {z3, 2}}));
  // The forward projection came first, from the bounds read at entry.
  EXPECT_EQ(end(x3, true), 2.0);
}

TEST_F(narrowing, MaxAndMinPassBoundsThroughInOneDirection) {
  const u32 x = add_range(s, -10, 10), y = add_range(s, -20, 20), z = add_range(s, -30, 30);
  const u32 t = add_tclause(s, KRAIT_MAX, x, y, z);
  push(s, x, true, false, 5);
  EXPECT_FALSE(fire(x, true, t));  // x >= 5: nothing
  EXPECT_EQ(stack_size(y, true) + stack_size(z, true), 2u);
  push(s, x, false, true, 5);
  EXPECT_FALSE(fire(x, false, t));  // x < 5: y < 5 and z < 5
  EXPECT_EQ(end(y, false), 5.0);
  EXPECT_TRUE(end_strict(y, false));
  EXPECT_EQ(end(z, false), 5.0);
  EXPECT_EQ(reasons(z, false, t), (refs{{x, 4}}));

  // max(y, z) <= the looser of the two upper ends, the closed one on a tie.
  const u32 a = add_var(s), b = add_var(s), c = add_var(s);
  push(s, b, false, false, 3);
  push(s, c, false, true, 3);
  const u32 tm = add_tclause(s, KRAIT_MAX, a, b, c);
  EXPECT_FALSE(fire(c, false, tm));
  EXPECT_EQ(end(a, false), 3.0);
  EXPECT_FALSE(end_strict(a, false));
  EXPECT_EQ(reasons(a, false, tm), (refs{{c, 2}, {b, 2}}));

  // min mirrors it: x >= a gives both operands >= a; an operand's upper end bounds x.
  const u32 m = add_var(s), p = add_range(s, 0, 9), q = add_range(s, 2, 7);
  const u32 tn = add_tclause(s, KRAIT_MIN, m, p, q);
  EXPECT_FALSE(fire(q, false, tn));
  EXPECT_EQ(end(m, false), 7.0);
  EXPECT_FALSE(fire(q, true, tn));
  EXPECT_EQ(end(m, true), 0.0);  // the smaller lower end
  push(s, m, true, false, 1);
  EXPECT_FALSE(fire(m, true, tn));
  EXPECT_EQ(end(p, true), 1.0);
}

TEST_F(narrowing, AbsCoversBothSignsOfItsArgument) {
  const u32 x = add_var(s), y = add_range(s, -3, 2);
  const u32 t = add_tclause(s, KRAIT_ABS, x, y, y);
  EXPECT_FALSE(fire(y, false, t));
  EXPECT_EQ(end(x, true), 0.0);
  EXPECT_EQ(end(x, false), 3.0);
  EXPECT_EQ(reasons(x, false, t), (refs{{y, 3}, {y, 2}}));

  // x >= 1 and y <= 0.5: the positive side is impossible, so y <= -1.
  push(s, x, true, false, 1);
  push(s, y, false, false, 0.5);
  EXPECT_FALSE(fire(x, true, t));
  EXPECT_EQ(end(y, false), -1.0);
  EXPECT_EQ(reasons(y, false, t), (refs{{x, 5}, {y, 4}}));

  // x <= 2 tightens y >= -3 to y >= -2; y <= 2 is no tighter, so it is not asserted.
  push(s, x, false, false, 2);
  const u32 uppers = stack_size(y, false);
  EXPECT_FALSE(fire(x, false, t));
  EXPECT_EQ(end(y, true), -2.0);
  EXPECT_EQ(stack_size(y, false), uppers);

  // A negative range only bounded below says nothing about how large |y| is.
  const u32 a = add_var(s), b = add_var(s);
  push(s, b, true, false, -4);
  const u32 tb = add_tclause(s, KRAIT_ABS, a, b, b);
  EXPECT_FALSE(fire(b, true, tb));
  EXPECT_EQ(stack_size(a, false), 0u);
  push(s, b, false, false, -1);
  EXPECT_FALSE(fire(b, false, tb));
  EXPECT_EQ(end(a, true), 1.0);
  EXPECT_EQ(end(a, false), 4.0);
}

TEST_F(narrowing, ExpAndLogAreWidened) {
  const u32 x = add_range(s, 0, 1), y = add_var(s);
  const u32 t = add_tclause(s, KRAIT_EXP, x, y, y);
  EXPECT_FALSE(fire(x, false, t));
  EXPECT_EQ(end(y, false), 1e-12);
  EXPECT_FALSE(fire(x, true, t));  // log 0: dropped
  EXPECT_EQ(stack_size(y, true), 0u);
  push(s, y, true, true, 0.0);
  EXPECT_FALSE(fire(y, true, t));
  EXPECT_EQ(end(x, true), 1.0 - 1e-12);
  EXPECT_TRUE(end_strict(x, true));
}

TEST_F(narrowing, CosFollowsTheMonotonePieces) {
  const u32 x = add_range(s, -1, 1), y = add_range(s, 0, 1);
  const u32 t = add_tclause(s, KRAIT_COS, x, y, y);
  EXPECT_FALSE(fire(y, false, t));
  EXPECT_EQ(end(x, true), std::cos(1.0) - 1e-12);
  EXPECT_EQ(stack_size(x, false), 1u);  // 1 + 1e-12 is no better than 1

  const u32 x2 = add_range(s, -1, 1), y2 = add_range(s, 0, 7);
  const u32 t2 = add_tclause(s, KRAIT_COS, x2, y2, y2);
  EXPECT_FALSE(fire(y2, false, t2));
  EXPECT_EQ(stack_size(x2, true) + stack_size(x2, false), 2u);

  // Backward: cos y in [0.5, 0.9] with y in [0.2, 10] leaves y in [acos(0.9), 2*pi + acos(0.5)].
  const u32 x3 = add_range(s, 0.5, 0.9), y3 = add_range(s, 0.2, 10);
  const u32 t3 = add_tclause(s, KRAIT_COS, x3, y3, y3);
  EXPECT_FALSE(fire(x3, true, t3));
  const double p = std::acos(0.9), q = std::acos(0.5);
  EXPECT_LE(end(y3, true), p);
  EXPECT_GT(end(y3, true), p - 1e-9);
  EXPECT_GE(end(y3, false), 2 * M_PI + q);
  EXPECT_LT(end(y3, false), 2 * M_PI + q + 1e-9);
  EXPECT_EQ(reasons(y3, true, t3), (refs{{x3, 3}, {x3, 2}, {y3, 3}}));
}

TEST_F(narrowing, PowersAndRootsNarrowBothWays) {
  const u32 x = add_range(s, 0, 4), y = add_range(s, -10, 10);
  const u32 t = add_tclause(s, KRAIT_POW, x, y, y, 2.0);
  EXPECT_FALSE(fire(x, false, t));
  EXPECT_LE(end(y, true), -2.0);
  EXPECT_GT(end(y, true), -2.0 - 1e-9);
  EXPECT_GE(end(y, false), 2.0);
  EXPECT_LT(end(y, false), 2.0 + 1e-9);

  const u32 c = add_var(s), b = add_range(s, -2, 5);
  const u32 tc = add_tclause(s, KRAIT_POW, c, b, b, 3.0);
  EXPECT_FALSE(fire(b, true, tc));
  EXPECT_LE(end(c, true), -8.0);
  EXPECT_GT(end(c, true), -8.0 - 1e-9);

  // Even power of a range around 0: [0, max(lo^n, hi^n)].
  const u32 e = add_var(s), f = add_range(s, -3, 2);
  const u32 te = add_tclause(s, KRAIT_POW, e, f, f, 4.0);
  EXPECT_FALSE(fire(f, true, te));
  EXPECT_EQ(end(e, true), 0.0);
  EXPECT_GE(end(e, false), 81.0);
  EXPECT_EQ(reasons(e, false, te), (refs{{f, 3}, {f, 2}}));

  // nrt(y, 2) = x reads as y = x^2: y <= 9 gives x in [-3, 3].
  const u32 r = add_range(s, -100, 100), w = add_range(s, 0, 9);
  const u32 tr = add_tclause(s, KRAIT_NRT, r, w, w, 2.0);
  EXPECT_FALSE(fire(w, false, tr));
  EXPECT_LE(end(r, true), -3.0);
  EXPECT_GE(end(r, false), 3.0);
}

TEST_F(narrowing, ConflictsStopTheRuleAndOwnRealBoundsDoNotRetrigger) {
  const u32 x = add_range(s, 10, 20), y = add_range(s, 0, 1), z = add_range(s, 0, 1);
  const u32 t = add_tclause(s, KRAIT_SUM, x, y, z);
  EXPECT_TRUE(fire(y, false, t));  // z >= 10 - 1 contradicts z <= 1
  EXPECT_EQ(s.conflict_bound.var, z);
  EXPECT_EQ(s.conflict_bound.value, 9.0);
  EXPECT_EQ(s.conflict_origin.kind, KRAIT_ORIGIN_TCLAUSE);
  EXPECT_EQ(s.conflict_origin.index, t);

  const u32 a = add_range(s, 0, 10), b = add_range(s, 0, 10), c = add_range(s, 0, 10);
  const u32 ta = add_tclause(s, KRAIT_SUM, a, b, c);
  push(s, b, true, false, 4, {KRAIT_ORIGIN_TCLAUSE, ta, {}});
  EXPECT_FALSE(fire(b, true, ta));
  EXPECT_EQ(stack_size(a, true), 1u);
  // Another tclause's bound does trigger it.
  push(s, b, true, false, 5, {KRAIT_ORIGIN_TCLAUSE, ta + 1, {}});
  EXPECT_FALSE(fire(b, true, ta));
  EXPECT_EQ(end(a, true), 5.0);
  EXPECT_EQ(std::fegetround(), FE_TONEAREST);

  const captured_run run = run_captured([&] {
    const u32 bad = add_tclause(s, 10, a, b, c);
    s.deduce(top(b, true), bad);
  });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "\nError: No deduction rules for this functor implemented yet.\n");
}
