#include <gtest/gtest.h>

#include <sstream>

#include "hexpr/hexpr_nodes.hpp"
#include "support/capture.hpp"

namespace {

// A node whose kind is not in the table.
struct stray : hexpr {
  hexpr_kind get_opname() const override { return static_cast<hexpr_kind>(99); }
};

}  // namespace

TEST(TreeDump, NamesDataAndConnectors) {
  auto* term = new hexpr_linterm;
  term->add_term(1.0, new hexpr_var("x"));
  term->add_term(-2.5, new hexpr_var("y'"));
  auto* product = new hexpr_mul;
  product->add_subexpr(new hexpr_var("y'"));
  product->add_subexpr(new hexpr_const(-2.5, ""));
  auto* sum = new hexpr_add(new hexpr_var("x"), product);
  const hexpr_constraint constraint(new hexpr_leq(sum, new hexpr_const(7, "n")),
                                    new hexpr_leq(term, new hexpr_const(1, "true")));
  std::ostringstream out;
  constraint.print_hexpr("", out);
  EXPECT_EQ(out.str(),
            "CONSTRAINT\n"
            "|\n+-LEQ\n"
            "| |\n| +-ADD\n"
            "| | |\n| | +-VAR x\n"
            "| | |\n| | +-MUL\n"
            "| |   |\n| |   +-VAR y'\n"
            "| |   |\n| |   +-CONST -2.5\n"
            "| |\n| +-CONST n = 7\n"
            "|\n+-LEQ\n"
            "  |\n  +-LINTERM\n"
            "  | |\n  | +-(1 * VAR x)\n"
            "  | |\n  | +-(-2.5 * VAR y')\n"
            "  |\n  +-CONST true = 1\n");

  std::ostringstream names;
  hexpr().print_hexpr("", names);
  hexpr_function("nrt").print_hexpr_opname("+-", names);
  EXPECT_EQ(names.str(), "INVALID\n+-FUNCTION nrt");
}

TEST(TreeDump, UnknownKindIsFatal) {
  const captured_run run = run_captured([] {
    std::ostringstream out;
    stray().print_hexpr("", out);
  });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "\nError: Unexpected case value 99 in hexpr::print_hexpr_opname.\n");
}
