#include <gtest/gtest.h>

#include <string>

#include "hexpr/hexpr.hpp"
#include "parse_child.hpp"

namespace {

const std::string declarations = "DECL boole a, b, c, p, q, r; float [0, 1] x, y, z;\nEXPR\n";

std::string dump_of(const std::string& text) {
  const captured_run run = parse_in_child(text);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  return run.out;
}

std::string report(const char* problem, const char* token, int line) {
  return std::string("Error while parsing hexpr: ") + problem + "\n   at expr \"" + token + "\"\n   at line " +
         std::to_string(line) + "\n\n";
}

void expect_syntax_error(const std::string& text, const char* token, int line) {
  const captured_run run = parse_in_child(text);
  EXPECT_EQ(run.status, 1) << text;
  EXPECT_EQ(run.err, report("syntax error", token, line)) << text;
  EXPECT_EQ(run.out, "") << text;
}

}  // namespace

TEST(Parser, PrecedenceAndAssociativity) {
  const std::pair<const char*, const char*> cases[] = {
      {"a or b and c",
       "FORMULA\n|\n+-OR\n  |\n  +-VAR a\n  |\n  +-AND\n    |\n    +-VAR b\n    |\n    +-VAR c\n"},
      {"x + y * z ^ 2",
       "FORMULA\n|\n+-ADD\n  |\n  +-VAR x\n  |\n  +-MUL\n    |\n    +-VAR y\n    |\n    +-FUNCTION pow\n"
       "      |\n      +-VAR z\n      |\n      +-CONST 2\n"},
      {"-x ^ 2", "FORMULA\n|\n+-UMINUS\n  |\n  +-FUNCTION pow\n    |\n    +-VAR x\n    |\n    +-CONST 2\n"},
      {"x ^ 2 ^ 3",
       "FORMULA\n|\n+-FUNCTION pow\n  |\n  +-FUNCTION pow\n  | |\n  | +-VAR x\n  | |\n  | +-CONST 2\n"
       "  |\n  +-CONST 3\n"},
      {"not a = b", "FORMULA\n|\n+-EQU\n  |\n  +-NOT\n  | |\n  | +-VAR a\n  |\n  +-VAR b\n"},
      {"a < b = c",
       "FORMULA\n|\n+-EQU\n  |\n  +-LES\n  | |\n  | +-VAR a\n  | |\n  | +-VAR b\n  |\n  +-VAR c\n"},
      {"p impl q impl r",
       "FORMULA\n|\n+-IMP\n  |\n  +-IMP\n  | |\n  | +-VAR p\n  | |\n  | +-VAR q\n  |\n  +-VAR r\n"},
  };
  for (const auto& [formula, tree] : cases) EXPECT_EQ(dump_of(declarations + formula + ";"), tree) << formula;
}

TEST(Parser, NegatedConnectivesBracketsAndSectionsConjoined) {
  // nand, nor and nxor are negations of and, or and xor; unary plus leaves no node; all three
  // bracket kinds give the same node; the expressions of a section are conjoined.
  EXPECT_EQ(dump_of(declarations + "a nand b nor c;\n x' - - y >= [+x] * {x};"),
            "FORMULA\n|\n+-AND\n"
            "  |\n  +-NOT\n"
            "  | |\n  | +-OR\n"
            "  |   |\n  |   +-NOT\n"
            "  |   | |\n  |   | +-AND\n"
            "  |   |   |\n  |   |   +-VAR a\n"
            "  |   |   |\n  |   |   +-VAR b\n"
            "  |   |\n  |   +-VAR c\n"
            "  |\n  +-GEQ\n"
            "    |\n    +-SUB\n"
            "    | |\n    | +-VAR x'\n"
            "    | |\n    | +-UMINUS\n"
            "    |   |\n    |   +-VAR y\n"
            "    |\n    +-MUL\n"
            "      |\n      +-PARENTHESES\n"
            "      | |\n      | +-VAR x\n"
            "      |\n      +-PARENTHESES\n"
            "        |\n        +-VAR x\n");
}

