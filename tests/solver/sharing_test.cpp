// Shared definitions: tclauses, constants and connectives are made once, with the polarities
// their clauses encode.
#include <cmath>

#include "test_solver.hpp"

using namespace test_solver;

TEST(SharedDefinitions, TclausesAreMadeOncePerOperationAndOperands) {
  krait_solver s;
  const u32 x = s.define_float_var(-5, 5), y = s.define_float_var(-5, 5);
  const struct { u32 f, y, z; double c; u32 g, y2, z2; double c2; bool same; } pairs[] = {
      {KRAIT_PRODUCT, x, y, 0, KRAIT_PRODUCT, y, x, 0, true}, {KRAIT_SUM, x, y, 0, KRAIT_SUM, y, x, 0, true},
      {KRAIT_MAX, x, y, 0, KRAIT_MAX, y, x, 0, true},         {KRAIT_MAX, x, y, 0, KRAIT_MIN, x, y, 0, false},
      {KRAIT_SCALE, y, y, 2, KRAIT_SCALE, y, y, 3, false},    {KRAIT_SUM, y, y, 0, KRAIT_SCALE, y, y, 2, true},
      {KRAIT_PRODUCT, y, y, 0, KRAIT_POW, y, 0, 2, true},     {KRAIT_ABS, y, 0, 0, KRAIT_ABS, y, y, 0, true}};
  for (const auto& p : pairs)
    EXPECT_EQ(s.add_tclause(p.f, p.y, p.z, p.c) == s.add_tclause(p.g, p.y2, p.z2, p.c2), p.same) << p.f << " " << p.g;
  EXPECT_EQ(s.num_tclauses, 8u);  // x*y, x+y, max, min, 2y, 3y, y^2 and abs
  // Operations that leave their operand as it is are no operations; y^0 is the constant 1.
  EXPECT_EQ(std::vector<u32>({s.add_tclause(KRAIT_MAX, y, y, 0), s.add_tclause(KRAIT_MIN, x, x, 0),
                              s.add_tclause(KRAIT_SCALE, y, y, 1), s.add_tclause(KRAIT_POW, y, 0, 1)}),
            std::vector<u32>({y, x, y, y}));
  EXPECT_EQ(s.add_tclause(KRAIT_POW, y, 0, 0), s.define_constant_var(1.0));
  const struct { u32 f; double c; const char* message; } refused[] = {
      {KRAIT_POW, 2.5, "Exponent must be integer."}, {KRAIT_NRT, 1, "Exponent must be an integer greater equal two."},
      {10, 0, "Unexpected case in krait_solver::add_tclause."}};
  for (const auto& [f, c, message] : refused) expect_fatal([&] { s.add_tclause(f, x, y, c); }, message);
}

TEST(SharedDefinitions, KeysSaturateAndTheTableForgetsErasedEntries) {
  krait_solver s;
  const u32 a = s.define_constant_var(1.5);
  EXPECT_EQ(s.define_constant_var(1.5), a);
  EXPECT_NE(s.define_constant_var(1.25), a);  // the same hash, another constant
  // Keys beyond 64 bits saturate (NaN is 0) instead of converting out of range.
  const struct { double value; u32 hash; } keys[] = {{1.5, 1}, {1e30, 0xFFFFFFFFu}, {INFINITY, 0xFFFFFFFFu},
                                                     {-1e30, 0}, {NAN, 0}};
  for (const auto& [value, hash] : keys) EXPECT_EQ(sharable_arithconst(value).hash_val(), hash) << value;
  EXPECT_EQ(sharable_tclause(KRAIT_SCALE, 3, 0, 1e300).hash_val(),
            sharable_tclause(KRAIT_SCALE, 3, 0, 1e20).hash_val());
  expect_fatal([] { sharable_tclause(12, 1, 2, 0).hash_val(); }, "Unexpected case in sharable_tclause::hash_val.");
  expect_fatal([] { (void)(sharable_tclause(12, 1, 2, 0) == sharable_tclause(12, 1, 2, 0)); },
               "Unexpected case in sharable_tclause::operator==.");

  sharable_table table;  // grows, and forgets what is erased
  std::vector<u32> positions;
  for (int i = 0; i < 500; ++i) positions.push_back(table.insert(std::make_unique<sharable_arithconst>(i), {}));
  for (int i = 0; i < 500; i += 2) table.erase(positions[i]);
  for (int i = 0; i < 500; ++i) EXPECT_EQ(table.find(sharable_arithconst(i)), i % 2 ? positions[i] : table.npos);
}

TEST(Connectives, PolaritiesDualsMergingAndDecidedCases) {
  krait_solver s;
  const u32 a = s.define_float_var(0, 10), b = s.define_float_var(0, 10), i = s.define_int_var(0, 10);
  const u32 clauses = static_cast<u32>(s.num_dclauses);
  const bound r = s.define_or({lower(a, 5), upper(b, 2)}, 1);
  // r's range, then (a >= 5 or b <= 2 or r <= 0).
  EXPECT_TRUE(r.var == i + 1 && s.vars[r.var].boolean && s.num_dclauses == clauses + 3);
  EXPECT_TRUE(same_atoms(s.dclause_at(clauses + 3).atoms, {lower(a, 5), upper(b, 2), upper(r.var, 0)}));
  // Asked again negatively: the same literal, and the two missing clauses b_i -> r.
  EXPECT_TRUE(bounds_equal(s.define_or({upper(b, 2), lower(a, 5)}, 2), r));
  EXPECT_TRUE(s.num_dclauses == clauses + 5 && same_atoms(s.dclause_at(clauses + 4).atoms, {upper(a, 5, true), r}));
  s.define_or({lower(a, 5), upper(b, 2)}, 3);
  // The conjunction of the complements is the complement of r.
  EXPECT_TRUE(bounds_equal(s.define_and({upper(a, 5, true), lower(b, 2, true)}, 3), upper(r.var, 0)));
  EXPECT_TRUE(s.num_variables == r.var && s.num_dclauses == clauses + 5);

  // One literal per variable and direction: the weaker in a disjunction, the stronger in a
  // conjunction. Opposite literals may cover everything or nothing; literals on the constant 1
  // drop out or decide the connective.
  const bound t = s.true_bound(), f = s.negate_bound(t);
  const struct { bool is_or; std::vector<bound> literals; bound result; } cases[] = {
      {true, {lower(a, 5), lower(a, 3)}, lower(a, 3)}, {false, {upper(i, 7), upper(i, 4.5, true)}, upper(i, 4)},
      {true, {upper(a, 4), lower(a, 3)}, t},           {false, {upper(a, 2), lower(a, 2, true)}, f},
      {true, {f, lower(a, 3)}, lower(a, 3)},           {true, {t, lower(a, 3)}, t},
      {false, {t, lower(a, 3)}, lower(a, 3)},          {false, {f, lower(a, 3)}, f},
      {true, {}, f},                                   {false, {}, t}};
  for (const auto& [is_or, literals, result] : cases) {
    EXPECT_TRUE(bounds_equal(s.define_connective(literals, 3, is_or), result)) << is_or;
  }
  EXPECT_EQ(s.num_variables, r.var + 1);  // the constant 1, and no literal of its own
}
