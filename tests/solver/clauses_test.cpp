// Definitions, atom and clause status, clauses added under a partial assignment, deletion.
#include <random>

#include "test_solver.hpp"

using namespace test_solver;

TEST(Definitions, ResultTypesAndTheChecksOfRanges) {
  krait_solver s;
  const u32 b = s.define_int_var(0, 1), i = s.define_int_var(-3, 7), r = s.define_float_var(-1, 1);
  // A result is an integer where its operation keeps integers integral.
  const struct { u32 f, y, z; double c; bool is_int; } results[] = {
      {KRAIT_SUM, i, b, 0, true}, {KRAIT_PRODUCT, i, r, 0, false}, {KRAIT_SCALE, i, i, 0.5, false},
      {KRAIT_POW, i, i, 2, true}, {KRAIT_ABS, i, i, 0, true},      {KRAIT_EXP, i, i, 0, false}};
  for (const auto& [f, y, z, c, is_int] : results) EXPECT_EQ(s.vars[s.make_tclause(f, y, z, c)].intvar, is_int) << f;
  EXPECT_EQ(s.vars[i].tclause_watches, (std::vector<u32>{1, 2, 3, 4, 5, 6}));  // x, y and a distinct z
  const u32 before_root = static_cast<u32>(s.num_dclauses);
  s.make_tclause(KRAIT_NRT, r, r, 2);  // an even root first asks for a radicand >= 0
  EXPECT_TRUE(bounds_equal(s.dclause_at(before_root + 1).atoms[0], lower(r, 0)));
  // An integer range is empty when no integer lies in it.
  expect_fatal([] { krait_solver().define_var(false, true, true, true, 2, true, 2.5); },
               "Attempt to define variable with empty range.");
}

TEST(ClauseStatus, AtomsAndClausesUnderTheCurrentBounds) {
  krait_solver s;
  const u32 x = s.define_float_var(0, 10), i = s.define_int_var(0, 10);
  ASSERT_FALSE(s.propagate());
  // 0 open, 1 true, 2 false; i > -0.5 is i >= 0.
  const struct { bound atom; u32 status; } atoms[] = {{lower(x, 0), 1}, {lower(x, 0, true), 0}, {upper(x, 0, true), 2},
                                                      {lower(i, -0.5, true), 1}, {upper(i, 0.5, true), 0}};
  for (const auto& [atom, status] : atoms) EXPECT_EQ(s.get_atom_status(atom), status) << atom.value;
  // 0 all false, 2 unit, 1 satisfied, 3 open.
  const struct { std::vector<bound> atoms; u32 status; } clauses[] = {
      {{upper(x, 0, true), lower(x, 11)}, 0}, {{upper(x, 0, true), lower(x, 5)}, 2},
      {{lower(x, 0), lower(x, 5)}, 1}, {{lower(x, 3), upper(i, 4)}, 3}};
  for (const auto& [atoms, status] : clauses) EXPECT_EQ(s.get_dclause_status(s.add_dclause(atoms, false)), status);
  expect_fatal([&] { s.get_dlevel_of_bound(lower(x, 3)); }, "Unexpected case in get_dlevel_of_bound.");
  expect_fatal([&] { s.add_dclause({}, false); }, "Unexpected case in add_dclause.");
}

TEST(ClauseStatus, ClausesAddedUnderAPartialAssignmentBackjumpAndImply) {
  krait_solver s;
  const u32 a = s.define_float_var(0, 10), b = s.define_float_var(0, 10), c = s.define_float_var(0, 10),
            d = s.define_float_var(0, 10);
  ASSERT_FALSE(s.propagate());
  auto raise = [&](u32 v) {
    var_view view = s.view_of(v);
    s.assign_bound(v, true, false, 5, decision(), view);
  };
  for (u32 level = 1; level <= 5; ++level) {
    s.open_decision_level();
    if (level == 3) raise(b);
  }
  for (u32 v : {a, c, d}) raise(v);
  // All false at levels 5 and 3: back to 3, where the level-5 atom is asserted.
  s.add_dclause({upper(a, 4), upper(b, 4)}, false);
  ASSERT_EQ(s.pending_implications.size(), 1u);
  EXPECT_TRUE(s.backjump_level == 3 && s.pending_implications[0].level == 3);
  EXPECT_TRUE(bounds_equal(s.pending_implications[0].atom, upper(a, 4)));
  // Both false at level 5: one level below, where both are open again, and nothing asserted.
  s.backjump_pending = false;
  s.add_dclause({upper(c, 4), upper(d, 4)}, false);
  EXPECT_TRUE(s.backjump_level == 4 && s.pending_implications.size() == 1);
}

