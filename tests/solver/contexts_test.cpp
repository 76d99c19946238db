// Across unwinding depths: whatever is added after a push, at any decision level and through
// searches, is gone after the pop; learned clauses are reused and copied along the steps.
#include <algorithm>
#include <random>
#include <regex>

#include "test_solver.hpp"

using namespace test_solver;

namespace {

// Every store and counter as text. Watches move during a search and are not moved back, so
// they are compared only where no search ran.
std::string dumps(const krait_solver& s, bool with_watches) {
  captured_cout out;
  for (auto dump : {&krait_solver::dump_variables, &krait_solver::dump_tclauses, &krait_solver::dump_dclauses,
                    &krait_solver::dump_assignments, &krait_solver::dump_implication_queue,
                    &krait_solver::dump_pending_implications})
    (s.*dump)("");
  for (u64 n : {s.num_variables, s.num_boolean, s.num_integer, s.num_real, s.num_constant, s.num_dclauses,
                s.num_tclauses, s.num_learned, s.num_templates, s.num_shifted_copies, s.num_other_learned,
                u64{s.sharables.size()}, s.num_assignments, s.num_decisions})
    std::cout << n << " ";
  const std::regex watches(R"(\[\[|\]\]|\(|\)|.*watched in dclauses.*)");
  return with_watches ? out.text.str() : std::regex_replace(out.text.str(), watches, "");
}

// A random mix of variables, tclauses, connectives and clauses.
void add_random_content(std::mt19937_64& rng, krait_solver& s, int count) {
  auto var = [&] { return 1 + static_cast<u32>(rng() % (s.vars.size() - 1)); };
  auto atom = [&] { return bound{var(), (rng() & 1) != 0, (rng() & 2) != 0, static_cast<int>(rng() % 13) * 0.5 - 3}; };
  for (int k = 0; k < count; ++k) {
    const u64 kind = rng() % 6;
    if (kind == 0) s.define_int_var(-3, static_cast<double>(rng() % 4));
    if (kind == 1) s.define_float_var(-2.5, static_cast<double>(rng() % 5));
    if (kind == 2) {
      const u32 f = static_cast<u32>(rng() % 6), y = var(), z = var();
      s.add_tclause(f, y, z, f == KRAIT_SCALE ? 2.0 : 0.0);
    }
    if (kind == 3 || kind == 4) {
      const u32 polarity = 1 + static_cast<u32>(rng() % 3);
      s.define_connective({atom(), atom()}, polarity, kind == 3);
    }
    if (kind == 5) s.add_dclause({atom(), atom(), atom()}, false);
  }
}

// Instances a_0.. and b_0.. of two state variables, linked step to step.
struct unwinding {
  krait_solver s;
  std::vector<u32> a, b;

  explicit unwinding(int steps) {
    s.shifting = true;
    for (int k = 0; k < steps; ++k) add_step();
  }
  void add_step() {
    for (std::vector<u32>* v : {&a, &b}) {
      const u32 n = s.define_int_var(0, 1);
      if (!v->empty()) s.vars[n].prev_var = v->back(), s.vars[v->back()].next_var = n;
      v->push_back(n);
    }
  }
  std::vector<bound> clause(u32 i, u32 j) const { return {upper(a[i], 0), lower(b[j], 1)}; }
  bool has(u32 index, u32 i, u32 j) const { return same_atoms(s.dclause_at(index).atoms, clause(i, j)); }
};

}  // namespace

TEST(Contexts, PopRestoresExactlyWhatThePushSaw) {
  std::mt19937_64 rng(5);
  random_seed = 13;
  krait_solver s;
  s.push_context();
  for (u32 v = 0; v < 4; ++v) s.define_float_var(-4, 4);
  add_random_content(rng, s, 12);
  s.set_translation_phase(2);
  add_random_content(rng, s, 6);
  s.set_translation_phase(0);
  s.push_context();  // propagates the base to its fixpoint
  s.pop_context();
  u64 total_conflicts = s.tot_conflicts;
  int searched = 0, unsatisfiable = 0;
  for (int cycle = 0; cycle < 60; ++cycle) {
    const bool search = cycle % 3 != 0;
    const std::string before = dumps(s, !search);
    s.push_context();
    s.set_translation_phase(3);
    add_random_content(rng, s, 1 + static_cast<int>(rng() % 8));
    s.set_translation_phase(0);
    if (search) {
      // Content added at decision levels above 0 too, then a search.
      s.init_var_order();
      for (int k = 0; k < 2 && !s.propagate() && s.decide(); ++k) add_random_content(rng, s, 2);
      unsatisfiable += s.solve();
      ++searched;
      total_conflicts += s.num_conflicts;
    }
    const u32 level = s.dlevel;
    s.pop_context();
    EXPECT_EQ(dumps(s, !search), before) << "cycle " << cycle;
    // The statistics restart before the jump back to level 0, which is the first they count.
    EXPECT_EQ(s.max_backjump, level) << "cycle " << cycle;
  }
  EXPECT_EQ(s.tot_conflicts, total_conflicts);  // the run totals keep what every search counted
  EXPECT_TRUE(total_conflicts > 0 && unsatisfiable > 0 && unsatisfiable < searched) << unsatisfiable;
}

