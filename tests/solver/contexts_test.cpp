// Contexts: whatever is added after a push, at any decision level and through searches, is gone
// after the pop.
#include <gtest/gtest.h>

#include <iostream>
#include <cstring>
#include <random>
#include <sstream>

#include "support/capture.hpp"
#include "test_solver.hpp"

namespace {

std::string dumps(const krait_solver& s, bool with_watches) {
  std::ostringstream text;
  std::streambuf* saved = std::cout.rdbuf(text.rdbuf());
  s.dump_variables("");
  s.dump_tclauses("");
  s.dump_dclauses("");
  s.dump_assignments("");
  s.dump_implication_queue("");
  s.dump_pending_implications("");
  std::cout << s.num_variables << " " << s.num_boolean << " " << s.num_integer << " " << s.num_real << " "
            << s.num_constant << " " << s.num_dclauses << " " << s.num_tclauses << " " << s.num_learned << " "
            << s.num_templates << " " << s.num_shifted_copies << " " << s.num_other_learned << " "
            << s.sharables.size() << " " << s.num_assignments << " " << s.num_decisions << "\n";
  std::cout.rdbuf(saved);
  std::string all = text.str();
  if (!with_watches) {
    // Watches move during a search and are not moved back: compare without them.
    std::string kept;
    std::istringstream lines(all);
    for (std::string line; std::getline(lines, line);) {
      if (line.find("watched in dclauses") != std::string::npos) continue;
      for (const char* mark : {"[[", "]]", "(", ")"}) {
        for (std::size_t p; (p = line.find(mark)) != std::string::npos;) line.erase(p, std::strlen(mark));
      }
      kept += line + "\n";
    }
    all = kept;
  }
  return all;
}

// Every clause of two or more atoms is filed exactly under its two watched atoms.
void expect_watches_consistent(const krait_solver& s) {
  std::size_t entries = 0, expected = 0;
  for (u32 v = 1; v < s.vars.size(); ++v) {
    for (const bool lower : {true, false}) {
      for (const dclause_watch& w : lower ? s.vars[v].dclause_watches_lb : s.vars[v].dclause_watches_ub) {
        const dclause& c = s.dclause_at(w.dclause);
        ASSERT_FALSE(c.deleted);
        EXPECT_TRUE(w.position == c.watch[0] || w.position == c.watch[1]);
        EXPECT_EQ(c.atoms[w.position].var, v);
        EXPECT_EQ(c.atoms[w.position].is_lower, lower);
        ++entries;
      }
    }
  }
  for (u32 d = 1; d < s.dclause_slot.size(); ++d) {
    if (s.dclause_slot[d] != 0 && s.dclause_at(d).atoms.size() >= 2) expected += 2;
  }
  EXPECT_EQ(entries, expected);
}

bound random_atom(std::mt19937_64& rng, const krait_solver& s) {
  const u32 v = 1 + static_cast<u32>(rng() % (s.vars.size() - 1));
  return {v, (rng() & 1) != 0, (rng() & 2) != 0, static_cast<double>(static_cast<int>(rng() % 13) - 6) * 0.5};
}

// Adds a random mix of variables, tclauses, connectives and clauses.
void add_random_content(std::mt19937_64& rng, krait_solver& s, int count) {
  for (int k = 0; k < count; ++k) {
    switch (rng() % 6) {
      case 0: s.define_int_var(-3, static_cast<double>(rng() % 4)); break;
      case 1: s.define_float_var(-2.5, static_cast<double>(rng() % 5)); break;
      case 2: {
        const u32 f = static_cast<u32>(rng() % 6);
        const u32 y = 1 + static_cast<u32>(rng() % (s.vars.size() - 1)), z = 1 + static_cast<u32>(rng() % (s.vars.size() - 1));
        s.add_tclause(f, y, z, f == KRAIT_SCALE ? 2.0 : 0.0);
        break;
      }
      case 3: s.define_or({random_atom(rng, s), random_atom(rng, s)}, 1 + static_cast<u32>(rng() % 3)); break;
      case 4: s.define_and({random_atom(rng, s), random_atom(rng, s)}, 1 + static_cast<u32>(rng() % 3)); break;
      default: s.add_dclause({random_atom(rng, s), random_atom(rng, s), random_atom(rng, s)}, false); break;
    }
  }
}

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
  std::ostringstream ignored;
  std::streambuf* saved = std::cout.rdbuf(ignored.rdbuf());
  s.push_context();  // propagates the base to its fixpoint
  s.pop_context();
  std::cout.rdbuf(saved);

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
      saved = std::cout.rdbuf(ignored.rdbuf());
      unsatisfiable += s.solve();
      std::cout.rdbuf(saved);
      ++searched;
      total_conflicts += s.num_conflicts;
    }
    const u32 level = s.dlevel;
    s.pop_context();
    EXPECT_EQ(dumps(s, !search), before) << "cycle " << cycle;
    // The statistics restart before the jump back to level 0, which is the first they count.
    EXPECT_EQ(s.max_backjump, level) << "cycle " << cycle;
    expect_watches_consistent(s);
    EXPECT_EQ(s.context_stack.size(), 1u);
  }
  // The run totals keep what every search counted.
  EXPECT_EQ(s.tot_conflicts, total_conflicts);
  EXPECT_GT(total_conflicts, 0u);
  EXPECT_GT(unsatisfiable, 0);
  EXPECT_LT(unsatisfiable, searched);
}

TEST(Contexts, PolarityUpgradesAndLinksAreUndone) {
  krait_solver s;
  s.push_context();
  const u32 a = s.define_float_var(0, 10), b = s.define_float_var(0, 10);
  const bound r = s.define_or({{a, true, false, 5}, {b, false, false, 2}}, 1);
  s.push_context();
  const u32 later = s.define_float_var(0, 1);
  s.vars[later].prev_var = b;
  s.vars[b].next_var = later;
  EXPECT_TRUE(bounds_equal(s.define_or({{a, true, false, 5}, {b, false, false, 2}}, 2), r));
  const u64 clauses = s.num_dclauses;
  s.pop_context();
  EXPECT_EQ(s.vars[b].next_var, 0u);
  EXPECT_EQ(s.num_variables, r.var);
  EXPECT_EQ(s.num_dclauses, clauses - 2 - 2);  // the range of `later` and the two upgrade clauses
  // The negative direction is missing again, so it is encoded again.
  s.define_or({{a, true, false, 5}, {b, false, false, 2}}, 2);
  EXPECT_EQ(s.num_dclauses, clauses - 2);
}

TEST(Contexts, AnInconsistentBaseIsReportedWhenPushing) {
  const captured_run run = run_captured([] {
    krait_solver s;
    s.push_context();
    const u32 x = s.define_float_var(0, 1);
    s.add_unit_dclause({x, true, false, 2});
    s.push_context();
  });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err,
            "\nError: Conjunction of INIT and TRANS is unsatisfiable.\n"
            "This is probably due to an error in the encoding of the model.\n");
}
