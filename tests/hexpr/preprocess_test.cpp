#include <gtest/gtest.h>

#include <iostream>
#include <string>

#include "hexpr/hexpr_nodes.hpp"
#include "hexpr/preprocess.hpp"
#include "lang/parse_child.hpp"

namespace {

const std::string declarations =
    "DECL boole p, q, P, p1, p_1; float [-10, 10] a, b, x, y;\nEXPR\n";

// The dump of the prepared formula below its root; constants with all the digits they need.
std::string prepared(const std::string& formula) {
  const captured_run run = parse_in_child(declarations + formula + ";\n", [](hexpr* root) {
    std::cout.precision(17);
    (*static_cast<hexpr_inner_node*>(prepare_hexpr(root))->subexprs_begin())->print_hexpr("", std::cout);
  });
  EXPECT_EQ(run.status, 0) << formula << run.err;
  return run.out;
}

const std::string is_true = "CONST true = 1\n", is_false = "CONST false = 0\n";

// x <= 2 with its linear form.
const std::string x_at_most_2 =
    "CONSTRAINT\n|\n+-LEQ\n| |\n| +-VAR x\n| |\n| +-CONST 2\n"
    "|\n+-LEQ\n  |\n  +-LINTERM\n  | |\n  | +-(1 * VAR x)\n  |\n  +-CONST 2\n";

}  // namespace

TEST(Preprocess, RelationsCompareAnExpressionWithAConstant) {
  // Constants gather on the right; variables stay in key order.
  EXPECT_EQ(prepared("y + 1 + x + 2 < 10"),
            "CONSTRAINT\n|\n+-LES\n| |\n| +-ADD\n| | |\n| | +-VAR x\n| | |\n| | +-VAR y\n| |\n| +-CONST 7\n"
            "|\n+-LES\n  |\n  +-LINTERM\n  | |\n  | +-(1 * VAR x)\n  | |\n  | +-(1 * VAR y)\n  |\n  +-CONST 7\n");
  // A constant factor is divided out; a negative one mirrors the relation.
  const std::string x_at_most_minus_2 =
      "CONSTRAINT\n|\n+-LEQ\n| |\n| +-VAR x\n| |\n| +-CONST -2\n"
      "|\n+-LEQ\n  |\n  +-LINTERM\n  | |\n  | +-(1 * VAR x)\n  |\n  +-CONST -2\n";
  for (const char* formula : {"-2 * x >= 4", "x * -2 >= 4", "-(2 * x) >= 4", "4 <= -2 * x"})
    EXPECT_EQ(prepared(formula), x_at_most_minus_2) << formula;

  const std::pair<const char*, std::string> folded[] = {
      {"x - x <= 3", is_true}, {"x - x > 3", is_false}, {"x - x >= 0", is_true}, {"x - x < 0", is_false},
      {"2 <= 2", is_true},     {"2 > 2", is_false},     {"3 = 3", is_true},      {"3 != 3", is_false},
      {"2 * 3 = 5", is_false}, {"0 * x > -1", is_true},
  };
  for (const auto& [formula, dump] : folded) EXPECT_EQ(prepared(formula), dump) << formula;
}

TEST(Preprocess, EqualitiesSplitIntoTwoInequalities) {
  const std::string x_is_3 =
      "AND\n"
      "|\n+-CONSTRAINT\n| |\n| +-LEQ\n| | |\n| | +-VAR x\n| | |\n| | +-CONST 3\n"
      "| |\n| +-LEQ\n|   |\n|   +-LINTERM\n|   | |\n|   | +-(1 * VAR x)\n|   |\n|   +-CONST 3\n"
      "|\n+-CONSTRAINT\n  |\n  +-GEQ\n  | |\n  | +-VAR x\n  | |\n  | +-CONST 3\n"
      "  |\n  +-GEQ\n    |\n    +-LINTERM\n    | |\n    | +-(1 * VAR x)\n    |\n    +-CONST 3\n";
  for (const char* formula : {"x = 3", "3 = x", "2 * x = 6", "-2 * x = -6"}) EXPECT_EQ(prepared(formula), x_is_3) << formula;
  EXPECT_EQ(prepared("x != 3"),
            "OR\n"
            "|\n+-CONSTRAINT\n| |\n| +-LES\n| | |\n| | +-VAR x\n| | |\n| | +-CONST 3\n"
            "| |\n| +-LES\n|   |\n|   +-LINTERM\n|   | |\n|   | +-(1 * VAR x)\n|   |\n|   +-CONST 3\n"
            "|\n+-CONSTRAINT\n  |\n  +-GRE\n  | |\n  | +-VAR x\n  | |\n  | +-CONST 3\n"
            "  |\n  +-GRE\n    |\n    +-LINTERM\n    | |\n    | +-(1 * VAR x)\n    |\n    +-CONST 3\n");
}

