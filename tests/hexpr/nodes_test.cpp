#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <sstream>
#include <string>
#include <typeinfo>
#include <utility>

#include "hexpr/preprocess.hpp"
#include "lang/parse_child.hpp"
#include "solver/solver.hpp"

namespace {

std::string fatal(const std::string& message) { return "\nError: " + message + "\n"; }
std::string syntax(const char* at, int line, const char* problem = "syntax error") {
  return std::string("Error while parsing hexpr: ") + problem + "\n   at expr \"" + at + "\"\n   at line " +
         std::to_string(line) + "\n\n";
}

// Parses, prepares and translates an input, or a formula after a few declarations.
std::function<void()> input(std::string text) {
  if (!text.starts_with("DECL")) text = "DECL boole p; float [0, 1] x, y;\nEXPR\n" + text + ";";
  return [text] { krait_solver s; prepare_hexpr(parse_text(text))->hexpr2krait(s, 0, 1); };
}

// Trees no input gives; the translation of `tree` finds x declared.
hexpr* x() { return new hexpr_var("x"); }
hexpr* num(double value) { return new hexpr_const(value, ""); }
hexpr* literal() { return new hexpr_les(x(), num(1)); }
hexpr* call(const char* name, hexpr* arg) { auto* f = new hexpr_function(name); return f->add_subexpr(arg), f; }
hexpr_symobj& declare_x() { return **symtab.declare_variable(new hexpr_symobj("x", 0, 10, false, false)); }
std::function<void()> translated(const std::function<hexpr*()>& tree, u32 polarity = 1) {
  return [=] { krait_solver s; declare_x(); tree()->hexpr2krait(s, 0, polarity); };
}
struct stray : hexpr {  // a kind that is not in the table
  hexpr_kind get_opname() const override { return static_cast<hexpr_kind>(99); }
};

}  // namespace

TEST(ExpressionNodes, NewNodeKeepsTheClassAndItsDataAndTheDumpNamesEachKind) {
  hexpr* const nodes[] = {
      new hexpr, new hexpr_leaf_node, new hexpr_inner_node, new hexpr_1_ary_node, new hexpr_2_ary_node,
      new hexpr_3_ary_node, new hexpr_n_ary_node, new hexpr_relop, new hexpr_var("x'"), new hexpr_const(2, ""),
      new hexpr_const(1, "n"), new hexpr_linterm, new hexpr_not, new hexpr_and, new hexpr_or, new hexpr_xor,
      new hexpr_nxor, new hexpr_imp, new hexpr_constraint, new hexpr_equ, new hexpr_neq, new hexpr_leq, new hexpr_les,
      new hexpr_geq, new hexpr_gre, new hexpr_parentheses, new hexpr_uminus, new hexpr_add, new hexpr_mul,
      new hexpr_sub, new hexpr_function("cos"), new hexpr_formula, new hexpr_proof_spec};
  std::ostringstream names;
  for (hexpr* node : nodes) {
    hexpr* fresh = node->new_node();
    EXPECT_EQ(typeid(*fresh), typeid(*node)) << sexpr(node);
    EXPECT_EQ(node->is_leaf(), dynamic_cast<hexpr_inner_node*>(node) == nullptr) << sexpr(node);
    fresh->print_hexpr_opname(" ", names);
    delete fresh;
    delete node;
  }
  EXPECT_EQ(names.str(),
            " INVALID INVALID INVALID INVALID INVALID INVALID INVALID INVALID VAR x' CONST 2 CONST n = 1 LINTERM NOT"
            " AND OR XOR NXOR IMP CONSTRAINT EQU NEQ LEQ LES GEQ GRE PARENTHESES UMINUS ADD MUL SUB FUNCTION cos"
            " FORMULA PROOF_SPEC");
  // The dump draws connectors, and linear terms with their coefficients.
  auto* term = new hexpr_linterm;
  term->add_term(1.0, new hexpr_var("x"));
  term->add_term(-2.5, new hexpr_var("y'"));
  const hexpr_and both(new hexpr_not(new hexpr_var("p")), term);
  std::ostringstream out;
  both.print_hexpr("", out);
  EXPECT_EQ(out.str(), "AND\n|\n+-NOT\n| |\n| +-VAR p\n|\n+-LINTERM\n  |\n  +-(1 * VAR x)\n  |\n  +-(-2.5 * VAR y')\n");
}

