// The settings and statistics blocks line by line, and the notation of the dumps.
#include "test_solver.hpp"

using namespace test_solver;

TEST(Report, SettingsAndStatisticsBlocks) {
  krait_solver s;
  s.min_split_width = 0.001, s.min_bound_delta = 0, s.var_order = 9, s.reuse = s.shifting = s.restarts = true;
  s.a_init = 100, s.b_init = 1000, s.f_a = 1.5, s.f_b = 2;
  s.define_int_var(0, 1);
  s.define_float_var(2, 2);
  s.make_tclause(KRAIT_EXP, 2, 0, 0);
  s.num_learned = 6, s.num_reused = 4, s.num_templates = 3, s.num_shifted_copies = 2, s.num_other_learned = 1;
  s.num_assignments = 11, s.tot_assignments = 12, s.num_ineffective = 21, s.tot_ineffective = 22;
  s.num_decisions = 31, s.tot_decisions = 32, s.num_conflicts = 41, s.tot_conflicts = 42;
  s.num_restarts = 51, s.tot_restarts = 52, s.max_backjump = 61, s.tot_max_backjump = 62;
  s.max_dlevel = 71, s.tot_max_dlevel = 72, s.max_dlevel_depth = 81, s.tot_max_dlevel_depth = 82;
  s.time_solver = 0.25, s.tot_time_solver = 1234.5678;
  captured_cout out;
  s.print_settings(">");
  s.print_statistics("  ");
  EXPECT_EQ(out.text.str(),
            ">min_split_width : 0.001\n>min_bound_delta : 0\n>var_order       : shuffle\n>reuse           : yes\n"
            ">shifting        : yes\n>restarts        : yes, (a_init, b_init, f_a, f_b) = (100, 1000, 1.5, 2)\n"
            "  num variables    : 3 (B: 1, I: 1, F: 1, C: 1)\n"
            "  num dclauses     : 5 (L: 6, R: 4, T: 3, C: 2, O: 1)\n"
            "  num tclauses     : 1\n"
            "  num assignments  : 11 / 12\n"
            "  num ineffective  : 21 / 22\n"
            "  num decisions    : 31 / 32\n"
            "  num conflicts    : 41 / 42\n"
            "  num restarts     : 51 / 52\n"
            "  max backjump     : 61 / 62\n"
            "  max dlevel       : 71 / 72\n"
            "  max dlevel depth : 81 / 82\n"
            "  time solver      : 0.25 / 1234.57\n");
}

TEST(Report, DumpsUseTheSharedNotation) {
  krait_solver s;
  captured_cout out;
  for (auto dump : {&krait_solver::dump_dclauses, &krait_solver::dump_tclauses, &krait_solver::dump_variables,
                    &krait_solver::dump_implication_queue})
    (s.*dump)("");
  const u32 x = s.define_float_var(0, 4), y = s.define_int_var(0, 1);
  s.set_translation_phase(2);
  s.add_tclause(KRAIT_PRODUCT, x, y, 0);
  s.add_tclause(KRAIT_POW, x, 0, 3);
  s.add_dclause({lower(x, 1.5, true), upper(y, 0), upper(x, 3)}, false);
  s.learn_dclause({lower(x, 1), upper(y, 0, true)}, KRAIT_PART_INIT | KRAIT_PART_TARGET);
  s.dump_dclause(5, "# ");
  s.dump_dclauses("# ");
  s.dump_tclauses("# ");
  s.dump_pending_implications("# ");
  EXPECT_EQ(out.text.str(),
            "(no disjunctive clauses)\n(no triplet clauses)\n(no variables)\n(no entries in implication queue)\n"
            "# DC_5 [ T ]: V_1 > 1.5 or V_2 <= 0 or V_1 <= 3\n"
            "# DC_1: [[V_1 >= 0]]\n# DC_2: [[V_1 <= 4]]\n# DC_3: [[V_2 >= 0]]\n# DC_4: [[V_2 <= 1]]\n"
            "# DC_5 [ T ]: [[V_1 > 1.5]] or [[V_2 <= 0]] or (V_1 <= 3)\n"
            "# DC_6 (L) [I P]: [[V_1 >= 1]] or [[V_2 < 0]]\n"
            "# TC_1 [ T ]: V_3 = V_1 * V_2\n# TC_2 [ T ]: V_4 = pow(V_1, 3)\n"
            "# PI_0: dl = 0, V_1 >= 0\n# PI_1: dl = 0, V_1 <= 4\n# PI_2: dl = 0, V_2 >= 0\n# PI_3: dl = 0, V_2 <= 1\n");
  expect_fatal([] { krait_solver().dump_dclause(3, ""); }, "Passed invalid argument to dump_dclause.");
}
