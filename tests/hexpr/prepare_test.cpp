#include <gtest/gtest.h>

#include <initializer_list>
#include <iostream>
#include <string>
#include <utility>

#include "hexpr/preprocess.hpp"
#include "lang/parse_child.hpp"
#include "solver/solver.hpp"

namespace {

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
std::string translated(const std::string& formula, int phase) {
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
  EXPECT_EQ(translated("x' = x + 1", 0), "13 variables" + x);
  // In the transition relation results are named too, after a '$' no input name holds, so that
  // they link like instances; the conjunction is a lower-bound literal.
  EXPECT_EQ(translated("x' = x + 1", 2), "13 variables\n$V_2 [0, 0] int hidden 0: 0<2>6 2<6>10 6<10>0\n"
                                         "$V_4 [0, 0] int hidden 0: 0<4>8 4<8>12 8<12>0\n"
                                         "-$V_5 [0, 0] int hidden 2: 0<5>9 5<9>13 9<13>0" + x);
}
