#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <initializer_list>
#include <iostream>
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

const std::string declarations = "DECL boole p, q, P, p1, p_1; float [-10, 10] a, b, x, y;\nEXPR\n";

// Expects each formula to be prepared into `tree` (below the root).
void expect_prepared(std::initializer_list<std::string> formulas, const std::string& tree) {
  for (const std::string& formula : formulas) {
    const auto print = [](hexpr* root) { std::cout << sexpr(first(prepare_hexpr(root))); };
    const captured_run run = parse_in_child(declarations + formula + ";", print);
    EXPECT_EQ(run.out + run.err, tree) << formula;
  }
}

// Translates the prepared formula at steps 0, 1 and 2 in `phase`, then shows the variable count,
// every symbol that has instances (as prev<var>next) and the order key of each variable.
std::string translation(const std::string& formula, int phase) {
  return parse_in_child(declarations + formula + ";", [=](hexpr* root) {
    krait_solver s;
    s.push_context();
    root = prepare_hexpr(root);
    translation_phase = phase;
    s.set_translation_phase(static_cast<u32>(phase));
    for (u32 step = 0; step < 3; ++step) {
      s.order_key_counter = step;  // as the driver does
      root->hexpr2krait(s, step, 1);
    }
    std::cout << s.num_variables << " variables";
    for (const hexpr_symobj* r : symtab.variables) {
      if (r->instances.empty()) continue;
      std::cout << '\n' << r->name << " [" << r->lower << ", " << r->upper << "]" << (r->is_int ? " int" : "")
                << (r->hidden ? " hidden " + std::to_string(r->aux_kind) : "") << ":";
      for (const int v : r->instances) std::cout << ' ' << s.vars[v].prev_var << '<' << v << '>' << s.vars[v].next_var;
    }
    std::cout << "\nkeys";
    for (u32 v = 1; v < s.vars.size(); ++v) std::cout << ' ' << s.vars[v].order_key;
    // The frame goes before the tree, whose nodes its symbols list as users.
    symtab.delete_last_frame();
    symtab.new_frame();
  }).out;
}

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

TEST(Preprocess, RelationsCompareAnExpressionWithAConstant) {
  // Constants gather on the right; a constant factor is divided out, a negative one mirrors.
  expect_prepared({"y + 1 + x + 2 < 10"}, "(CONSTRAINT (LES (ADD x y) 7) (LES (LINTERM 1*x 1*y) 7))");
  expect_prepared({"-2 * x >= 4", "x * -2 >= 4", "-(2 * x) >= 4", "4 <= -2 * x"},
                  "(CONSTRAINT (LEQ x -2) (LEQ (LINTERM 1*x) -2))");
  expect_prepared({"x = 3", "3 = x", "2 * x = 6", "-2 * x = -6"},
                  "(AND (CONSTRAINT (LEQ x 3) (LEQ (LINTERM 1*x) 3)) (CONSTRAINT (GEQ x 3) (GEQ (LINTERM 1*x) 3)))");
  expect_prepared({"x != 3"},
                  "(OR (CONSTRAINT (LES x 3) (LES (LINTERM 1*x) 3)) (CONSTRAINT (GRE x 3) (GRE (LINTERM 1*x) 3)))");
  // Sums and products are flattened, sorted (linear parts by key, after the other terms) and
  // nested to the left; the linear form is flat; repeated factors stay, x' after x.
  expect_prepared({"2 * x - 3 * y + b + a >= 1"},
                  "(CONSTRAINT (GEQ (ADD (ADD (ADD a b) (MUL x 2)) (MUL y -3)) 1) (GEQ (LINTERM 1*a 1*b 2*x -3*y) 1))");
  expect_prepared({"x' * y * a * x * x' * 2 <= 4"}, "(CONSTRAINT (LEQ (MUL (MUL (MUL (MUL a x) x') x') y) 2))");
  // Products of sums are multiplied out, each product sorted, then folded like any sum.
  expect_prepared({"(y + 2) * (x + 3) >= 0"}, "(CONSTRAINT (GEQ (ADD (ADD (MUL x y) (MUL x 2)) (MUL y 3)) -6))");
}

