// Definitions, atom and clause status, deletion and purging of both kinds of clause.
#include <gtest/gtest.h>

#include "support/capture.hpp"
#include "test_solver.hpp"

using namespace test_solver;

namespace {


void expect_fatal(const std::function<void()>& body, const std::string& message) {
  const captured_run run = run_captured(body);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "\nError: " + message + "\n");
}

}  // namespace

TEST(Definitions, ClassesRangesAndTheirChecks) {
  krait_solver s;
  const u32 b = s.define_int_var(0, 1), c = s.define_float_var(2, 2), i = s.define_int_var(-3, 7);
  s.define_float_var(-1, 1);
  EXPECT_TRUE(s.vars[b].boolean);
  EXPECT_TRUE(s.vars[c].constant);
  EXPECT_FALSE(s.vars[i].boolean);
  EXPECT_EQ(s.num_boolean, 1u);
  EXPECT_EQ(s.num_integer, 2u);
  EXPECT_EQ(s.num_real, 1u);
  EXPECT_EQ(s.num_constant, 1u);
  EXPECT_EQ(s.num_variables, 4u);
  EXPECT_EQ(s.num_dclauses, 8u);  // every range end is a unit clause, asserted by propagation
  EXPECT_EQ(s.vars[b].bounds.top_lower_id(), 0u);
  ASSERT_FALSE(s.propagate());
  bool strict;
  double value;
  ASSERT_TRUE(s.get_upper_bound(i, strict, value));
  EXPECT_EQ(value, 7.0);

  expect_fatal([] { krait_solver t; t.define_float_var(3, 2); }, "Attempt to define variable with empty range.");
  expect_fatal([] { krait_solver t; t.define_var(false, true, true, true, 2, true, 2.5); },
               "Attempt to define variable with empty range.");
  expect_fatal([] { krait_solver t; t.define_var(false, false, true, false, 0, false, 0); },
               "Attempt to define unbounded non-arithmetical auxvar.");
  // An auxiliary may be unbounded.
  const u32 aux = s.define_var(true, false, false, false, 0, false, 0);
  EXPECT_TRUE(s.vars[aux].arith_auxvar);
  EXPECT_EQ(s.num_real, 2u);
}

TEST(Definitions, TclauseResultsGetTheirTypeRangeAndWatches) {
  krait_solver s;
  const u32 i = s.define_int_var(-3, 3), r = s.define_float_var(-2, 2);
  ASSERT_FALSE(s.propagate());
  const u32 sum = s.make_tclause(KRAIT_SUM, i, i, 0);
  const u32 mixed = s.make_tclause(KRAIT_PRODUCT, i, r, 0);
  const u32 scaled = s.make_tclause(KRAIT_SCALE, i, i, 0.5);
  const u32 sq = s.make_tclause(KRAIT_POW, i, i, 2);
  const u32 e = s.make_tclause(KRAIT_EXP, r, r, 0);
  const u32 cosine = s.make_tclause(KRAIT_COS, r, r, 0);
  const u32 dclauses_before_root = static_cast<u32>(s.num_dclauses);
  const u32 root = s.make_tclause(KRAIT_NRT, r, r, 2);
  EXPECT_TRUE(s.vars[sum].intvar);
  EXPECT_FALSE(s.vars[mixed].intvar);
  EXPECT_FALSE(s.vars[scaled].intvar);
  EXPECT_TRUE(s.vars[sq].intvar);
  EXPECT_TRUE(s.vars[sum].arith_auxvar);
  EXPECT_EQ(s.num_tclauses, 7u);
  EXPECT_EQ(s.tclauses[2].x, mixed);
  // Watches: x, y and a distinct z.
  EXPECT_EQ(s.vars[i].tclause_watches, (std::vector<u32>{1, 2, 3, 4}));
  EXPECT_EQ(s.vars[r].tclause_watches, (std::vector<u32>{2, 5, 6, 7}));
  // An even root adds y >= 0 before the result exists.
  EXPECT_EQ(s.num_dclauses, dclauses_before_root + 1u);
  EXPECT_TRUE(krait_solver::bounds_equal(s.dclause_at(dclauses_before_root + 1).atoms[0], lower(r, 0)));
  (void)root;

  // Seeding happened at once from the operands' bounds: i + i in [-6, 6]; the ranges of the
  // operations arrive with propagation.
  bool strict;
  double value;
  ASSERT_TRUE(s.get_upper_bound(sum, strict, value));
  EXPECT_EQ(value, 6.0);
  ASSERT_FALSE(s.propagate());
  ASSERT_TRUE(s.get_lower_bound(e, strict, value));
  EXPECT_GT(value, 0.0);
  ASSERT_TRUE(s.get_lower_bound(cosine, strict, value));
  EXPECT_GE(value, -1.0);
  ASSERT_TRUE(s.get_lower_bound(sq, strict, value));
  EXPECT_EQ(value, 0.0);
  ASSERT_TRUE(s.get_lower_bound(r, strict, value));
  EXPECT_EQ(value, 0.0);  // from the root's clause
}

