// Hand-traced searches: decisions, learning, backjumps, restarts and the statistics they leave.
#include <gtest/gtest.h>

#include <cfenv>
#include <cfloat>
#include <cmath>
#include <iostream>
#include <sstream>

#include "support/capture.hpp"
#include "test_solver.hpp"

using namespace test_solver;

namespace {


struct range {
  bool strict_lo, strict_hi;
  double lo, hi;
};

range current(const krait_solver& s, u32 v) {
  range r{};
  EXPECT_TRUE(s.get_lower_bound(v, r.strict_lo, r.lo));
  EXPECT_TRUE(s.get_upper_bound(v, r.strict_hi, r.hi));
  return r;
}

// Collects what the solver prints while alive.
struct captured_cout {
  std::ostringstream text;
  std::streambuf* saved = std::cout.rdbuf(text.rdbuf());
  ~captured_cout() { std::cout.rdbuf(saved); }
};

}  // namespace

TEST(Decisions, RoundRobinSplitsAtMidpointsWithRandomHalves) {
  random_seed = 13;  // draws 0.2426, 0.6712, 0.1612, 0.7079
  krait_solver s;
  const u32 a = s.define_float_var(0, 10), b = s.define_float_var(0, 10), c = s.define_float_var(0, 10);
  s.init_var_order();
  s.split_pos = 3;
  ASSERT_FALSE(s.propagate());
  for (int k = 0; k < 4; ++k) {
    ASSERT_TRUE(s.decide());
    ASSERT_FALSE(s.propagate());
  }
  EXPECT_EQ(current(s, a).lo, 5.0);  // first draw <= 0.5: the upper half
  EXPECT_EQ(current(s, a).hi, 7.5);  // fourth decision, back on a: its lower half
  EXPECT_EQ(current(s, b).hi, 5.0);
  EXPECT_EQ(current(s, b).lo, 0.0);
  EXPECT_EQ(current(s, c).lo, 5.0);
  EXPECT_EQ(s.split_pos, 1u);
  EXPECT_EQ(s.dlevel, 4u);
  EXPECT_EQ(s.num_decisions, 4u);
  EXPECT_EQ(s.max_dlevel, 4u);
}

TEST(Decisions, NarrowBoxesAreNotSplitAndOrdersSortStably) {
  krait_solver s;
  s.min_split_width = 2.0;
  const u32 a = s.define_float_var(0, 2), b = s.define_int_var(0, 1), c = s.define_float_var(0, 1.5);
  (void)a;
  s.init_var_order();
  s.split_pos = 3;
  ASSERT_FALSE(s.propagate());
  ASSERT_TRUE(s.decide());  // exactly min_split_width wide: still split
  EXPECT_EQ(s.split_pos, 1u);
  ASSERT_FALSE(s.propagate());
  EXPECT_FALSE(s.decide());  // b and c are narrower, a's halves too
  EXPECT_EQ(s.num_decisions, 1u);

  auto order = [&](u32 o) {
    s.var_order = o;
    s.init_var_order();
    std::vector<u32> vars;
    for (std::size_t i = 1; i < s.var_order_list.size(); ++i) vars.push_back(s.var_order_list[i].var);
    return vars;
  };
  EXPECT_EQ(order(0), (std::vector<u32>{1, 2, 3}));
  EXPECT_EQ(order(1), (std::vector<u32>{b, 1, c}));
  EXPECT_EQ(order(2), (std::vector<u32>{1, c, b}));
  EXPECT_EQ(order(4), (std::vector<u32>{1, 2, 3}));  // equal keys keep the natural order
  EXPECT_EQ(order(7), (std::vector<u32>{b, 1, c}));
  // With three variables every shuffle gives 2, 3, 1; with two, the only swap.
  EXPECT_EQ(order(9), (std::vector<u32>{2, 3, 1}));
  krait_solver two;
  two.define_float_var(0, 1);
  two.define_float_var(0, 1);
  two.var_order = 9;
  two.init_var_order();
  EXPECT_EQ(two.var_order_list[1].var, 2u);
  EXPECT_EQ(two.var_order_list[2].var, 1u);

  krait_solver none;
  none.init_var_order();
  EXPECT_FALSE(none.decide());
}