TEST(Parser, CallsConstantsAndDeclarations) {
  // Names of constants become constant nodes, in expressions as in ranges.
  const captured_run run = parse_in_child(
      "DECL define n = 3; define on = true; define off = false; define m = - - n;\n"
      "  float [-m, n] x; static int [-n, 1.5e1] y, z; boole b;\n"
      "EXPR min(x, max(abs(y), n)) <-> on xor false -> true;",
      dump_with_symbols);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            "FORMULA\n|\n+-IMP\n"
            "  |\n  +-XOR\n"
            "  | |\n  | +-NOT\n"
            "  | | |\n  | | +-XOR\n"
            "  | |   |\n  | |   +-FUNCTION min\n"
            "  | |   | |\n  | |   | +-VAR x\n"
            "  | |   | |\n  | |   | +-FUNCTION max\n"
            "  | |   |   |\n  | |   |   +-FUNCTION abs\n"
            "  | |   |   | |\n  | |   |   | +-VAR y\n"
            "  | |   |   |\n  | |   |   +-CONST n = 3\n"
            "  | |   |\n  | |   +-CONST on = 1\n"
            "  | |\n  | +-CONST false = 0\n"
            "  |\n  +-CONST true = 1\n"
            "b [0, 1] int\nx [-3, 3] float\ny [-3, 15] int static\nz [-3, 15] int static\n"
            "m = 3\nn = 3\noff = 0\non = 1\n");
}

TEST(Parser, TransitionSystem) {
  const char* text =
      "-- a small transition system\n"
      "DECL\n"
      "  define n = 3;\n"
      "  float [-10, 10] x, y;\n"
      "  int [0, n] k;\n"
      "  boole b;\n"
      "  static float [0, 1] s;\n"
      "INIT\n"
      "  x = 0;\n"
      "  k = 0;\n"
      "  not b;\n"
      "TRANS\n"
      "  x' = x + 1;\n"
      "  b' -> k' = k + 1;\n"
      "  y' = 2 * x ^ 2 - y;\n"
      "  (s' = s);\n"
      "TARGET\n"
      "  x >= n and k <= 2;\n";
  const captured_run run = parse_in_child(text, dump_with_symbols);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            "PROOF_SPEC\n"
            "|\n+-AND\n"
            "| |\n| +-AND\n"
            "| | |\n| | +-EQU\n"
            "| | | |\n| | | +-VAR x\n"
            "| | | |\n| | | +-CONST 0\n"
            "| | |\n| | +-EQU\n"
            "| |   |\n| |   +-VAR k\n"
            "| |   |\n| |   +-CONST 0\n"
            "| |\n| +-NOT\n"
            "|   |\n|   +-VAR b\n"
            "|\n+-AND\n"
            "| |\n| +-AND\n"
            "| | |\n| | +-AND\n"
            "| | | |\n| | | +-EQU\n"
            "| | | | |\n| | | | +-VAR x'\n"
            "| | | | |\n| | | | +-ADD\n"
            "| | | |   |\n| | | |   +-VAR x\n"
            "| | | |   |\n| | | |   +-CONST 1\n"
            "| | | |\n| | | +-IMP\n"
            "| | |   |\n| | |   +-VAR b'\n"
            "| | |   |\n| | |   +-EQU\n"
            "| | |     |\n| | |     +-VAR k'\n"
            "| | |     |\n| | |     +-ADD\n"
            "| | |       |\n| | |       +-VAR k\n"
            "| | |       |\n| | |       +-CONST 1\n"
            "| | |\n| | +-EQU\n"
            "| |   |\n| |   +-VAR y'\n"
            "| |   |\n| |   +-SUB\n"
            "| |     |\n| |     +-MUL\n"
            "| |     | |\n| |     | +-CONST 2\n"
            "| |     | |\n| |     | +-FUNCTION pow\n"
            "| |     |   |\n| |     |   +-VAR x\n"
            "| |     |   |\n| |     |   +-CONST 2\n"
            "| |     |\n| |     +-VAR y\n"
            "| |\n| +-PARENTHESES\n"
            "|   |\n|   +-EQU\n"
            "|     |\n|     +-VAR s'\n"
            "|     |\n|     +-VAR s\n"
            "|\n+-AND\n"
            "  |\n  +-GEQ\n"
            "  | |\n  | +-VAR x\n"
            "  | |\n  | +-CONST n = 3\n"
            "  |\n  +-LEQ\n"
            "    |\n    +-VAR k\n"
            "    |\n    +-CONST 2\n"
            "b [0, 1] int\nk [0, 3] int\ns [0, 1] float static\nx [-10, 10] float\ny [-10, 10] float\n"
            "n = 3\n");
}

