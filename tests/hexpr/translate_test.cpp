#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "hexpr/hexpr_nodes.hpp"
#include "hexpr/preprocess.hpp"
#include "hexpr/translate.hpp"
#include "lang/parse_child.hpp"
#include "solver/solver.hpp"

namespace {

const std::string declarations = "DECL float [-10, 10] x, y; boole b; static float [0, 1] s;\nEXPR\n";

const char* const functor_names[] = {"sum", "scale", "product", "max", "min", "abs", "exp", "cos", "pow", "nrt"};

void print_bound(bound b) {
  std::cout << " V_" << b.var << (b.is_lower ? (b.strict ? " > " : " >= ") : (b.strict ? " < " : " <= ")) << b.value;
}

struct translation {
  std::vector<u32> steps{0};
  int phase = 0;       // translation_phase while translating
  bool links = true;   // show each instance as prev<var>next
};

// Translates the prepared formula at each step in turn, then shows the variable count, the
// tclauses, the atom asserted last and every symbol that has instances. `after` may add more.
captured_run translated(const std::string& formula, const translation& how = {},
                        const std::function<void(krait_solver&)>& after = {}) {
  return parse_in_child(declarations + formula + ";\n", [&](hexpr* root) {
    krait_solver s;
    s.push_context();
    root = prepare_hexpr(root);
    translation_phase = how.phase;
    s.set_translation_phase(static_cast<u32>(how.phase));
    for (const u32 step : how.steps) root->hexpr2krait(s, step, 1);
    translation_phase = 0;
    s.set_translation_phase(0);

    std::cout << s.num_variables << " variables\n";
    for (u32 t = 1; t <= s.num_tclauses; ++t) {
      const tclause& tc = s.tclauses[t];
      std::cout << "V_" << tc.x << " = " << functor_names[tc.functor] << "(V_" << tc.y << ", V_" << tc.z << ", " << tc.c
                << ")\n";
    }
    std::cout << "asserted";
    for (const bound b : s.dclause_records.back().atoms) print_bound(b);
    std::cout << '\n';
    for (const hexpr_symobj* r : symtab.variables) {
      if (r->instances.empty()) continue;
      std::cout << r->name << " [" << r->lower << ", " << r->upper << "]" << (r->is_int ? " int" : " float")
                << (r->is_static ? " static" : "") << (r->hidden ? " hidden " + std::to_string(r->aux_kind) : "") << ":";
      for (const int v : r->instances) {
        if (how.links) std::cout << ' ' << s.vars[v].prev_var << '<' << v << '>' << s.vars[v].next_var;
        else std::cout << ' ' << v;
      }
      std::cout << '\n';
    }
    if (after) after(s);
    // The frame goes before the tree, whose nodes its symbols list as users.
    symtab.delete_last_frame();
    symtab.new_frame();
  });
}

void expect_translation(const std::string& formula, const std::string& expected, const translation& how = {}) {
  const captured_run run = translated(formula, how);
  EXPECT_EQ(run.err, "") << formula;
  EXPECT_EQ(run.out, expected) << formula;
}

}  // namespace

TEST(Translate, BooleanConstantFormulas) {
  const auto solve = [](krait_solver& s) {
    const bool unsatisfiable = s.solve();
    std::cout << "unsatisfiable " << unsatisfiable << " after " << s.num_decisions << " decisions\n";
  };
  EXPECT_EQ(translated("true", {}, solve).out,
            "1 variables\nasserted V_1 >= 1\n$V_1 [1, 1] int static hidden 0: 1<1>1\nunsatisfiable 0 after 0 decisions\n");
  EXPECT_EQ(translated("false", {}, solve).out,
            "1 variables\nasserted V_1 >= 1\n$V_1 [0, 0] int static hidden 0: 1<1>1\nunsatisfiable 1 after 0 decisions\n");
}