TEST(Learning, FirstUniquePointClauseWatchesAndBackjump) {
  krait_solver s;
  const u32 p = s.define_float_var(0, 10), q = s.define_float_var(0, 10), r = s.define_float_var(0, 10),
            t = s.define_float_var(0, 10);
  const u32 c1 = s.add_dclause({upper(p, 4), lower(q, 6)}, false);
  const u32 c2 = s.add_dclause({upper(p, 4), upper(t, 2), upper(q, 5)}, false);
  ASSERT_FALSE(s.propagate());
  const origin decision{KRAIT_ORIGIN_DECISION, 0, {}};
  auto decide_on = [&](u32 v, double value) {
    s.open_decision_level();
    var_view view = s.view_of(v);
    s.assign_bound(v, true, false, value, decision, view);
    return s.propagate();
  };
  ASSERT_FALSE(decide_on(t, 3));  // level 1: moves c2's watch from t <= 2 to q <= 5
  EXPECT_EQ(s.dclause_at(c2).watch[0], 0u);
  EXPECT_EQ(s.dclause_at(c2).watch[1], 2u);
  ASSERT_FALSE(decide_on(r, 5));  // level 2: unrelated
  ASSERT_TRUE(decide_on(p, 5));   // level 3: c1 gives q >= 6, c2 then wants q <= 5
  EXPECT_TRUE(krait_solver::bounds_equal(s.conflict_bound, upper(q, 5)));
  EXPECT_EQ(s.conflict_origin.index, c2);

  ASSERT_TRUE(s.analyze_conflict());
  const u32 learned = c2 + 1;
  const dclause& l = s.dclause_at(learned);
  ASSERT_EQ(l.atoms.size(), 2u);
  EXPECT_TRUE(krait_solver::bounds_equal(l.atoms[0], upper(p, 5, true)));  // the implication point
  EXPECT_TRUE(krait_solver::bounds_equal(l.atoms[1], upper(t, 3, true)));  // from level 1
  EXPECT_TRUE(l.learned);
  EXPECT_EQ(l.watch[0], 0u);
  EXPECT_EQ(l.watch[1], 1u);
  EXPECT_TRUE(s.backjump_pending);
  EXPECT_EQ(s.backjump_level, 1u);
  EXPECT_EQ(s.num_conflicts, 1u);
  EXPECT_EQ(s.max_dlevel_depth, 3u);  // two bounds on level 3, plus the failed one
  EXPECT_EQ(s.num_learned, 1u);
  EXPECT_EQ(s.num_other_learned, 1u);
  EXPECT_EQ(s.reusable_dclauses.count(learned), 1u);
  EXPECT_TRUE(s.implication_queue.empty());

  ASSERT_FALSE(s.propagate());  // back to level 1, where the clause asserts p < 5
  EXPECT_EQ(s.dlevel, 1u);
  EXPECT_EQ(s.max_backjump, 2u);
  EXPECT_EQ(current(s, p).hi, 5.0);
  EXPECT_TRUE(current(s, p).strict_hi);
  EXPECT_TRUE(s.dclause_at(learned).reason_here);
  EXPECT_FALSE(s.dclause_at(c1).reason_here);
}

