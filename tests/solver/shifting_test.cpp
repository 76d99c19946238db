// Learned clauses carried across depths: reuse, templates and their copies along the steps.
#include <gtest/gtest.h>

#include "test_solver.hpp"

namespace {

// Instances a_0.. and b_0.. of two state variables, linked step to step.
struct unwinding {
  krait_solver s;
  std::vector<u32> a, b;

  void add_step() {
    for (std::vector<u32>* v : {&a, &b}) {
      const u32 n = s.define_int_var(0, 1);
      if (!v->empty()) {
        s.vars[n].prev_var = v->back();
        s.vars[v->back()].next_var = n;
      }
      v->push_back(n);
    }
  }
  std::vector<bound> clause(u32 step_a, u32 step_b) const {
    return {{a[step_a], false, false, 0}, {b[step_b], true, false, 1}};
  }
  bool has(const dclause& c, u32 step_a, u32 step_b) const {
    return c.atoms.size() == 2 && c.atoms[0].var == a[step_a] && c.atoms[1].var == b[step_b];
  }
};

}  // namespace

TEST(Shifting, TransitionClausesBecomeTemplatesWithCopiesAtEveryStep) {
  unwinding u;
  for (int step = 0; step < 4; ++step) u.add_step();
  u.s.shifting = true;
  const auto [t, count] = u.s.learn_dclause(u.clause(1, 2), KRAIT_PART_TRANS);
  EXPECT_EQ(count, 3u);
  const dclause& tmpl = u.s.dclause_at(t);
  EXPECT_TRUE(tmpl.shift_template);
  ASSERT_EQ(tmpl.copies.size(), 2u);
  EXPECT_TRUE(u.has(u.s.dclause_at(tmpl.copies[0]), 0, 1));  // backward first
  EXPECT_TRUE(u.has(u.s.dclause_at(tmpl.copies[1]), 2, 3));
  EXPECT_EQ(tmpl.latest_copy, tmpl.copies[1]);
  const dclause& copy = u.s.dclause_at(tmpl.copies[0]);
  EXPECT_TRUE(copy.shift_copy);
  EXPECT_TRUE(copy.learned);
  EXPECT_EQ(copy.shift_origin, t);
  EXPECT_EQ(copy.part_mask, KRAIT_PART_TRANS);
  EXPECT_EQ(u.s.num_templates, 1u);
  EXPECT_EQ(u.s.num_shifted_copies, 2u);
  EXPECT_EQ(u.s.num_learned, 3u);
  EXPECT_EQ(u.s.num_other_learned, 0u);
  EXPECT_EQ(u.s.reusable_dclauses.count(t), 1u);

  // INIT or TARGET in the mask: no template.
  EXPECT_EQ(u.s.learn_dclause(u.clause(1, 2), KRAIT_PART_TRANS | KRAIT_PART_INIT).second, 1u);
  const auto [target, one] = u.s.learn_dclause(u.clause(1, 2), KRAIT_PART_TRANS | KRAIT_PART_TARGET);
  EXPECT_EQ(one, 1u);
  EXPECT_EQ(u.s.reusable_dclauses.count(target), 0u);
  EXPECT_EQ(u.s.num_other_learned, 2u);
  EXPECT_EQ(u.s.num_templates, 1u);

  // A template over the newest step gets no forward copy, its backward ones still.
  const auto [late, late_count] = u.s.learn_dclause(u.clause(3, 3), KRAIT_PART_TRANS);
  EXPECT_EQ(late_count, 4u);
  EXPECT_EQ(u.s.dclause_at(late).latest_copy, 0u);
}

TEST(Shifting, ReuseBringsClausesBackAndPendingTemplatesGrowWithTheUnwinding) {
  unwinding u;
  for (int step = 0; step < 4; ++step) u.add_step();
  u.s.shifting = true;
  u.s.reuse = true;
  u.s.learn_dclause(u.clause(1, 2), KRAIT_PART_TRANS);
  u.s.learn_dclause(u.clause(0, 0), KRAIT_PART_INIT);
  u.s.learn_dclause(u.clause(0, 1), KRAIT_PART_TARGET);
  const std::vector<saved_dclause> saved = u.s.collect_reusable();
  ASSERT_EQ(saved.size(), 2u);  // the template and the INIT clause; copies are made anew
  EXPECT_EQ(saved[0].part_mask, KRAIT_PART_TRANS);
  EXPECT_EQ(saved[1].part_mask, KRAIT_PART_INIT);

  krait_solver& s = u.s;
  const u64 reused = s.num_reused;
  s.reuse_dclauses(saved);
  EXPECT_EQ(s.num_reused, reused + 3u + 1u);
  ASSERT_EQ(s.pending_templates.size(), 1u);
  const u32 t = s.pending_templates[0];
  EXPECT_TRUE(s.dclause_at(t).shift_template);

  u.add_step();
  const u64 copies = s.num_shifted_copies;
  s.shift_pending();
  EXPECT_EQ(s.num_shifted_copies, copies + 1u);
  EXPECT_TRUE(u.has(s.dclause_at(s.dclause_at(t).latest_copy), 3, 4));
  s.shift_pending();  // nothing newer yet
  EXPECT_EQ(s.num_shifted_copies, copies + 1u);

  // Without shifting nothing is copied, but a transition-only clause is still kept pending.
  unwinding plain;
  for (int step = 0; step < 3; ++step) plain.add_step();
  plain.s.reuse_dclauses({{plain.clause(0, 1), KRAIT_PART_TRANS}});
  EXPECT_EQ(plain.s.num_reused, 1u);
  EXPECT_EQ(plain.s.num_shifted_copies, 0u);
  EXPECT_EQ(plain.s.pending_templates.size(), 1u);
  plain.s.shift_pending();  // a plain learned clause has no copies to extend
}

TEST(Shifting, ClausesOnStepInvariantVariablesGetNoCopies) {
  unwinding u;
  for (int step = 0; step < 3; ++step) u.add_step();
  u.s.shifting = true;
  // A constant (or a term of static variables) is its own instance at every step.
  const u32 k = u.s.define_int_var(0, 3);
  u.s.vars[k].prev_var = k;
  u.s.vars[k].next_var = k;
  const std::vector<bound> invariant{{k, false, false, 1}, {k, true, false, 3}};
  const auto [t, count] = u.s.learn_dclause(invariant, KRAIT_PART_TRANS);
  EXPECT_EQ(count, 1u);
  EXPECT_TRUE(u.s.dclause_at(t).copies.empty());
  EXPECT_EQ(u.s.shift_forward(t), 0u);
  EXPECT_EQ(u.s.shift_backward(t), 0u);
  // Mixed with a variable that moves, the clause is copied as far as that one has instances.
  const auto [m, mixed] = u.s.learn_dclause({{k, false, false, 1}, {u.b[1], true, false, 1}}, KRAIT_PART_TRANS);
  EXPECT_EQ(mixed, 3u);
  EXPECT_EQ(u.s.dclause_at(m).copies.size(), 2u);
}
