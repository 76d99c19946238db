// Shared definitions: tclauses, constants and connectives are made once, with the polarities
// their clauses encode.
#include <gtest/gtest.h>

#include <cmath>

#include "support/capture.hpp"
#include "test_solver.hpp"

using namespace test_solver;

TEST(SharedDefinitions, TclausesAreMadeOncePerOperationAndOperands) {
  krait_solver s;
  const u32 x = s.define_float_var(-5, 5), y = s.define_float_var(-5, 5);
  EXPECT_EQ(s.add_tclause(KRAIT_PRODUCT, x, y, 0), s.add_tclause(KRAIT_PRODUCT, y, x, 0));
  EXPECT_EQ(s.add_tclause(KRAIT_SUM, x, y, 0), s.add_tclause(KRAIT_SUM, y, x, 0));
  EXPECT_EQ(s.add_tclause(KRAIT_MAX, x, y, 0), s.add_tclause(KRAIT_MAX, y, x, 0));
  EXPECT_NE(s.add_tclause(KRAIT_MAX, x, y, 0), s.add_tclause(KRAIT_MIN, x, y, 0));
  EXPECT_NE(s.add_tclause(KRAIT_SCALE, y, y, 2), s.add_tclause(KRAIT_SCALE, y, y, 3));
  EXPECT_EQ(s.add_tclause(KRAIT_SUM, y, y, 0), s.add_tclause(KRAIT_SCALE, y, y, 2.0));
  EXPECT_EQ(s.add_tclause(KRAIT_PRODUCT, y, y, 0), s.add_tclause(KRAIT_POW, y, 0, 2.0));
  EXPECT_EQ(s.add_tclause(KRAIT_ABS, y, 0, 0), s.add_tclause(KRAIT_ABS, y, y, 0));
  EXPECT_EQ(s.num_tclauses, 8u);  // x*y, x+y, max, min, 2y, 3y, y^2 and abs
  EXPECT_EQ(s.add_tclause(KRAIT_MAX, y, y, 0), y);
  EXPECT_EQ(s.add_tclause(KRAIT_MIN, x, x, 0), x);
  EXPECT_EQ(s.add_tclause(KRAIT_SCALE, y, y, 1.0), y);
  EXPECT_EQ(s.add_tclause(KRAIT_POW, y, 0, 1.0), y);
  const u32 one = s.add_tclause(KRAIT_POW, y, 0, 0.0);
  EXPECT_EQ(one, s.define_constant_var(1.0));
  EXPECT_TRUE(s.vars[one].constant);

  auto fatal = [](const std::function<void(krait_solver&, u32)>& body, const char* message) {
    const captured_run run = run_captured([&] {
      krait_solver t;
      body(t, t.define_float_var(0, 1));
    });
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, std::string("\nError: ") + message + "\n");
  };
  fatal([](krait_solver& t, u32 v) { t.add_tclause(KRAIT_POW, v, 0, 2.5); }, "Exponent must be integer.");
  fatal([](krait_solver& t, u32 v) { t.add_tclause(KRAIT_NRT, v, 0, 1.0); },
        "Exponent must be an integer greater equal two.");
  fatal([](krait_solver& t, u32 v) { t.add_tclause(KRAIT_NRT, v, 0, 2.5); },
        "Exponent must be an integer greater equal two.");
  fatal([](krait_solver& t, u32 v) { t.add_tclause(10, v, v, 0); }, "Unexpected case in krait_solver::add_tclause.");
}