TEST(FrontEnd, FatalErrorsEndTheRunWithTheirMessage) {
  // Each fatal error of the scanner, parser, symbol table, nodes, preprocessing and translation.
  const std::pair<std::function<void()>, std::string> cases[] = {
      {input("x > 1e999"), fatal("Cannot convert 1e999 to type double.")},
      {input("DECL float [0, inf] x;\nEXPR x;"), syntax("inf", 1)},
      {input("DECL boole b;\nINIT b;\n-- no target\nTRANS b';"), syntax("", 4)},
      {input("DECL boole b;\nEXPR b;\n\n)"), syntax(")", 4)},
      {input("DECL boole b;\nEXPR b\n  b;\n"), syntax("b", 3)},
      {input("DECL boole b;\nEXPR max(b, (b);\n"), syntax(";", 2)},
      {input("DECL\nEXPR b;\n"), syntax("EXPR", 2)},  // a section needs a declaration
      {input("DECL boole b;\nEXPR\n" + std::string(10000, '(') + "b"), syntax("(", 3, "memory exhausted")},
      {input("DECL float [0, d] x;\nEXPR x;"), fatal("Symbolic constant 'd' not defined.")},
      {input("DECL define c = 1; float [0, c] c;\nEXPR true;"),
       fatal("c has been defined to be a constant; it cannot be redefined to be a variable.")},
      {input("DECL boole v; define v = true;\nEXPR true;"),
       fatal("v has been defined to be a variable; it cannot be redefined to be a constant.")},
      {input("DECL boole p, q, p;\nEXPR true;"), fatal("Redefinition of variable p")},
      {input("DECL define c = 1; define c = 2;\nEXPR true;"), fatal("Redefinition of constant c")},
      {input("sqrt(x) < 1"), fatal("Unknown function 'sqrt'.")},
      {input("abs(x, y) < 1"), fatal("Can't add a second subexpression to function 'abs'.")},
      {input("max(x, y, x) < 1"), fatal("Can't add a third subexpression to function 'max'.")},
      {input("x ^ -2 < 1"), fatal("Exponent of power operator must be a constant value.")},
      {input("x ^ 2.5 < 1"), fatal("Power operator requires a non-negative integer value as exponent.")},
      {[] { static_cast<hexpr_function*>(call("pow", x()))->add_subexpr(num(-1)); },
       fatal("Power operator requires a non-negative integer value as exponent.")},
      {input("nrt(x, y) < 1"), fatal("Exponent of root operator must be a constant value.")},
      {input("nrt(x, 1) < 1"), fatal("Root operator requires an integer greater equal two as exponent.")},
      {input("nrt(x, 2.5) < 1"), fatal("Root operator requires an integer greater equal two as exponent.")},
      {input("min(x) <= 1"), fatal("Operator 'min' requires two arguments.")},
      {input("2 or p"), fatal("Constant value '2.000000' appears as subexpression of a Boolean operator.")},
      {input("x + z >= 0"), fatal("Variable 'z' is undeclared.")},
      {[] { hexpr_not(x()).add_subexpr(x()); }, fatal("Can't add a second subexpression to a unary node.")},
      {[] { hexpr_imp(x(), x()).add_subexpr(x()); }, fatal("Can't add a third subexpression to a binary node.")},
      {[] { hexpr_proof_spec(x(), x(), x()).add_subexpr(x()); },
       fatal("Can't add a fourth subexpression to a ternary node.")},
      {[] { hexpr_linterm().add_term(1.0, num(3)); }, fatal("Subexpressions of HEXPR_LINTERM must be variables.")},
      {[] { std::ostringstream out; stray().print_hexpr("", out); },
       fatal("Unexpected case value 99 in hexpr::print_hexpr_opname.")},
      {[] { symtab.new_frame(), declare_x().users = {new hexpr_not}, symtab.delete_last_frame(); },
       fatal("Unexpected case value 20 in hexpr_symtab::delete_last_frame.")},
      {translated([] { return new hexpr; }), fatal("Missing member function 'hexpr2krait'.")},
      {translated([] { return new hexpr_equ(x(), num(1)); }),
       fatal("Unexpected case HEXPR_EQU in hexpr_relop::hexpr2krait.")},
      {translated([] { return new hexpr_neq(x(), num(1)); }),
       fatal("Unexpected case HEXPR_NEQ in hexpr_relop::hexpr2krait.")},
      // The sides of a relation are checked before its kind.
      {translated([] { return new hexpr_neq(x(), x()); }), fatal("Relop has non-constant righthand side.")},
      {translated([] { return new hexpr_equ(literal(), num(1)); }),
       fatal("Subexpression of an hexpr_relop node is a bound.")},
      {translated([] { auto* sum = new hexpr_add(x(), x()); sum->add_subexpr(x()); return sum; }),
       fatal("Discovered hexpr_add node with 3 subexpressions in hexpr_add::hexpr2krait.")},
      {translated([] { return new hexpr_add(x(), literal()); }),
       fatal("Subexpression of an hexpr_add node is a bound.")},
      {translated([] { return call("abs", literal()); }), fatal("Subexpression of an hexpr_function node is a bound.")},
      {translated([] { return call("sin", x()); }), fatal("Unexpected case in hexpr_function::hexpr2krait.")},
      {translated([] { return new hexpr_not(literal()); }, 4), fatal("Passed invalid argument to toggle_polarity.")},
      // The scanner's machinery fails with status 2 and its messages carry our prefix.
      {[] { krait_hexpr_restart(std::fopen("/dev/null", "w")), krait_hexpr_lex(); }, "input in flex scanner failed\n"},
      {[] { krait_hexpr_fatal("out of dynamic memory in yy_create_buffer()"); },
       "out of dynamic memory in krait_hexpr__create_buffer()\n"},
  };
  for (const auto& [body, err] : cases) {
    const captured_run run = run_captured(body);
    EXPECT_EQ(run.status, err.starts_with("Error while") || err.starts_with("\nError") ? 1 : 2) << err;
    EXPECT_EQ(run.err, err);
  }
}