TEST(AddingClauses, BackjumpsAndImplicationsUnderAPartialAssignment) {
  krait_solver s;
  const u32 a = s.define_float_var(0, 10), b = s.define_float_var(0, 10), c = s.define_float_var(0, 10);
  ASSERT_FALSE(s.propagate());
  const origin decision{KRAIT_ORIGIN_DECISION, 0, {}};
  for (u32 level = 1; level <= 5; ++level) {
    s.open_decision_level();
    var_view view = s.view_of(a);
    if (level == 3) s.assign_bound(b, true, false, 5, decision, view = s.view_of(b));
    if (level == 5) s.assign_bound(a, true, false, 5, decision, view);
  }
  // All false at levels 5 and 3: back to 3, where the level-5 atom is asserted.
  s.add_dclause({upper(a, 4), upper(b, 4)}, false);
  EXPECT_EQ(s.backjump_level, 3u);
  ASSERT_EQ(s.pending_implications.size(), 1u);
  EXPECT_EQ(s.pending_implications[0].level, 3u);
  EXPECT_TRUE(krait_solver::bounds_equal(s.pending_implications[0].atom, upper(a, 4)));

  // Both at level 5: one level below, where both are open again, and nothing is asserted.
  krait_solver t;
  const u32 x = t.define_float_var(0, 10), y = t.define_float_var(0, 10);
  ASSERT_FALSE(t.propagate());
  for (u32 level = 1; level <= 5; ++level) t.open_decision_level();
  var_view vx = t.view_of(x), vy = t.view_of(y);
  t.assign_bound(x, true, false, 5, decision, vx);
  t.assign_bound(y, true, false, 5, decision, vy);
  t.add_dclause({upper(x, 4), upper(y, 4)}, false);
  EXPECT_EQ(t.backjump_level, 4u);
  EXPECT_TRUE(t.pending_implications.empty());

  // A one-atom clause at level 7 goes back to level 0.
  for (u32 level = 6; level <= 7; ++level) t.open_decision_level();
  t.add_unit_dclause(lower(y, 1));
  EXPECT_EQ(t.backjump_level, 0u);
  (void)c;
}

TEST(Search, HandTracedRunLeavesTheseStatistics) {
  random_seed = 13;
  krait_solver s;
  s.min_split_width = 0.6;
  const u32 b = s.define_int_var(0, 1), x = s.define_float_var(0, 1);
  s.add_dclause({upper(b, 0), lower(x, 0.8)}, false);
  s.add_dclause({upper(b, 0), upper(x, 0.2)}, false);
  // b >= 1 (first draw) forces x >= 0.8 and x <= 0.2: the conflict teaches b <= 0 at level 0;
  // then x <= 0.5 (second draw) and nothing is left to split.
  EXPECT_FALSE(s.solve());
  EXPECT_EQ(current(s, b).lo, 0.0);
  EXPECT_EQ(current(s, b).hi, 0.0);
  EXPECT_EQ(current(s, x).lo, 0.0);
  EXPECT_EQ(current(s, x).hi, 0.5);
  EXPECT_EQ(s.num_assignments, 8u);
  EXPECT_EQ(s.num_ineffective, 1u);  // the learned b <= 0 once more, from the first clause
  EXPECT_EQ(s.num_decisions, 2u);
  EXPECT_EQ(s.num_conflicts, 1u);
  EXPECT_EQ(s.num_restarts, 0u);
  EXPECT_EQ(s.max_backjump, 1u);
  EXPECT_EQ(s.max_dlevel, 1u);
  EXPECT_EQ(s.max_dlevel_depth, 5u);
  EXPECT_EQ(s.tot_assignments, 8u);
  EXPECT_EQ(s.tot_max_dlevel_depth, 5u);
  EXPECT_EQ(s.tot_conflicts, 1u);
}

TEST(Search, UnsatisfiableWithoutDecisions) {
  krait_solver s;
  const u32 y = s.define_float_var(1, 2), z = s.define_float_var(1, 2);
  const u32 x = s.make_tclause(KRAIT_PRODUCT, y, z, 0);
  s.add_unit_dclause(lower(x, 5));
  EXPECT_TRUE(s.solve());
  EXPECT_EQ(s.num_decisions, 0u);
  EXPECT_EQ(s.num_conflicts, 1u);
  EXPECT_EQ(s.dlevel, 0u);
}