TEST(Preprocess, SumsAndProductsAreFlattenedSortedAndBinarised) {
  // Linear parts by key after the other terms; chains of more than two nest to the left, while
  // the linear form keeps one term per variable.
  EXPECT_EQ(prepared("2 * x - 3 * y + b + a >= 1"),
            "CONSTRAINT\n"
            "|\n+-GEQ\n"
            "| |\n| +-ADD\n"
            "| | |\n| | +-ADD\n"
            "| | | |\n| | | +-ADD\n"
            "| | | | |\n| | | | +-VAR a\n"
            "| | | | |\n| | | | +-VAR b\n"
            "| | | |\n| | | +-MUL\n"
            "| | |   |\n| | |   +-VAR x\n"
            "| | |   |\n| | |   +-CONST 2\n"
            "| | |\n| | +-MUL\n"
            "| |   |\n| |   +-VAR y\n"
            "| |   |\n| |   +-CONST -3\n"
            "| |\n| +-CONST 1\n"
            "|\n+-GEQ\n"
            "  |\n  +-LINTERM\n"
            "  | |\n  | +-(1 * VAR a)\n  | |\n  | +-(1 * VAR b)\n  | |\n  | +-(2 * VAR x)\n  | |\n  | +-(-3 * VAR y)\n"
            "  |\n  +-CONST 1\n");
  // Repeated factors stay; x' sorts after x.
  EXPECT_EQ(prepared("x' * y * a * x * x' * 2 <= 4"),
            "CONSTRAINT\n|\n+-LEQ\n"
            "  |\n  +-MUL\n"
            "  | |\n  | +-MUL\n"
            "  | | |\n  | | +-MUL\n"
            "  | | | |\n  | | | +-MUL\n"
            "  | | | | |\n  | | | | +-VAR a\n"
            "  | | | | |\n  | | | | +-VAR x\n"
            "  | | | |\n  | | | +-VAR x'\n"
            "  | | |\n  | | +-VAR x'\n"
            "  | |\n  | +-VAR y\n"
            "  |\n  +-CONST 2\n");
  // Products of sums are multiplied out, each product sorted, then folded like any sum.
  EXPECT_EQ(prepared("(y + 2) * (x + 3) >= 0"),
            "CONSTRAINT\n|\n+-GEQ\n"
            "  |\n  +-ADD\n"
            "  | |\n  | +-ADD\n"
            "  | | |\n  | | +-MUL\n"
            "  | | | |\n  | | | +-VAR x\n"
            "  | | | |\n  | | | +-VAR y\n"
            "  | | |\n  | | +-MUL\n"
            "  | |   |\n  | |   +-VAR x\n"
            "  | |   |\n  | |   +-CONST 2\n"
            "  | |\n  | +-MUL\n"
            "  |   |\n  |   +-VAR y\n"
            "  |   |\n  |   +-CONST 3\n"
            "  |\n  +-CONST -6\n");
}

TEST(Preprocess, ConnectivesKeepEachLiteralOnceInKeyOrder) {
  // Byte order of keys: upper case first, the quote before digits and the underscore.
  EXPECT_EQ(prepared("p_1 or p' or P or (p1 or p) or p"),
            "OR\n|\n+-VAR P\n|\n+-VAR p\n|\n+-VAR p'\n|\n+-VAR p1\n|\n+-VAR p_1\n");
  EXPECT_EQ(prepared("q or not p' or p"), "OR\n|\n+-VAR p\n|\n+-NOT\n| |\n| +-VAR p'\n|\n+-VAR q\n");
  // Other children come first, in their order.
  EXPECT_EQ(prepared("p and x >= 1"),
            "AND\n|\n+-CONSTRAINT\n| |\n| +-GEQ\n| | |\n| | +-VAR x\n| | |\n| | +-CONST 1\n"
            "| |\n| +-GEQ\n|   |\n|   +-LINTERM\n|   | |\n|   | +-(1 * VAR x)\n|   |\n|   +-CONST 1\n"
            "|\n+-VAR p\n");
  const std::string or_of_both = "OR\n|\n+-VAR p\n|\n+-VAR q\n";
  const std::pair<const char*, std::string> cases[] = {
      {"p or not p", is_true},      {"p and not p", is_false},     {"not p or q or p", is_true},
      {"true and p", "VAR p\n"},    {"false or p", "VAR p\n"},     {"p and true and p", "VAR p\n"},
      {"true or p", is_true},       {"p and false", is_false},     {"false or false", is_false},
      {"true and true", is_true},   {"p or p'", "OR\n|\n+-VAR p\n|\n+-VAR p'\n"},
      {"q or false or p", or_of_both},
      // Implication and exclusive or are rewritten into the other connectives.
      {"p -> q", "OR\n|\n+-NOT\n| |\n| +-VAR p\n|\n+-VAR q\n"},
      {"p xor q", "AND\n|\n+-OR\n| |\n| +-VAR p\n| |\n| +-VAR q\n"
                  "|\n+-OR\n  |\n  +-NOT\n  | |\n  | +-VAR p\n  |\n  +-NOT\n    |\n    +-VAR q\n"},
      {"p -> p", is_true},          {"p xor p", is_false},
  };
  for (const auto& [formula, dump] : cases) EXPECT_EQ(prepared(formula), dump) << formula;

  // The parser writes equivalence as a negated xor, so this one is built by hand.
  const captured_run nxor = run_captured([] {
    const hexpr* both = preprocess_hexpr(new hexpr_nxor(new hexpr_var("p"), new hexpr_var("q")));
    both->print_hexpr("", std::cout);
    delete both;
  });
  EXPECT_EQ(nxor.out, "AND\n|\n+-OR\n| |\n| +-NOT\n| | |\n| | +-VAR p\n| |\n| +-VAR q\n"
                      "|\n+-OR\n  |\n  +-VAR p\n  |\n  +-NOT\n    |\n    +-VAR q\n");
}