TEST(Contexts, PolarityUpgradesAndLinksAreUndone) {
  krait_solver s;
  s.push_context();
  const u32 a = s.define_float_var(0, 10), b = s.define_float_var(0, 10);
  const std::vector<bound> literals{lower(a, 5), upper(b, 2)};
  const bound r = s.define_or(literals, 1);
  s.push_context();
  const u32 later = s.define_float_var(0, 1);
  s.vars[later].prev_var = b;
  s.vars[b].next_var = later;
  EXPECT_TRUE(bounds_equal(s.define_or(literals, 2), r));
  const u64 clauses = s.num_dclauses;
  s.pop_context();
  EXPECT_TRUE(s.vars[b].next_var == 0 && s.num_variables == r.var);
  EXPECT_EQ(s.num_dclauses, clauses - 2 - 2);  // the range of `later` and the two upgrade clauses
  s.define_or(literals, 2);  // the negative direction is missing again, so it is encoded again
  EXPECT_EQ(s.num_dclauses, clauses - 2);
}

TEST(Shifting, TransitionClausesBecomeTemplatesWithCopiesAtEveryStep) {
  unwinding u(4);
  krait_solver& s = u.s;
  const auto [t, count] = s.learn_dclause(u.clause(1, 2), KRAIT_PART_TRANS);
  const dclause& tmpl = s.dclause_at(t);
  ASSERT_TRUE(count == 3 && tmpl.shift_template && tmpl.copies.size() == 2);
  EXPECT_TRUE(u.has(tmpl.copies[0], 0, 1) && u.has(tmpl.copies[1], 2, 3));  // backward first
  const dclause& copy = s.dclause_at(tmpl.copies[0]);
  EXPECT_TRUE(copy.shift_copy && copy.learned && copy.shift_origin == t && copy.part_mask == KRAIT_PART_TRANS);
  EXPECT_TRUE(tmpl.latest_copy == tmpl.copies[1] && std::count(s.reusable_dclauses.begin(), s.reusable_dclauses.end(), t) == 1);
  // INIT or TARGET in the mask: no template; TARGET: not carried further either.
  EXPECT_EQ(s.learn_dclause(u.clause(1, 2), KRAIT_PART_TRANS | KRAIT_PART_INIT).second, 1u);
  const auto [target, one] = s.learn_dclause(u.clause(1, 2), KRAIT_PART_TRANS | KRAIT_PART_TARGET);
  EXPECT_TRUE(one == 1 && std::count(s.reusable_dclauses.begin(), s.reusable_dclauses.end(), target) == 0);
  // A template over the newest step gets no forward copy, its backward ones still.
  const auto [late, late_count] = s.learn_dclause(u.clause(3, 3), KRAIT_PART_TRANS);
  EXPECT_TRUE(late_count == 4 && s.dclause_at(late).latest_copy == 0);
  EXPECT_EQ(std::vector<u64>({s.num_templates, s.num_shifted_copies, s.num_learned, s.num_other_learned}),
            std::vector<u64>({2, 5, 9, 2}));
  // Atoms only on variables that are their own instance at every step (a constant, a term of
  // static variables) hold at every step already: no copies.
  const u32 k = s.define_int_var(0, 3);
  s.vars[k].prev_var = s.vars[k].next_var = k;
  const auto [fixed, none] = s.learn_dclause({upper(k, 1), lower(k, 3)}, KRAIT_PART_TRANS);
  EXPECT_TRUE(none == 1 && s.shift_forward(fixed) + s.shift_backward(fixed) == 0);
  EXPECT_EQ(s.learn_dclause({upper(k, 1), lower(u.b[1], 1)}, KRAIT_PART_TRANS).second, 4u);
}

TEST(Shifting, ReuseBringsClausesBackAndPendingTemplatesGrowWithTheUnwinding) {
  unwinding u(4);
  krait_solver& s = u.s;
  s.learn_dclause(u.clause(1, 2), KRAIT_PART_TRANS);
  s.learn_dclause(u.clause(0, 0), KRAIT_PART_INIT);
  s.learn_dclause(u.clause(0, 1), KRAIT_PART_TARGET);
  // The template and the INIT clause come back; copies are made anew.
  const std::vector<saved_dclause> saved = s.collect_reusable();
  ASSERT_EQ(saved.size(), 2u);
  EXPECT_TRUE(saved[0].part_mask == KRAIT_PART_TRANS && saved[1].part_mask == KRAIT_PART_INIT);
  s.reuse_dclauses(saved);
  ASSERT_TRUE(s.num_reused == 3 + 1 && s.pending_templates.size() == 1);
  const u32 t = s.pending_templates[0];
  u.add_step();
  for (int k = 0; k < 2; ++k) s.shift_pending();  // the second finds nothing newer
  EXPECT_TRUE(s.num_shifted_copies == 2 + 2 + 1 && u.has(s.dclause_at(t).latest_copy, 3, 4));
}
