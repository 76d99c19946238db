// The bmc variable orders rank variables by the unwinding step they belong to.
#include <gtest/gtest.h>

#include <iostream>

#include "hexpr/hexpr_nodes.hpp"
#include "hexpr/translate.hpp"
#include "solver/solver.hpp"
#include "support/capture.hpp"

TEST(OrderKeys, InstancesAreKeyedByTheirStepAuxiliariesByTheTranslatedOne) {
  // The symbol table is process-wide: work on it in a child.
  const captured_run run = run_captured([] {
    krait_solver s;
    symtab.new_frame();
    symtab.declare_variable(new hexpr_symobj("x", 0, 10, false, false));
    // x * x' translated for the transition from step 2 to step 3.
    hexpr* product = new hexpr_mul(new hexpr_var("x"), new hexpr_var("x'"));
    s.order_key_counter = 2;
    translation_phase = 2;
    product->hexpr2krait(s, 2, 1);
    translation_phase = 0;
    for (u32 v = 1; v < s.vars.size(); ++v) std::cout << s.vars[v].order_key << " ";
    for (const u32 order : {3u, 4u}) {
      s.var_order = order;
      s.init_var_order();
      std::cout << "|";
      for (std::size_t i = 1; i < s.var_order_list.size(); ++i) std::cout << " V_" << s.var_order_list[i].var;
    }
    symtab.delete_last_frame();
    delete product;
  });
  EXPECT_EQ(run.err, "");
  // x gets instances 0 to 3 (V_1 to V_4), the product V_5 the step being translated.
  EXPECT_EQ(run.out, "0 1 2 3 2 | V_1 V_2 V_3 V_5 V_4| V_4 V_3 V_5 V_2 V_1");
}
