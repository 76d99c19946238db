#include <gtest/gtest.h>

#include <iomanip>
#include <initializer_list>
#include <sstream>
#include <utility>
#include <vector>

#include "hexpr/hexpr_nodes.hpp"
#include "lang/symtab.hpp"
#include "parse_child.hpp"
#include "solver/solver.hpp"

namespace {

// A new solver variable with the given ends; a missing end is left unbounded.
struct end {
  bool present;
  bool strict;
  double value;
};
constexpr end none{false, false, 0.0};

int add_variable(krait_solver& s, end lower, end upper) {
  s.vars.emplace_back();
  const u32 var = static_cast<u32>(++s.num_variables);
  if (lower.present) s.push_bound(var, true, lower.strict, lower.value, origin{});
  if (upper.present) s.push_bound(var, false, upper.strict, upper.value, origin{});
  return static_cast<int>(var);
}

hexpr_symobj* record(const char* name, double lower, double upper, bool is_int, bool is_static,
                     std::vector<int> instances, bool hidden = false) {
  auto* r = new hexpr_symobj(name, lower, upper, is_int, is_static, hidden);
  r->instances = std::move(instances);
  return r;
}

}  // namespace

TEST(SymbolTable, RedefinitionsAreFatal) {
  expect_fatal("DECL define c = 1; float [0, c] c;\nEXPR true;",
               "c has been defined to be a constant; it cannot be redefined to be a variable.");
  expect_fatal("DECL float [0, 1] x; int [0, 5] x;\nEXPR true;", "Redefinition of variable x");
  expect_fatal("DECL boole p, q, p;\nEXPR true;", "Redefinition of variable p");
  expect_fatal("DECL define c = 1; define c = 2;\nEXPR true;", "Redefinition of constant c");
  expect_fatal("DECL boole v; define v = true;\nEXPR true;",
               "v has been defined to be a variable; it cannot be redefined to be a constant.");
}

TEST(SymbolTable, SolutionEntriesInNameOrder) {
  krait_solver s;
  hexpr_symtab table;
  table.new_frame();
  table.declare_variable(record("b", 0, 1, true, false, {add_variable(s, {true, false, 1}, {true, false, 1})}));
  table.declare_variable(record("k", 0, 5, true, false, {add_variable(s, {true, false, 2}, {true, false, 3})}));
  table.declare_variable(record("s", 0, 1, false, true, {}));
  table.declare_variable(record("t", 0, 1, true, true, {add_variable(s, {true, false, 0}, {true, false, 1})}));
  table.declare_variable(record("a", -1, 1, false, false, {add_variable(s, {true, false, 0.1}, {true, true, 0.5})}));
  const int x0 = add_variable(s, {true, true, 1.5}, {true, false, 2});
  table.declare_variable(record("X", 0, 10, false, false, {x0, add_variable(s, none, none)}));
  table.declare_variable(record("V_7", 7, 7, true, true, {add_variable(s, {true, false, 7}, {true, false, 7})}, true));

  const char* visible =
      "    X (float): \n"
      "        @0: ]1.5, 2]\n"
      "        @1: ]-inf, +inf[\n"
      "\n"
      "    a (float): \n"
      "        @0: [0.10000000000000000555, 0.5[\n"
      "\n"
      "    b (boole): \n"
      "        @0: [1, 1]\n"
      "\n"
      "    k (int): \n"
      "        @0: [2, 3]\n"
      "\n"
      "    s (static float): declared in symtab but not used\n"
      "\n"
      "    t (static boole): \n"
      "        @0: [0, 1]\n"
      "\n";
  std::ostringstream out;
  out << std::fixed << std::setprecision(2);
  table.print_solution(s, out, true);
  out << 0.1;  // the precision stays on the stream
  EXPECT_EQ(out.str(), std::string(visible) + "0.10000000000000000555");

  std::ostringstream all;
  table.print_solution(s, all, false);
  EXPECT_EQ(all.str(), std::string("    V_7 (static int): \n        @0: [7, 7]\n\n") + visible);
}

TEST(SymbolTable, FramesDropTheirSymbolsAndInstances) {
  symtab.new_frame();
  hexpr_symobj* x = *symtab.declare_variable(record("x", 0, 10, false, false, {1}));
  hexpr_symobj* y = *symtab.declare_variable(record("y", 0, 10, false, false, {}));
  hexpr_symobj* z = *symtab.declare_variable(record("z", 0, 10, false, true, {2}));

  symtab.new_frame();
  x->instances.insert(x->instances.end(), {3, 4});
  y->instances.push_back(5);
  const symbol_ref aux = symtab.declare_variable(record("+V_6", 0, 0, true, false, {6}, true));
  // Every node kind that may cache a symbol forgets it when the symbol goes.
  hexpr_var v("x");
  hexpr_const c(1.0, "");
  hexpr_linterm l;
  hexpr_and a;
  hexpr_or o;
  hexpr_add s;
  hexpr_mul m;
  hexpr_function f("exp");
  v.symbol_entry = c.symbol_entry = aux;
  for (hexpr_n_ary_node* n : std::initializer_list<hexpr_n_ary_node*>{&l, &a, &o, &s, &m, &f}) n->symbol_entry = aux;
  (*aux)->users = {&v, &c, &l, &a, &o, &s, &m, &f};

  symtab.delete_last_frame();
  EXPECT_EQ(symtab.lookup("+V_6"), symtab.variables.end());
  EXPECT_EQ(v.symbol_entry, no_symbol());
  EXPECT_EQ(c.symbol_entry, no_symbol());
  for (hexpr_n_ary_node* n : std::initializer_list<hexpr_n_ary_node*>{&l, &a, &o, &s, &m, &f})
    EXPECT_EQ(n->symbol_entry, no_symbol()) << n->get_opname();
  EXPECT_EQ(x->instances, std::vector<int>{1});
  EXPECT_EQ(y->instances, std::vector<int>{});
  EXPECT_EQ(z->instances, std::vector<int>{2});
  EXPECT_EQ(symtab.variables.size(), 3u);

  symtab.delete_last_frame();
  EXPECT_TRUE(symtab.variables.empty());
  EXPECT_TRUE(symtab.frames.empty());
}

TEST(SymbolTable, OnlyNodesThatCacheSymbolsMayBeUsers) {
  const captured_run run = run_captured([] {
    symtab.new_frame();
    hexpr_not n;
    (*symtab.declare_variable(record("x", 0, 1, false, false, {})))->users.push_back(&n);
    symtab.delete_last_frame();
  });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "\nError: Unexpected case value 20 in hexpr_symtab::delete_last_frame.\n");
}
