#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "base/error.hpp"
#include "hexpr.tab.hpp"
#include "parse_child.hpp"
#include "solver/solver.hpp"

namespace {

// The tokens of a scan, one word each: an identifier's name, a number as #value, any other
// token as its code. `lines` receives the line count after each token.
std::string scan(const std::string& text, std::vector<int>* lines = nullptr) {
  YY_BUFFER_STATE buffer = krait_hexpr__scan_string(text.c_str());
  const int first_line = krait_hexpr_lineno;
  std::ostringstream words;
  for (int code; (code = krait_hexpr_lex()) != 0;) {
    if (code == t_ID) words << *krait_hexpr_lval.str << ' ';
    else if (code == t_CONST) words << '#' << krait_hexpr_lval.literal.value << ' ';
    else words << code << ' ';
    if (code == t_ID) delete krait_hexpr_lval.str;
    if (code == t_CONST) delete krait_hexpr_lval.literal.text;
    if (lines != nullptr) lines->push_back(krait_hexpr_lineno - first_line + 1);
  }
  krait_hexpr__delete_buffer(buffer);
  return words.str();
}

}  // namespace

TEST(Scanner, EverySpellingGivesItsToken) {
  // One spelling per token in the order of the numbers 258 to 304; 290 (t_MOD) never occurs.
  std::string codes;
  for (int code = 258; code <= 304; ++code)
    if (code != t_MOD) codes += (code == t_ID ? std::string("x") : std::to_string(code)) + " ";
  EXPECT_EQ(scan("DECL EXPR INIT TRANS TARGET boole float int , ; ( ) [ ] { } inf -inf x not and nand or nor "
                 "xor nxor impl + - * ^ / < <= > >= = != if then else fi static true false define"),
            codes);
  EXPECT_EQ(scan("+inf ! <-> -> div"), "274 277 283 284 289 ");
  // Keywords are case-sensitive whole matches; the longest match decides the rest.
  EXPECT_EQ(scan("DECLx Int true1 TRUE abs _x9 y'"), "DECLx Int true1 TRUE abs _x9 y' ");
  EXPECT_EQ(scan("1.5 .5 0.5e-3 2e+3 007 12abc 1E5 1.5e"), "#1.5 #0.5 #0.0005 #2000 #7 #12 abc #1 E5 #1.5 e ");
  EXPECT_EQ(scan("a - -b x-inf a-info p<->q->r<-s a<=b>=c!=!d"),
            "a 286 286 b x 275 a 275 o p 283 q 284 r 291 286 s a 292 b 294 c 296 277 d ");
}

TEST(Scanner, CommentsLinesAndUnmatchedCharacters) {
  std::vector<int> lines;
  // Whitespace, lone newlines and comment ends count; carriage returns are skipped.
  EXPECT_EQ(scan("a--b\n\n \t\nb -- note - -- c\n\nc\r\nd\r\r\n\ne", &lines), "a b c d e ");
  EXPECT_EQ(lines, (std::vector{1, 4, 6, 7, 9}));
  // A comment that ends the input leaves the next input outside a comment.
  EXPECT_EQ(scan("a -- no newline") + scan("b"), "a b ");
  const captured_run run = run_captured([] { std::printf("%s", scan("a $ b 1. x'' y").c_str()); });
  EXPECT_EQ(run.out, "Unmatched character: $\nUnmatched character: .\nUnmatched character: '\na b #1 x' y ");
  EXPECT_EQ(run.err, "");
}

TEST(Parser, PrecedenceAssociativityAndSpellings) {
  const std::pair<const char*, const char*> cases[] = {
      {"p or q -> r xor a and b = c", "(IMP (OR p q) (XOR r (AND a (EQU b c))))"},
      {"a < b = x + y * -z ^ 2", "(EQU (LES a b) (ADD x (MUL y (UMINUS (pow z 2)))))"},
      {"not a = b", "(EQU (NOT a) b)"},
      {"x ^ 2 ^ 3", "(pow (pow x 2) 3)"},
      {"p impl q impl r", "(IMP (IMP p q) r)"},
      {"x - y - z != 0", "(NEQ (SUB (SUB x y) z) 0)"},
      // nand, nor and nxor are negations; unary plus leaves no node; all brackets are alike.
      {"a nand b nor c <-> p", "(NOT (OR (NOT (AND a b)) (NOT (XOR c p))))"},
      {"x' - - y >= [+x] * {(x)}", "(GEQ (SUB x' (UMINUS y)) (MUL (PARENTHESES x) (PARENTHESES (PARENTHESES x))))"},
      {"min(x, max(abs(y), 2)) > exp(cos(z)) or true and false",
       "(OR (GRE (min x (max (abs y) 2)) (exp (cos z))) (AND true=1 false=0))"},
      {"a; b; c", "(AND (AND a b) c)"},  // the expressions of a section are conjoined
  };
  for (const auto& [formula, expected] : cases) {
    const captured_run run = parse_in_child("DECL boole a, b, c, p, q, r; float [0, 1] x, y, z;\nEXPR\n" +
                                                std::string(formula) + ";",
                                            [](hexpr* root) { std::cout << sexpr(first(root)); });
    EXPECT_EQ(run.out + run.err, expected) << formula;
  }
}

TEST(Parser, DeclarationsAndConstants) {
  const auto symbols = [](hexpr* root) {
    std::cout << sexpr(root) << '\n';
    for (const hexpr_symobj* s : symtab.variables)
      std::cout << s->name << " [" << s->lower << ", " << s->upper << "]" << (s->is_int ? " int" : "")
                << (s->is_static ? " static" : "") << '\n';
    for (const auto& [name, constant] : symtab.constants) std::cout << name << " = " << constant.value << '\n';
  };
  // Names of constants become constant nodes, in expressions as in ranges.
  EXPECT_EQ(parse_in_child("DECL define n = 3; define on = true; define off = false; define m = - - n;\n"
                           "  float [-m, n] x; static int [-n, 1.5e1] y, z; boole b;\nEXPR on xor off -> n;",
                           symbols).out,
            "(FORMULA (IMP (XOR on=1 off=0) n=3))\nb [0, 1] int\nx [-3, 3]\ny [-3, 15] int static\n"
            "z [-3, 15] int static\nm = 3\nn = 3\noff = 0\non = 1\n");
  // The stack grows to 10000 entries; the FrontEnd errors table has the level beyond.
  const std::string nested = std::string(9000, '(') + "b" + std::string(9000, ')');
  EXPECT_EQ(parse_in_child("DECL boole b;\nEXPR\n" + nested + ";\n", [](hexpr*) {}).status, 0);
}

TEST(Parser, EachParseStartsOutsideAStaticDeclaration) {
  // A harness parses many inputs in one process, and a fatal error may end a parse anywhere.
  const captured_run run = run_captured([] {
    set_fatal_handler([](int) { throw 1; });
    for (const char* text : {"DECL static float [0, d] s;", "DECL float [0, 1] x;\nEXPR x > 0;"}) {
      try { parse_text(text); } catch (int) {}
    }
    std::cout << (*symtab.lookup("x"))->is_static;
  });
  EXPECT_EQ(run.out, "0");
}

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