TEST(Translate, OccurrencesDenoteTheInstanceOfTheirStep) {
  // x' at step 3 is x's fifth instance; a time-invariant symbol has only instance 0. One call
  // makes several instances here, and how those link among themselves is left open.
  expect_translation("x' <= 1", "5 variables\nasserted V_5 <= 1\nx [-10, 10] float: 1 2 3 4 5\n",
                     {.steps = {3}, .links = false});
  expect_translation("x <= 1", "4 variables\nasserted V_4 <= 1\nx [-10, 10] float: 1 2 3 4\n",
                     {.steps = {3}, .links = false});
  expect_translation("s' <= 1 and s >= 0.5", "2 variables\nasserted V_2 >= 1\ns [0, 1] float static: 1\n",
                     {.steps = {3}, .links = false});
}

TEST(Translate, LiteralsAndTheirComplements) {
  const std::string b = "b [0, 1] int: 0<1>0\n", x = "x [-10, 10] float: 0<1>0\n";
  const std::pair<const char*, std::string> cases[] = {
      {"b", "V_1 >= 1\n" + b},           {"not b", "V_1 <= 0\n" + b},       {"not not b", "V_1 >= 1\n" + b},
      {"not (x <= 2)", "V_1 > 2\n" + x}, {"not (x > 2)", "V_1 <= 2\n" + x}, {"x < -1", "V_1 < -1\n" + x},
  };
  for (const auto& [formula, rest] : cases) expect_translation(formula, "1 variables\nasserted " + rest);
}

TEST(Translate, ArithmeticBecomesSharedTclauses) {
  // A constant factor is the tclause's c; no variable stands for it.
  expect_translation("x * 3 + y <= 1",
                     "4 variables\nV_2 = scale(V_1, V_0, 3)\nV_4 = sum(V_2, V_3, 0)\nasserted V_4 <= 1\n"
                     "x [-10, 10] float: 0<1>0\ny [-10, 10] float: 0<3>0\n");
  // Inside a function the constant term stays in the sum and gets a variable, named after it
  // and linked to itself; both 3s share it.
  expect_translation("exp(x + 3) <= exp(y + 3)",
                     "9 variables\n"
                     "V_3 = sum(V_1, V_2, 0)\nV_4 = exp(V_3, V_0, 0)\nV_6 = sum(V_5, V_2, 0)\nV_7 = exp(V_6, V_0, 0)\n"
                     "V_8 = scale(V_7, V_0, -1)\nV_9 = sum(V_4, V_8, 0)\n"
                     "asserted V_9 <= 0\n"
                     "$V_2 [3, 3] int static hidden 0: 2<2>2\nx [-10, 10] float: 0<1>0\ny [-10, 10] float: 0<5>0\n");
  // The same product twice is one variable; the conjunction adds the fourth.
  expect_translation("x * y <= 1; x * y >= 0",
                     "4 variables\nV_3 = product(V_1, V_2, 0)\nasserted V_4 >= 1\n"
                     "x [-10, 10] float: 0<1>0\ny [-10, 10] float: 0<2>0\n");
  expect_translation("x ^ 3 + nrt(y, 2) + min(x, y) + max(x, y) + abs(x) + cos(y) >= 0",
                     "13 variables\n"
                     "V_2 = pow(V_1, V_0, 3)\nV_4 = nrt(V_3, V_0, 2)\nV_5 = sum(V_2, V_4, 0)\nV_6 = min(V_1, V_3, 0)\n"
                     "V_7 = sum(V_5, V_6, 0)\nV_8 = max(V_1, V_3, 0)\nV_9 = sum(V_7, V_8, 0)\nV_10 = abs(V_1, V_0, 0)\n"
                     "V_11 = sum(V_9, V_10, 0)\nV_12 = cos(V_3, V_0, 0)\nV_13 = sum(V_11, V_12, 0)\n"
                     "asserted V_13 >= 0\nx [-10, 10] float: 0<1>0\ny [-10, 10] float: 0<3>0\n");
}

