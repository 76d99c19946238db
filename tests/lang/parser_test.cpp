#include <gtest/gtest.h>

#include <cstdio>
#include <iostream>
#include <string>
#include <utility>

#include "base/error.hpp"
#include "parse_child.hpp"

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
      try {
        parse_text(text);
      } catch (int) {
      }
    }
    std::cout << (*symtab.lookup("x"))->is_static;
  });
  EXPECT_EQ(run.out, "0");
}
