// Decisions, a conflict over an integer atom, restarts; searches over extreme magnitudes end.
#include <cfenv>
#include <cfloat>
#include <cmath>

#include "test_solver.hpp"

using namespace test_solver;

TEST(Decisions, CutsStrictlyInsideRangesWideEnough) {
  // Exactly min_split_width (2) wide is still cut; two doubles 16 apart have none between; a
  // lone bound so large that 1000 vanishes next to it is cut as far again from 0, and where
  // even that overflows there is no cut.
  const double inf = INFINITY;
  const struct { double lo, hi; bool cut, unsplittable; double at; } ranges[] = {
      {0, 2, true, false, 1},           {0, 1.5, false, false, 0}, {1e17, std::nextafter(1e17, inf), false, true, 0},
      {1e300, inf, true, false, 2e300}, {0.75 * DBL_MAX, inf, false, true, 0}};
  for (const auto& [lo, hi, cut, unsplittable, at] : ranges) {
    krait_solver s;
    s.min_split_width = 2.0;
    s.define_var(true, false, true, false, lo, hi != inf, hi);
    s.init_var_order();
    s.split_pos = 1;  // the scan starts after the variable split last
    ASSERT_FALSE(s.propagate());
    EXPECT_TRUE(s.decide() == cut && s.unsplittable_range == unsplittable) << lo;
    EXPECT_TRUE(!cut || s.bound_of(s.current_trail().bounds.back()).value == at) << lo;
  }
}

TEST(Decisions, OrdersSortStably) {
  krait_solver s;
  s.define_float_var(0, 2);
  const u32 b = s.define_int_var(0, 1), c = s.define_float_var(0, 1.5);
  // Equal keys keep the natural order; with three variables every shuffle gives 2, 3, 1.
  const std::vector<u32> orders[] = {{1, b, c}, {b, 1, c}, {1, c, b}, {1, b, c}, {1, b, c},
                                     {b, 1, c}, {1, c, b}, {b, 1, c}, {1, c, b}, {b, c, 1}};
  for (u32 o = 0; o < 10; ++o) {
    s.var_order = o;
    s.init_var_order();
    std::vector<u32> vars;
    for (std::size_t i = 1; i < s.var_order_list.size(); ++i) vars.push_back(s.var_order_list[i].var);
    EXPECT_EQ(vars, orders[o]) << "order " << o;
  }
}

TEST(Learning, AnIntegerAtomNotInIntegerFormIsRecognisedAsTheImpliedOne) {
  // y = x^4 <= 81, so the clause asserts y > 82.5, stored as y >= 83, and fails; the analysis
  // must take that bound for the clause's own atom rather than ask for a bound falsifying it.
  const captured_run run = run_captured([] {
    krait_solver s;
    const u32 x = s.define_int_var(-3, 1), y = s.make_tclause(KRAIT_POW, x, 0, 4);
    s.add_dclause({lower(y, 82.5, true), upper(x, -4.5, true)}, false);
    std::cout << s.solve();
  });
  EXPECT_EQ(run.err + run.out, "1");
}

TEST(Search, RestartsPrintTheirLinesAndTheScheduleGrowsInsideAnOuterLimit) {
  // b >= 1 (first draw) forces x >= 0.8 and x <= 0.2: the conflict teaches b <= 0 and the
  // search restarts; then x <= 0.5 (second draw) and nothing is left to split.
  random_seed = 13;
  krait_solver s;
  s.min_split_width = 0.6, s.restarts = true;
  s.a_init = s.b_init = 1, s.f_a = s.f_b = 2;
  const u32 b = s.define_int_var(0, 1), x = s.define_float_var(0, 1);
  s.add_dclause({upper(b, 0), lower(x, 0.8)}, false);
  s.add_dclause({upper(b, 0), upper(x, 0.2)}, false);
  captured_cout out;
  EXPECT_FALSE(s.solve());
  EXPECT_EQ(out.text.str(), "    Restarting (number of conflicts: 1)\n\n");
  EXPECT_TRUE(current(s, b).hi == 0 && current(s, x).hi == 0.5 && s.num_decisions == 2 && s.tot_restarts == 1);

  s.a_init = s.b_init = s.restart_limit_a = s.restart_limit_b = 10;
  std::vector<u32> limits{s.restart_limit_a};
  for (int k = 0; k < 9; ++k) s.restart(), limits.push_back(s.restart_limit_a);
  EXPECT_EQ(limits, (std::vector<u32>{10, 10, 20, 10, 20, 40, 10, 20, 40, 80}));
  s.f_a = 1e300, s.restart_limit_a = 1;  // a growth beyond 64 bits saturates before the low 32 bits are kept
  s.restart();
  EXPECT_EQ(s.restart_limit_a, 0xFFFFFFFFu);
}

// Every search over extreme magnitudes ends: ranges of one or two doubles, subnormals, ranges
// whose width overflows, several splitting widths. Sums and products join in only where their
// ranges are computed without overflow or underflow (else their results are unbounded and are
// walked 1000 at a time); the flags raised by that test are left for the search to ignore.
TEST(Termination, SearchesOverExtremeMagnitudesEnd) {
  const double tiny = std::nextafter(0.0, 1.0);
  const std::pair<double, double> ranges[] = {
      {1e-300, 2e-300}, {tiny, 4 * tiny}, {-DBL_MIN, DBL_MIN}, {-DBL_MAX, DBL_MAX}, {-1e308, 1e308},
      {1e17, 1e17 + 32}, {6e14, 6e14 + 0.125}, {1, std::nextafter(1.0, 2.0)}, {1e300, 1e301}, {-1e200, -1e199},
      {1e15, std::nextafter(std::nextafter(1e15, 2e15), 2e15)}};
  for (double msw : {0.1, 1e-17, 1e-300, 0.0}) {
    for (const auto& [lo1, hi1] : ranges) {
      for (const auto& [lo2, hi2] : ranges) {
        random_seed = 13;
        krait_solver s;
        s.set_min_split_width(msw);
        s.step_budget = 20000;
        const u32 x = s.define_float_var(lo1, hi1), y = s.define_float_var(lo2, hi2);
        s.add_dclause({s.make_bound(x, 2, midpoint(lo1, hi1)), s.make_bound(y, 1, midpoint(lo2, hi2))}, false);
        std::feclearexcept(FE_ALL_EXCEPT);
        [[maybe_unused]] volatile double corners[] = {lo1 + lo2, hi1 + hi2, lo1 * lo2, lo1 * hi2, hi1 * lo2, hi1 * hi2};
        if (!std::fetestexcept(FE_OVERFLOW | FE_UNDERFLOW)) {
          const u32 sum = s.add_tclause(KRAIT_SUM, x, y, 0.0), product = s.add_tclause(KRAIT_PRODUCT, x, y, 0.0);
          s.add_dclause({s.make_bound(product, 0, lo1 * lo2), s.make_bound(sum, 2, hi1 + lo2)}, false);
        }
        s.solve();
        EXPECT_FALSE(s.budget_exhausted) << msw << ": [" << lo1 << ", " << hi1 << "], [" << lo2 << ", " << hi2 << "]";
      }
    }
  }
  krait_solver s;  // the budget itself ends a search that would go on
  s.step_budget = 3;
  s.define_float_var(0, 1e6);
  EXPECT_TRUE(!s.solve() && s.budget_exhausted && s.num_decisions == 3);
}
