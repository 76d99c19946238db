#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "lang/symtab.hpp"
#include "solver/solver.hpp"

TEST(SymbolTable, SolutionEntriesInNameOrder) {
  krait_solver s;
  hexpr_symtab table;
  table.new_frame();
  // A record with one solver variable per [lower, upper, lower is strict] triple; NaN is no bound.
  const auto declare = [&](const char* name, double upper, bool is_int, bool is_static, std::vector<double> ends) {
    auto* r = new hexpr_symobj(name, 0, upper, is_int, is_static, name[0] == '$');
    for (std::size_t i = 0; i < ends.size(); i += 3) {
      r->instances.push_back(static_cast<int>(++s.num_variables));
      s.resize_vars(s.num_variables + 1);
      bool strict[] = {ends[i + 2] != 0, false};
      for (int end : {0, 1})
        if (!std::isnan(ends[i + end])) s.push_bound(s.num_variables, end == 0, strict[end], ends[i + end], origin{});
    }
    table.declare_variable(r);
  };
  declare("k", 5, true, true, {2, 3, 0});
  declare("b", 1, true, false, {1, 1, 0});
  declare("s", 1, false, true, {});
  declare("X", 1, false, false, {0.1, 2, 1, NAN, NAN, 0});
  declare("$V_7", 7, true, true, {7, 7, 0});
  const std::string visible =
      "    X (float): \n        @0: ]0.10000000000000000555, 2]\n        @1: ]-inf, +inf[\n\n"
      "    b (boole): \n        @0: [1, 1]\n\n    k (static int): \n        @0: [2, 3]\n\n"
      "    s (static float): declared in symtab but not used\n\n";
  std::ostringstream out, all;
  table.print_solution(s, out, true);
  out << 0.25 / 3;  // the precision stays on the stream
  EXPECT_EQ(out.str(), visible + "0.083333333333333328707");
  table.print_solution(s, all, false);
  EXPECT_EQ(all.str(), "    $V_7 (static int): \n        @0: [7, 7]\n\n" + visible);
}