TEST(SharedDefinitions, ConstantsCollideInTheHashButStayDistinct) {
  krait_solver s;
  const u32 a = s.define_constant_var(1.5);
  EXPECT_EQ(s.define_constant_var(1.5), a);
  const u32 b = s.define_constant_var(1.25);
  EXPECT_NE(a, b);
  EXPECT_EQ(sharable_arithconst(1.5).hash_val(), sharable_arithconst(1.25).hash_val());
  // Beyond 64 bits the key saturates (NaN is 0) instead of converting out of range.
  EXPECT_EQ(sharable_arithconst(1e30).hash_val(), sharable_arithconst(INFINITY).hash_val());
  EXPECT_EQ(sharable_arithconst(1e30).hash_val(), 0xFFFFFFFFu);
  EXPECT_EQ(sharable_arithconst(-1e30).hash_val(), 0u);
  EXPECT_EQ(sharable_arithconst(NAN).hash_val(), 0u);
  EXPECT_EQ(sharable_tclause(KRAIT_SCALE, 3, 0, 1e300).hash_val(), sharable_tclause(KRAIT_SCALE, 3, 0, 1e20).hash_val());
  EXPECT_EQ(s.num_constant, 2u);
  const bound t = s.true_bound();
  EXPECT_TRUE(bounds_equal(t, lower(s.define_constant_var(1.0), 1)));
  EXPECT_EQ(s.sharables.size(), 3u);
}

TEST(SharedDefinitions, KeysHashAndCompareAsTheirOperationsDo) {
  EXPECT_EQ(sharable_tclause(2, 3, 7, 0).hash_val(), 10u);
  EXPECT_EQ(sharable_tclause(1, 3, 0, 2.9).hash_val(), 2u * 1237u + 3u);
  EXPECT_EQ(sharable_tclause(8, 4, 0, -1.0).hash_val(), static_cast<u32>(-1237 + 4));
  EXPECT_EQ(sharable_tclause(6, 5, 0, 0).hash_val(), 5u);
  EXPECT_TRUE(sharable_tclause(2, 3, 7, 0) == sharable_tclause(2, 7, 3, 0));
  EXPECT_FALSE(sharable_tclause(1, 3, 0, 2) == sharable_tclause(1, 3, 0, 3));
  EXPECT_FALSE(static_cast<const sharable_expr&>(sharable_tclause(5, 3, 0, 0)) == sharable_arithconst(3));
  EXPECT_FALSE(sharable_arithconst(NAN) == sharable_arithconst(NAN));
  EXPECT_EQ(sharable_or({lower(2, 1), upper(5, 3)}).hash_val(), 7u);
  EXPECT_EQ(sharable_and({lower(2, 1), upper(5, 3)}).hash_val(), 8u);
  EXPECT_FALSE(sharable_or({lower(2, 1)}) == sharable_and({lower(2, 1)}));
  EXPECT_FALSE(sharable_or({lower(2, 1)}) == sharable_or({lower(2, 1, true)}));
  EXPECT_EQ(toggle_polarity(1), 2u);
  EXPECT_EQ(toggle_polarity(2), 1u);
  EXPECT_EQ(toggle_polarity(3), 3u);
  EXPECT_EQ(toggle_polarity(0), 0u);
  const captured_run run = run_captured([] { toggle_polarity(4); });
  EXPECT_EQ(run.err, "\nError: Passed invalid argument to toggle_polarity.\n");
  const captured_run hash = run_captured([] { sharable_tclause(12, 1, 2, 0).hash_val(); });
  EXPECT_EQ(hash.err, "\nError: Unexpected case in sharable_tclause::hash_val.\n");
  const captured_run eq = run_captured([] { (void)(sharable_tclause(12, 1, 2, 0) == sharable_tclause(12, 1, 2, 0)); });
  EXPECT_EQ(eq.err, "\nError: Unexpected case in sharable_tclause::operator==.\n");
}

TEST(SharedDefinitions, TheTableGrowsAndForgetsErasedEntries) {
  sharable_table table;
  std::vector<u32> positions;
  for (int i = 0; i < 500; ++i) {
    positions.push_back(table.insert(std::make_unique<sharable_arithconst>(i * 0.5), {{1, true, false, 0.0}, 3}));
  }
  EXPECT_EQ(table.size(), 500u);
  EXPECT_GE(table.bucket_count(), 500u);
  for (int i = 0; i < 500; i += 2) table.erase(positions[i]);
  for (int i = 0; i < 500; ++i) {
    const u32 found = table.find(sharable_arithconst(i * 0.5));
    EXPECT_EQ(found == sharable_table::npos, i % 2 == 0) << i;
    if (i % 2 == 1) {
      EXPECT_EQ(found, positions[i]);
    }
  }
}