TEST(Translate, StepsLinkInstancesAndTransitionResults) {
  // x' = x + 1 is (x' - x <= 1 and x' - x >= 1): per step a scaled x, a sum and a conjunction.
  const std::string tclauses =
      "13 variables\n"
      "V_2 = scale(V_1, V_0, -1)\nV_4 = sum(V_2, V_3, 0)\n"
      "V_6 = scale(V_3, V_0, -1)\nV_8 = sum(V_6, V_7, 0)\n"
      "V_10 = scale(V_7, V_0, -1)\nV_12 = sum(V_10, V_11, 0)\n"
      "asserted V_13 >= 1\n";
  const std::string x = "x [-10, 10] float: 0<1>3 1<3>7 3<7>11 7<11>0\n";
  expect_translation("x' = x + 1", tclauses + x, {.steps = {0, 1, 2}});
  // In the transition relation the results are named too, so that they link like instances;
  // the conjunction is a lower-bound literal.
  expect_translation("x' = x + 1",
                     tclauses + "$V_2 [0, 0] int hidden 0: 0<2>6 2<6>10 6<10>0\n" +
                         "$V_4 [0, 0] int hidden 0: 0<4>8 4<8>12 8<12>0\n" +
                         "-$V_5 [0, 0] int hidden 2: 0<5>9 5<9>13 9<13>0\n" + x,
                     {.steps = {0, 1, 2}, .phase = 2});
}

TEST(Translate, FatalTrees) {
  const captured_run undeclared = translated("x + z >= 0");
  EXPECT_EQ(undeclared.status, 1);
  EXPECT_EQ(undeclared.err, "\nError: Variable 'z' is undeclared.\n");
  // A name that preprocessing removes is never looked up.
  EXPECT_EQ(translated("z - z <= 1").status, 0);

  // Trees that did not go through preprocessing.
  const auto x = [] { return new hexpr_var("x"); };
  const auto one = [] { return new hexpr_const(1.0, ""); };
  const auto bound_node = [&] { return new hexpr_les(x(), one()); };
  const auto call = [](const char* name, hexpr* argument) {
    hexpr_function* f = new hexpr_function(name);
    f->add_subexpr(argument);
    return f;
  };
  const auto triple = [&] {
    hexpr_add* sum = new hexpr_add(x(), x());
    sum->add_subexpr(x());
    return sum;
  };
  const std::pair<std::function<hexpr*()>, const char*> cases[] = {
      {[] { return new hexpr; }, "Missing member function 'hexpr2krait'."},
      {[&] { return new hexpr_equ(x(), one()); }, "Unexpected case HEXPR_EQU in hexpr_relop::hexpr2krait."},
      {[&] { return new hexpr_neq(x(), one()); }, "Unexpected case HEXPR_NEQ in hexpr_relop::hexpr2krait."},
      {[&] { return new hexpr_leq(x(), x()); }, "Relop has non-constant righthand side."},
      {[&] { return new hexpr_leq(bound_node(), one()); }, "Subexpression of an hexpr_relop node is a bound."},
      {triple, "Discovered hexpr_add node with 3 subexpressions in hexpr_add::hexpr2krait."},
      {[&] { return new hexpr_add(x(), bound_node()); }, "Subexpression of an hexpr_add node is a bound."},
      {[&] { return call("abs", bound_node()); }, "Subexpression of an hexpr_function node is a bound."},
      {[&] { return call("sin", x()); }, "Unexpected case in hexpr_function::hexpr2krait."},
  };
  for (const auto& [build, message] : cases) {
    const captured_run run = run_captured([&] {
      symtab.new_frame();
      symtab.declare_variable(new hexpr_symobj("x", 0, 10, false, false));
      krait_solver s;
      build()->hexpr2krait(s, 0, 1);
    });
    EXPECT_EQ(run.status, 1) << message;
    EXPECT_EQ(run.err, std::string("\nError: ") + message + "\n");
  }
  const captured_run polarity = run_captured([&] {
    symtab.new_frame();
    symtab.declare_variable(new hexpr_symobj("x", 0, 10, false, false));
    krait_solver s;
    hexpr_not(bound_node()).hexpr2krait(s, 0, 4);
  });
  EXPECT_EQ(polarity.err, "\nError: Passed invalid argument to toggle_polarity.\n");
}