TEST(ClauseStatus, AtomsAndClausesUnderTheCurrentBounds) {
  krait_solver s;
  const u32 x = s.define_float_var(0, 10), i = s.define_int_var(0, 10);
  ASSERT_FALSE(s.propagate());
  EXPECT_EQ(s.get_atom_status(lower(x, 0)), 1u);
  EXPECT_EQ(s.get_atom_status(lower(x, 0, true)), 0u);
  EXPECT_EQ(s.get_atom_status(upper(x, 0)), 0u);
  EXPECT_EQ(s.get_atom_status(upper(x, 0, true)), 2u);
  EXPECT_EQ(s.get_atom_status(lower(i, -0.5, true)), 1u);  // integers: i > -0.5 is i >= 0
  EXPECT_EQ(s.get_atom_status(upper(i, 0.5, true)), 0u);
  EXPECT_EQ(s.get_dlevel_of_bound(lower(x, 0)), 0u);

  const u32 c = s.add_dclause({upper(x, 0, true), lower(x, 11)}, false);
  EXPECT_EQ(s.get_dclause_status(c), 0u);
  const u32 d = s.add_dclause({upper(x, 0, true), lower(x, 5)}, false);
  EXPECT_EQ(s.get_dclause_status(d), 2u);
  const u32 e = s.add_dclause({lower(x, 0), lower(x, 5)}, false);
  EXPECT_EQ(s.get_dclause_status(e), 1u);
  const u32 f = s.add_dclause({lower(x, 3), upper(i, 4)}, false);
  EXPECT_EQ(s.get_dclause_status(f), 3u);
  EXPECT_EQ(s.dclause_at(f).watch[1], 1u);

  expect_fatal([&] { s.get_dlevel_of_bound(lower(x, 3)); }, "Unexpected case in get_dlevel_of_bound.");
  expect_fatal([&] { s.add_dclause({}, false); }, "Unexpected case in add_dclause.");
}

TEST(Deletion, TclausesAreCutAsASuffix) {
  krait_solver s;
  const u32 y = s.define_float_var(0, 1), z = s.define_float_var(0, 1);
  s.make_tclause(KRAIT_SUM, y, z, 0);
  s.make_tclause(KRAIT_PRODUCT, y, z, 0);
  s.make_tclause(KRAIT_EXP, y, y, 0);
  s.mark_tclause_deleted(3);
  s.mark_tclause_deleted(2);
  EXPECT_EQ(s.num_tclauses, 1u);
  EXPECT_TRUE(s.vars[z].watches_dirty);
  s.purge_deleted_tclauses();
  EXPECT_EQ(s.tclauses.size(), 2u);
  EXPECT_EQ(s.vars[y].tclause_watches, (std::vector<u32>{1}));
  EXPECT_EQ(s.vars[z].tclause_watches, (std::vector<u32>{1}));
  EXPECT_FALSE(s.vars[y].watches_dirty);
  expect_fatal([&] { s.tclauses[1].functor = 12; s.mark_tclause_deleted(1); },
               "Unexpected case in krait_solver::mark_tclause_deleted.");
}

TEST(Deletion, DclausesFreeTheirIndicesAndCompactTheRecords) {
  krait_solver s;
  const u32 x = s.define_float_var(0, 10), y = s.define_float_var(0, 10);  // dclauses 1 to 4
  const u32 a = s.add_dclause({lower(x, 1), lower(y, 1)}, false);
  const u32 b = s.add_dclause({lower(x, 2), lower(y, 2)}, true);
  const u32 c = s.add_dclause({lower(x, 3), lower(y, 3)}, false);
  EXPECT_EQ(s.num_learned, 1u);
  s.delete_dclause(b);
  s.delete_dclause(a);
  EXPECT_EQ(s.num_dclauses, 5u);
  EXPECT_EQ(s.num_learned, 0u);
  EXPECT_TRUE(s.vars[x].lb_watches_dirty);
  s.purge_deleted_dclauses();
  EXPECT_EQ(s.dclause_records.size(), 6u);  // slot 0 and five clauses
  EXPECT_EQ(s.dclause_slot[c], 5u);
  EXPECT_EQ(s.dclause_slot[a], 0u);
  EXPECT_EQ(s.dclause_at(c).atoms[0].value, 3.0);
  EXPECT_EQ(s.vars[x].dclause_watches_lb.size(), 1u);
  EXPECT_EQ(s.vars[x].dclause_watches_lb[0].dclause, c);
  // Freed indices come back first, in the order of their old slots.
  EXPECT_EQ(s.add_unit_dclause(lower(x, 4)), a);
  EXPECT_EQ(s.add_unit_dclause(lower(x, 4)), b);
  EXPECT_EQ(s.add_unit_dclause(lower(x, 4)), c + 1);
}