TEST(Parser, SyntaxErrorsReportTheLookaheadAndItsLine) {
  expect_syntax_error("DECL float [0, 1] x;\nEXPR\n  x / 2 < 1;\n", "/", 3);
  expect_syntax_error("DECL float [0, 1] x;\nEXPR x div 2 < 1;\n", "div", 2);
  expect_syntax_error("DECL float [0, inf] x;\nEXPR x;\n", "inf", 1);
  expect_syntax_error("DECL boole b;\nEXPR if b then b fi;\n", "if", 2);
  // Missing sections and trailing tokens are found at the end of input or at the extra token.
  expect_syntax_error("DECL boole b;\nEXPR\n", "", 3);
  expect_syntax_error("DECL boole b;\nINIT b;\n-- no target\nTRANS b';", "", 4);
  expect_syntax_error("DECL boole b;\nEXPR b;\nEXPR b;\n", "EXPR", 3);
  expect_syntax_error("DECL boole b;\nEXPR b\n  b;\n", "b", 3);
  expect_syntax_error("DECL boole b;\nEXPR b;\n\n)", ")", 4);
  expect_syntax_error("DECL boole b;\nEXPR b\n", "", 3);  // every expression ends with ";"
  expect_syntax_error("DECL boole b;\nEXPR max(b, (b);\n", ";", 2);
  expect_syntax_error("DECL\nEXPR b;\n", "EXPR", 2);  // a section needs a declaration
}

TEST(Parser, StackGrowsToItsLimitThenReportsMemoryExhausted) {
  const std::string head = "DECL boole b;\nEXPR\n";
  const auto nested = [&](int depth) { return head + std::string(depth, '(') + "b" + std::string(depth, ')') + ";\n"; };
  const captured_run deep = parse_in_child(nested(9000), [](hexpr*) {});
  EXPECT_EQ(deep.status, 0) << deep.err;

  const captured_run too_deep = parse_in_child(nested(10000));
  EXPECT_EQ(too_deep.status, 1);
  EXPECT_EQ(too_deep.err, report("memory exhausted", "(", 3));
  EXPECT_EQ(too_deep.out, "");
}

TEST(Parser, UndefinedConstantsAndBadCallsAreFatal) {
  expect_fatal("DECL float [0, d] x;\nEXPR x;", "Symbolic constant 'd' not defined.");
  expect_fatal("DECL define e = f;\nEXPR true;", "Symbolic constant 'f' not defined.");
  expect_fatal(declarations + "max(a, b, c);", "Can't add a third subexpression to function 'max'.");
  expect_fatal(declarations + "sqrt(x) < 1;", "Unknown function 'sqrt'.");
  expect_fatal(declarations + "x ^ y < 1;", "Exponent of power operator must be a constant value.");
  expect_fatal(declarations + "x ^ -2 < 1;", "Exponent of power operator must be a constant value.");
  expect_fatal(declarations + "nrt(x, 1) < 1;", "Root operator requires an integer greater equal two as exponent.");
}