TEST(Connectives, PolaritiesAreUpgradedAndDualsAnswered) {
  krait_solver s;
  const u32 a = s.define_float_var(0, 10), b = s.define_float_var(0, 10);
  const u32 clauses = static_cast<u32>(s.num_dclauses);
  const bound r = s.define_or({lower(a, 5), upper(b, 2)}, 1);
  EXPECT_EQ(r.var, b + 1);
  EXPECT_TRUE(s.vars[r.var].boolean);
  EXPECT_EQ(s.num_dclauses, clauses + 2u + 1u);  // r's range, then (a >= 5 or b <= 2 or r <= 0)
  EXPECT_EQ(s.dclause_at(clauses + 3).atoms.size(), 3u);
  EXPECT_TRUE(bounds_equal(s.dclause_at(clauses + 3).atoms[2], upper(r.var, 0)));

  // Asked again negatively: the same literal, and the two missing clauses b_i -> r.
  EXPECT_TRUE(bounds_equal(s.define_or({upper(b, 2), lower(a, 5)}, 2), r));
  EXPECT_EQ(s.num_dclauses, clauses + 5u);
  EXPECT_TRUE(bounds_equal(s.dclause_at(clauses + 4).atoms[0], upper(a, 5, true)));
  EXPECT_TRUE(bounds_equal(s.dclause_at(clauses + 4).atoms[1], r));
  s.define_or({lower(a, 5), upper(b, 2)}, 1);
  s.define_or({lower(a, 5), upper(b, 2)}, 2);
  EXPECT_EQ(s.num_dclauses, clauses + 5u);

  // The conjunction of the complements is the complement of r.
  const bound n = s.define_and({upper(a, 5, true), lower(b, 2, true)}, 3);
  EXPECT_TRUE(bounds_equal(n, upper(r.var, 0)));
  EXPECT_EQ(s.num_variables, r.var);
  EXPECT_EQ(s.num_dclauses, clauses + 5u);
}

TEST(Connectives, MergingAbsorptionAndDecidedCases) {
  krait_solver s;
  const u32 a = s.define_float_var(0, 10), i = s.define_int_var(0, 10);
  const u64 vars = s.num_variables;
  // A disjunction keeps the weaker literal per variable and direction.
  EXPECT_TRUE(bounds_equal(s.define_or({lower(a, 5), lower(a, 3)}, 3), lower(a, 3)));
  // A conjunction keeps the stronger; integers are normalised.
  EXPECT_TRUE(bounds_equal(s.define_and({upper(i, 7), upper(i, 4.5, true)}, 3), upper(i, 4)));
  EXPECT_EQ(s.num_variables, vars);
  // a <= 4 or a >= 3 covers everything; a <= 2 and a > 2 is empty.
  const bound t = s.define_or({upper(a, 4), lower(a, 3)}, 3);
  EXPECT_TRUE(bounds_equal(t, s.true_bound()));
  const bound f = s.define_and({upper(a, 2), lower(a, 2, true)}, 3);
  EXPECT_TRUE(bounds_equal(f, s.negate_bound(s.true_bound())));
  // Constant literals drop out of or decide the connective.
  EXPECT_TRUE(bounds_equal(s.define_or({f, lower(a, 3)}, 3), lower(a, 3)));
  EXPECT_TRUE(bounds_equal(s.define_or({t, lower(a, 3)}, 3), t));
  EXPECT_TRUE(bounds_equal(s.define_and({t, lower(a, 3)}, 3), lower(a, 3)));
  EXPECT_TRUE(bounds_equal(s.define_and({f, lower(a, 3)}, 3), f));
  EXPECT_TRUE(bounds_equal(s.define_or({}, 3), f));
  EXPECT_TRUE(bounds_equal(s.define_and({}, 3), t));
  EXPECT_EQ(s.num_variables, vars + 1);  // only the constant 1
}