TEST(Search, RestartScheduleGrowsInsideAnOuterLimit) {
  krait_solver s;
  s.a_init = 10;
  s.b_init = 10;
  s.f_a = 2;
  s.f_b = 2;
  s.restart_limit_a = 10;
  s.restart_limit_b = 10;
  std::vector<u32> limits{s.restart_limit_a};
  captured_cout out;
  for (int k = 0; k < 9; ++k) {
    s.restart();
    limits.push_back(s.restart_limit_a);
  }
  EXPECT_EQ(limits, (std::vector<u32>{10, 10, 20, 10, 20, 40, 10, 20, 40, 80}));
  EXPECT_EQ(s.num_restarts, 9u);
  EXPECT_EQ(out.text.str().substr(0, 41), "    Restarting (number of conflicts: 0)\n ");
  // A growth beyond 64 bits saturates before the low 32 bits are kept.
  s.f_a = 1e300;
  s.restart_limit_a = 1;
  s.restart();
  EXPECT_EQ(s.restart_limit_a, 0xFFFFFFFFu);
}

TEST(Search, RestartsPrintTheirLinesAndAnEmptyLineAfter) {
  random_seed = 13;
  krait_solver s;
  s.restarts = true;
  s.a_init = s.b_init = 1;
  s.f_a = s.f_b = 2;
  const u32 b = s.define_int_var(0, 1), x = s.define_float_var(0, 1);
  s.add_dclause({upper(b, 0), lower(x, 0.8)}, false);
  s.add_dclause({upper(b, 0), upper(x, 0.2)}, false);
  s.min_split_width = 0.6;
  captured_cout out;
  EXPECT_FALSE(s.solve());
  EXPECT_EQ(out.text.str(), "    Restarting (number of conflicts: 1)\n\n");
  EXPECT_EQ(s.num_restarts, 1u);
}

TEST(Decisions, RangesWithNoCutInsideAreSkippedAndTheBoxSaysSo) {
  random_seed = 13;
  krait_solver s;
  const double a = 1e17, b = std::nextafter(a, 2e17);  // 16 apart, no double between
  s.define_float_var(a, b);
  s.init_var_order();
  s.split_pos = 1;
  ASSERT_FALSE(s.propagate());
  EXPECT_FALSE(s.decide());
  EXPECT_TRUE(s.unsplittable_range);
  EXPECT_EQ(s.num_decisions, 0u);

  // A lone bound so large that 1000 vanishes next to it is cut as far again from 0; where even
  // that overflows there is no cut.
  krait_solver one_sided;
  const u32 far = one_sided.define_var(true, false, true, false, 1e300, false, 0.0);
  one_sided.init_var_order();
  one_sided.split_pos = 1;
  ASSERT_FALSE(one_sided.propagate());
  ASSERT_TRUE(one_sided.decide());
  bool strict;
  double value;
  if (!one_sided.get_upper_bound(far, strict, value)) ASSERT_TRUE(one_sided.get_lower_bound(far, strict, value));
  EXPECT_EQ(value, 2e300);
  krait_solver beyond;
  beyond.define_var(true, false, true, false, 0.75 * DBL_MAX, false, 0.0);
  beyond.init_var_order();
  beyond.split_pos = 1;
  ASSERT_FALSE(beyond.propagate());
  EXPECT_FALSE(beyond.decide());
  EXPECT_TRUE(beyond.unsplittable_range);

  // The search warns once, before it returns the box.
  const captured_run run = run_captured([&] {
    random_seed = 13;
    krait_solver search;
    search.define_float_var(a, b);
    search.define_float_var(0, 1);
    EXPECT_FALSE(search.solve());
  });
  EXPECT_EQ(run.out,
            "\nWarning: The candidate box is wider than min_split_width where a range cannot be split further.\n");
}