TEST(Preprocess, FunctionsOfConstantsFold) {
  EXPECT_EQ(prepared("sin(x) <= 1"),
            "CONSTRAINT\n|\n+-LEQ\n"
            "  |\n  +-FUNCTION cos\n"
            "  | |\n  | +-ADD\n  |   |\n  |   +-VAR x\n  |   |\n  |   +-CONST -1.5707963267948966\n"
            "  |\n  +-CONST 1\n");
  EXPECT_EQ(prepared("exp(1) * x <= 2"),
            "CONSTRAINT\n|\n+-LEQ\n"
            "  |\n  +-MUL\n  | |\n  | +-FUNCTION exp\n  | | |\n  | | +-CONST 1\n  | |\n  | +-VAR x\n"
            "  |\n  +-CONST 2\n");
  EXPECT_EQ(prepared("x <= 2"), x_at_most_2);
  for (const char* formula : {"exp(0) * x <= 2", "abs(-4) * x <= 8", "min(5, 4) * x <= 8", "max(1, 4) * x <= 8",
                              "2 ^ 2 * x <= 8", "nrt(16, 2) * x <= 8", "x ^ 1 <= 2", "abs(x - x + 2) * x <= 4"})
    EXPECT_EQ(prepared(formula), x_at_most_2) << formula;
  EXPECT_EQ(prepared("x ^ 0 <= 2"), is_true);
  EXPECT_NE(prepared("cos(0) * x <= 2").find("+-FUNCTION cos\n"), std::string::npos);
  // Powers and roots of constants fold only to exact values: the others stay for the solver,
  // whose narrowing encloses the true value.
  for (const char* formula : {"nrt(64, 3) * x <= 8", "nrt(-8, 3) * x >= -4", "nrt(4294967296, 32) * x <= 4",
                              "pow(-0.5, 3) * x >= -0.25", "pow(2, 0) * x <= 2", "nrt(0, 4) + x <= 2"})
    EXPECT_EQ(prepared(formula), x_at_most_2) << formula;
  for (const char* formula : {"nrt(2, 2) * x <= 2", "nrt(-8, 2) * x <= 2", "pow(1.1, 3) * x <= 2", "pow(10, 400) * x <= 2",
                              "pow(1e-200, 2) * x <= 2", "nrt(27.000000000000004, 3) * x <= 2"}) {
    const std::string dump = prepared(formula);
    EXPECT_TRUE(dump.find("+-FUNCTION pow\n") != std::string::npos || dump.find("+-FUNCTION nrt\n") != std::string::npos)
        << formula << dump;
  }
}

TEST(Preprocess, FatalInputs) {
  const std::pair<const char*, const char*> cases[] = {
      {"min(x) <= 1", "Operator 'min' requires two arguments."},
      {"max(x) <= 1", "Operator 'max' requires two arguments."},
      {"pow(x) <= 1", "Operator 'pow' requires two arguments."},
      {"nrt(x) <= 1", "Operator 'nrt' requires two arguments."},
      {"2 or p", "Constant value '2.000000' appears as subexpression of a Boolean operator."},
      {"p and 0.5", "Constant value '0.500000' appears as subexpression of a Boolean operator."},
  };
  for (const auto& [formula, message] : cases) {
    const captured_run run = parse_in_child(declarations + formula + ";\n", [](hexpr* root) { prepare_hexpr(root); });
    EXPECT_EQ(run.status, 1) << formula;
    EXPECT_EQ(run.err, std::string("\nError: ") + message + "\n") << formula;
  }
}