TEST(Preprocess, ConnectivesKeepEachLiteralOnceInKeyOrder) {
  // Byte order of keys: upper case first, the quote before digits and the underscore; other
  // children come first. Implication and exclusive or become the other connectives.
  expect_prepared({"p_1 or not p' or P or (p1 or p) or q or p"}, "(OR P p (NOT p') p1 p_1 q)");
  expect_prepared({"p and x >= 1"}, "(AND (CONSTRAINT (GEQ x 1) (GEQ (LINTERM 1*x) 1)) p)");
  expect_prepared({"p or not p", "not p or q or p", "true or p", "p -> p", "x - x <= 3", "0 * x > -1"}, "true=1");
  expect_prepared({"p and not p", "p and false", "false or false", "p xor p", "x - x < 0", "2 * 3 = 5"}, "false=0");
  expect_prepared({"true and p", "false or p", "p and true and p"}, "p");
  expect_prepared({"q or false or p", "q or p or q"}, "(OR p q)");
  expect_prepared({"p -> q"}, "(OR (NOT p) q)");
  expect_prepared({"p xor q"}, "(AND (OR p q) (OR (NOT p) (NOT q)))");
  // The parser writes equivalence as a negated xor, so this one is built by hand.
  const hexpr* both = preprocess_hexpr(new hexpr_nxor(new hexpr_var("p"), new hexpr_var("q")));
  EXPECT_EQ(sexpr(both), "(AND (OR (NOT p) q) (OR p (NOT q)))");
  delete both;
}

TEST(Preprocess, FunctionsOfConstantsFoldOnlyToExactValues) {
  expect_prepared({"sin(x) <= 1"}, "(CONSTRAINT (LEQ (cos (ADD x -1.5707963267948966)) 1))");
  expect_prepared({"x ^ 0 <= 2"}, "true=1");
  expect_prepared({"exp(0) * x <= 2", "abs(-4) * x <= 8", "min(5, 4) * x <= 8", "max(1, 4) * x <= 8", "x ^ 1 <= 2",
                   "abs(x - x + 2) * x <= 4", "nrt(64, 3) * x <= 8", "nrt(-8, 3) * x >= -4",
                   "nrt(4294967296, 32) * x <= 4",
                   "pow(-0.5, 3) * x >= -0.25", "pow(2, 0) * x <= 2", "nrt(0, 4) + x <= 2"},
                  "(CONSTRAINT (LEQ x 2) (LEQ (LINTERM 1*x) 2))");
  // The others stay for the solver, whose narrowing encloses the true value.
  const std::pair<const char*, const char*> kept[] = {
      {"exp(1)", "(exp 1)"}, {"cos(0)", "(cos 0)"}, {"nrt(2, 2)", "(nrt 2 2)"}, {"nrt(-8, 2)", "(nrt -8 2)"},
      {"pow(1.1, 3)", "(pow 1.1 3)"}, {"pow(10, 400)", "(pow 10 400)"}, {"pow(1e-200, 2)", "(pow 1e-200 2)"},
      {"nrt(27.000000000000004, 3)", "(nrt 27.000000000000004 3)"}};
  for (const auto& [call, tree] : kept)
    expect_prepared({call + std::string(" * x <= 2")}, "(CONSTRAINT (LEQ (MUL " + std::string(tree) + " x) 2))");
}

TEST(Translate, StepsLinkAndKeyInstancesAndTransitionResults) {
  // x' = x + 1 is (x' - x <= 1 and x' - x >= 1): per step a scaled x, a sum and a conjunction.
  // For the bmc variable orders an instance is keyed by its own step, any other variable by the
  // step translated.
  const std::string x = "\nx [-10, 10]: 0<1>3 1<3>7 3<7>11 7<11>0\nkeys 0 0 1 0 0 1 2 1 1 2 3 2 2";
  EXPECT_EQ(translation("x' = x + 1", 0), "13 variables" + x);
  // In the transition relation results are named too, after a '$' no input name holds, so that
  // they link like instances; the conjunction is a lower-bound literal.
  EXPECT_EQ(translation("x' = x + 1", 2), "13 variables\n$V_2 [0, 0] int hidden 0: 0<2>6 2<6>10 6<10>0\n"
                                         "$V_4 [0, 0] int hidden 0: 0<4>8 4<8>12 8<12>0\n"
                                         "-$V_5 [0, 0] int hidden 2: 0<5>9 5<9>13 9<13>0" + x);
}