TEST(Assignment, AnOverflowInOneAssertionNeverDropsTheNextBound) {
  krait_solver s;
  const u32 x = add_range(s, -1e308, 1e308), y = add_range(s, 0, 1);
  const origin rule{KRAIT_ORIGIN_TCLAUSE, 1, {}};
  var_view vx = s.view_of(x), vy = s.view_of(y);
  // The improvement test of this one computes 1e308 - (-1e308).
  EXPECT_FALSE(s.assign_bound(x, true, false, 1e308, rule, vx));
  EXPECT_FALSE(s.assign_bound(y, true, false, 0.5, rule, vy));
  bool strict;
  double value;
  ASSERT_TRUE(s.get_lower_bound(y, strict, value));
  EXPECT_EQ(value, 0.5);
  // A flag raised by the computation of the bound itself still drops it.
  volatile double huge = DBL_MAX;
  volatile double overflowed = huge * 2.0;
  (void)overflowed;
  EXPECT_FALSE(s.assign_bound(y, false, false, 0.75, rule, vy));
  ASSERT_TRUE(s.get_upper_bound(y, strict, value));
  EXPECT_EQ(value, 1.0);
}

// Every search over extreme magnitudes ends: ranges of one or two doubles, subnormals, ranges
// whose width overflows, under several splitting widths. Sums and products join in only where
// their ranges are computed without overflow or underflow: a bound computed through either is
// dropped, which leaves the result unbounded, and a one-sided range is then walked 1000 at a
// time.
TEST(Termination, SearchesOverExtremeMagnitudesEnd) {
  const double tiny = std::nextafter(0.0, 1.0);
  const std::vector<std::pair<double, double>> ranges = {
      {1e-300, 2e-300},  {tiny, 4 * tiny},      {-DBL_MIN, DBL_MIN},          {-DBL_MAX, DBL_MAX},
      {-1e308, 1e308},   {1e17, 1e17 + 32},     {6e14, 6e14 + 0.125},         {1, std::nextafter(1.0, 2.0)},
      {1e300, 1e301},    {-1e200, -1e199},      {1e15, std::nextafter(std::nextafter(1e15, 2e15), 2e15)}};
  auto clean = [](double lo1, double hi1, double lo2, double hi2) {
    std::feclearexcept(FE_ALL_EXCEPT);
    volatile double corners[] = {lo1 + lo2, hi1 + hi2, lo1 * lo2, lo1 * hi2, hi1 * lo2, hi1 * hi2};
    (void)corners;
    const bool raised = std::fetestexcept(FE_OVERFLOW | FE_UNDERFLOW) != 0;
    std::feclearexcept(FE_ALL_EXCEPT);
    return !raised;
  };
  int searches = 0, with_arithmetic = 0;
  for (double msw : {0.1, 1e-17, 1e-300, 0.0}) {
    for (const auto& [lo1, hi1] : ranges) {
      for (const auto& [lo2, hi2] : ranges) {
        captured_cout quiet;
        random_seed = 13;
        krait_solver s;
        s.set_min_split_width(msw);
        s.step_budget = 20000;
        const u32 x = s.define_float_var(lo1, hi1), y = s.define_float_var(lo2, hi2);
        s.add_dclause({s.make_bound(x, 2, midpoint(lo1, hi1)), s.make_bound(y, 1, midpoint(lo2, hi2))}, false);
        if (clean(lo1, hi1, lo2, hi2)) {
          const u32 sum = s.add_tclause(KRAIT_SUM, x, y, 0.0);
          const u32 product = s.add_tclause(KRAIT_PRODUCT, x, y, 0.0);
          s.add_dclause({s.make_bound(product, 0, lo1 * lo2), s.make_bound(sum, 2, hi1 + lo2)}, false);
          ++with_arithmetic;
        }
        s.solve();
        EXPECT_FALSE(s.budget_exhausted) << "msw " << msw << " x in [" << lo1 << ", " << hi1 << "], y in [" << lo2
                                         << ", " << hi2 << "]";
        ++searches;
      }
    }
  }
  EXPECT_EQ(searches, 4 * 121);
  EXPECT_GT(with_arithmetic, 4 * 40);
}