TEST(Deletion, DeletedDclausesArePurgedAndTheRecordsCompacted) {
  krait_solver s;
  const u32 y = s.define_float_var(0, 10), z = s.define_float_var(0, 10);
  const u32 a = s.add_dclause({lower(y, 1), lower(z, 1)}, false), b = s.add_dclause({lower(y, 2), lower(z, 2)}, true),
            c = s.add_dclause({lower(y, 3), lower(z, 3)}, false);
  s.delete_dclause(b);
  s.delete_dclause(a);
  s.purge_deleted_dclauses();
  EXPECT_TRUE(s.num_dclauses == 5 && s.num_learned == 0 && s.dclause_slot[a] == 0);
  EXPECT_TRUE(s.dclause_slot[c] == s.dclause_records.size() - 1 && s.dclause_at(c).atoms[0].value == 3);
  EXPECT_TRUE(s.vars[y].dclause_watches_lb.size() == 1 && s.vars[y].dclause_watches_lb[0].dclause == c);
}

// A watch list's walk meets exactly the entries a plain scan would (falsified atoms that are
// awake, in list order) through appends, swap removals, sleep and waking, and a purge.
TEST(WatchList, WalkMeetsWhatAPlainScanMeets) {
  std::mt19937_64 rng(2026);
  for (const bool lower_atoms : {true, false}) {
    watch_list list(lower_atoms);
    std::vector<dclause_watch> plain;
    std::vector<bool> asleep_of(1, false);  // by clause index
    const auto asleep = [&](const dclause_watch& w, std::size_t) { return static_cast<bool>(asleep_of[w.dclause]); };
    // Atoms at the reach itself are falsified only when strict, as on an integer variable.
    double reach = 0;
    const auto falsified = [&](bound a) { return a.value != reach || a.strict; };
    for (int step = 0; step < 20000; ++step) {
      const int op = static_cast<int>(rng() % 10);
      if (op < 4 || plain.empty()) {
        const dclause_watch w{static_cast<u32>(asleep_of.size()), 0, {1, lower_atoms, rng() % 2 == 0, double(rng() % 100)}};
        asleep_of.push_back(rng() % 4 == 0);
        list.push_back(w);
        plain.push_back(w);
      } else if (op < 6) {
        const std::size_t i = rng() % plain.size();
        list.remove_swapping_last(i);
        plain[i] = plain.back();
        plain.pop_back();
      } else if (op < 7) {
        // A sleeper wakes where a walk last met it; here anywhere, so every block is told.
        const u32 d = static_cast<u32>(rng() % asleep_of.size());
        if (asleep_of[d]) {
          asleep_of[d] = false;
          for (std::size_t i = 0; i < plain.size(); ++i)
            if (plain[i].dclause == d) list.wake(i, plain[i].atom.value);
        }
      } else if (op < 8 && step % 97 == 0) {
        const auto doomed = [](const dclause_watch& w) { return w.dclause % 5 == 0; };
        list.erase_if(doomed);
        std::erase_if(plain, doomed);
      } else {
        reach = double(rng() % 100);
        const std::size_t from = plain.empty() ? 0 : rng() % plain.size();
        std::size_t want = from;
        while (want < plain.size() &&
               (asleep_of[plain[want].dclause] || !falsified(plain[want].atom) ||
                (lower_atoms ? plain[want].atom.value < reach : plain[want].atom.value > reach)))
          ++want;
        ASSERT_EQ(list.next_candidate(from, reach, falsified, asleep), want) << step;
      }
      // Falling asleep happens whenever the visit's clause becomes a reason.
      if (rng() % 8 == 0) asleep_of[rng() % asleep_of.size()] = true;
    }
  }
}
