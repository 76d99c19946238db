// The settings and statistics blocks, line by line.
#include <gtest/gtest.h>

#include "support/capture.hpp"
#include "test_solver.hpp"

TEST(Report, SettingsBlockForDefaultsAndGivenSettings) {
  const captured_run defaults = run_captured([] { krait_solver().print_settings("    "); });
  EXPECT_EQ(defaults.out,
            "    min_split_width : 0.1\n"
            "    min_bound_delta : 0.01\n"
            "    var_order       : standard\n"
            "    reuse           : no\n"
            "    shifting        : no\n"
            "    restarts        : no\n");
  const captured_run given = run_captured([] {
    krait_solver s;
    s.set_min_split_width(0.001);
    s.set_min_bound_delta(0.0);
    s.set_var_order(9);
    s.set_reuse(true);
    s.set_shifting(true);
    s.set_restarts(true);
    s.set_a_init(100);
    s.set_b_init(1000);
    s.set_f_a(1.5);
    s.set_f_b(2);
    s.print_settings(">");
    s.set_var_order(5);
    s.set_restarts(false);  // the values stay, the line says no
    s.print_settings("");
  });
  EXPECT_EQ(given.out,
            ">min_split_width : 0.001\n"
            ">min_bound_delta : 0\n"
            ">var_order       : shuffle\n"
            ">reuse           : yes\n"
            ">shifting        : yes\n"
            ">restarts        : yes, (a_init, b_init, f_a, f_b) = (100, 1000, 1.5, 2)\n"
            "min_split_width : 0.001\n"
            "min_bound_delta : 0\n"
            "var_order       : bmc fwd, bv first\n"
            "reuse           : yes\n"
            "shifting        : yes\n"
            "restarts        : no\n");
  const captured_run negative = run_captured([] { krait_solver().set_min_bound_delta(-1e-9); });
  EXPECT_EQ(negative.status, 1);
  EXPECT_EQ(negative.err, "\nError: Invalid argument to set_min_bound_delta.\n");
}

TEST(Report, StatisticsBlockPairsPerSearchValuesWithTotals) {
  const captured_run fresh = run_captured([] { krait_solver().print_statistics("    "); });
  EXPECT_EQ(fresh.out,
            "    num variables    : 0 (B: 0, I: 0, F: 0, C: 0)\n"
            "    num dclauses     : 0 (L: 0, R: 0, T: 0, C: 0, O: 0)\n"
            "    num tclauses     : 0\n"
            "    num assignments  : 0 / 0\n"
            "    num ineffective  : 0 / 0\n"
            "    num decisions    : 0 / 0\n"
            "    num conflicts    : 0 / 0\n"
            "    num restarts     : 0 / 0\n"
            "    max backjump     : 0 / 0\n"
            "    max dlevel       : 0 / 0\n"
            "    max dlevel depth : 0 / 0\n"
            "    time solver      : 0 / 0\n");
  const captured_run counted = run_captured([] {
    krait_solver s;
    s.define_int_var(0, 1);
    s.define_float_var(2, 2);
    s.define_float_var(0, 1234567);
    s.num_reused = 4;
    s.num_conflicts = 3;
    s.tot_conflicts = 10;
    s.max_dlevel = 7;
    s.tot_max_dlevel = 9;
    s.time_solver = 0.25;
    s.tot_time_solver = 1234.5678;
    s.print_statistics("");
  });
  EXPECT_EQ(counted.out,
            "num variables    : 3 (B: 1, I: 1, F: 1, C: 1)\n"
            "num dclauses     : 6 (L: 0, R: 4, T: 0, C: 0, O: 0)\n"
            "num tclauses     : 0\n"
            "num assignments  : 0 / 0\n"
            "num ineffective  : 0 / 0\n"
            "num decisions    : 0 / 0\n"
            "num conflicts    : 3 / 10\n"
            "num restarts     : 0 / 0\n"
            "max backjump     : 0 / 0\n"
            "max dlevel       : 7 / 9\n"
            "max dlevel depth : 0 / 0\n"
            "time solver      : 0.25 / 1234.57\n");
}

TEST(Report, DumpsUseTheSharedNotation) {
  const captured_run run = run_captured([] {
    krait_solver s;
    s.dump_dclauses("");
    s.dump_tclauses("");
    s.dump_variables("");
    s.dump_implication_queue("");
    const u32 x = s.define_float_var(0, 4), y = s.define_int_var(0, 1);
    s.set_translation_phase(2);
    s.add_tclause(KRAIT_PRODUCT, x, y, 0);
    s.add_dclause({{x, true, true, 1.5}, {y, false, false, 0}, {x, false, false, 3}}, false);
    s.set_translation_phase(0);
    s.dump_dclause(5, "# ");
    s.dump_dclauses("# ");
    s.dump_tclauses("# ");
    s.dump_pending_implications("# ");
  });
  EXPECT_EQ(run.out,
            "(no disjunctive clauses)\n(no triplet clauses)\n(no variables)\n(no entries in implication queue)\n"
            "# DC_5 [ T ]: V_1 > 1.5 or V_2 <= 0 or V_1 <= 3\n"
            "# DC_1: [[V_1 >= 0]]\n# DC_2: [[V_1 <= 4]]\n# DC_3: [[V_2 >= 0]]\n# DC_4: [[V_2 <= 1]]\n"
            "# DC_5 [ T ]: [[V_1 > 1.5]] or [[V_2 <= 0]] or (V_1 <= 3)\n"
            "# TC_1 [ T ]: V_3 = V_1 * V_2\n"
            "# PI_0: dl = 0, V_1 >= 0\n# PI_1: dl = 0, V_1 <= 4\n# PI_2: dl = 0, V_2 >= 0\n# PI_3: dl = 0, V_2 <= 1\n");
  const captured_run bad = run_captured([] { krait_solver().dump_dclause(3, ""); });
  EXPECT_EQ(bad.err, "\nError: Passed invalid argument to dump_dclause.\n");
}
