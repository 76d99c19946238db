#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <set>
#include <sstream>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "hexpr/hexpr_nodes.hpp"
#include "support/capture.hpp"

namespace {

hexpr_function* call(const char* name, std::initializer_list<hexpr*> arguments) {
  auto* f = new hexpr_function(name);
  for (hexpr* argument : arguments) f->add_subexpr(argument);
  return f;
}

hexpr* var(const char* name) { return new hexpr_var(name); }
hexpr* num(double value) { return new hexpr_const(value, ""); }

void expect_fatal(const std::function<void()>& body, const std::string& message) {
  const captured_run run = run_captured(body);
  EXPECT_EQ(run.status, 1) << message;
  EXPECT_EQ(run.err, "\nError: " + message + "\n");
}

std::string dump(const hexpr& e) {
  std::ostringstream out;
  e.print_hexpr("", out);
  return out.str();
}

void collect(const hexpr* e, std::set<const hexpr*>& nodes) {
  nodes.insert(e);
  if (e->is_leaf()) return;
  const auto* inner = static_cast<const hexpr_inner_node*>(e);
  for (auto slot = inner->subexprs_begin(); slot != inner->subexprs_end(); ++slot) collect(*slot, nodes);
}

// Counts its own destruction, to see which nodes a deletion reaches.
int destroyed = 0;
struct counted : hexpr_var {
  ~counted() override { ++destroyed; }
};

}  // namespace

TEST(ExpressionNodes, KindsAreFixedAndNewNodeKeepsTheClass) {
  const std::vector<std::pair<hexpr*, int>> nodes = {
      {new hexpr, 1}, {new hexpr_leaf_node, 1}, {new hexpr_inner_node, 1}, {new hexpr_1_ary_node, 1},
      {new hexpr_2_ary_node, 1}, {new hexpr_3_ary_node, 1}, {new hexpr_n_ary_node, 1}, {new hexpr_relop, 1},
      {var("x"), 10}, {num(2), 11}, {new hexpr_linterm, 12}, {new hexpr_not, 20}, {new hexpr_and, 21},
      {new hexpr_or, 22}, {new hexpr_xor, 23}, {new hexpr_nxor, 24}, {new hexpr_imp, 25},
      {new hexpr_constraint, 26}, {new hexpr_equ, 30}, {new hexpr_neq, 31}, {new hexpr_leq, 32},
      {new hexpr_les, 33}, {new hexpr_geq, 34}, {new hexpr_gre, 35}, {new hexpr_parentheses, 40},
      {new hexpr_uminus, 41}, {new hexpr_add, 42}, {new hexpr_mul, 43}, {new hexpr_sub, 44},
      {new hexpr_function("cos"), 50}, {new hexpr_formula, 60}, {new hexpr_proof_spec, 61},
  };
  for (const auto& [node, kind] : nodes) {
    const hexpr* fresh = node->new_node();
    EXPECT_EQ(node->get_opname(), kind);
    EXPECT_EQ(typeid(*fresh), typeid(*node)) << kind;
    const bool inner = dynamic_cast<const hexpr_inner_node*>(node) != nullptr;
    EXPECT_EQ(node->is_leaf(), !inner) << kind;
    if (inner) {
      EXPECT_EQ(static_cast<const hexpr_inner_node*>(fresh)->subexpr_count(), 0u);
    }
    delete fresh;
    delete node;
  }
}

TEST(ExpressionNodes, ArityLimits) {
  hexpr_equ relation(var("x"), num(1));
  EXPECT_EQ(dump(relation), "EQU\n|\n+-VAR x\n|\n+-CONST 1\n");
  hexpr_add sum;
  for (int i = 0; i < 5; ++i) sum.add_subexpr(num(i));
  EXPECT_EQ(sum.subexpr_count(), 5u);

  expect_fatal([] { hexpr_not(var("a")).add_subexpr(var("b")); }, "Can't add a second subexpression to a unary node.");
  expect_fatal([] { hexpr_imp(var("a"), var("b")).add_subexpr(var("c")); },
               "Can't add a third subexpression to a binary node.");
  expect_fatal([] { hexpr_proof_spec(var("a"), var("b"), var("c")).add_subexpr(var("d")); },
               "Can't add a fourth subexpression to a ternary node.");
}

TEST(ExpressionNodes, FunctionTableAndExponentChecks) {
  for (const char* name : {"abs", "exp", "sin", "cos"}) delete call(name, {var("x")});
  for (const char* name : {"min", "max"}) delete call(name, {var("x"), var("y")});
  delete call("pow", {var("x"), num(2.0)});
  delete call("pow", {var("x"), num(0.0)});
  delete call("nrt", {var("x"), num(2.0)});
  delete call("nrt", {var("x"), num(5.0)});

  expect_fatal([] { hexpr_function("sqrt"); }, "Unknown function 'sqrt'.");
  expect_fatal([] { call("abs", {var("x"), var("y")}); }, "Can't add a second subexpression to function 'abs'.");
  expect_fatal([] { call("min", {var("x"), var("y"), var("z")}); },
               "Can't add a third subexpression to function 'min'.");
  expect_fatal([] { call("pow", {var("x"), num(2), num(3)}); }, "Can't add a third subexpression to function 'pow'.");
  expect_fatal([] { call("pow", {var("x"), var("y")}); }, "Exponent of power operator must be a constant value.");
  for (double exponent : {2.5, -1.0})
    expect_fatal([=] { call("pow", {var("x"), num(exponent)}); },
                 "Power operator requires a non-negative integer value as exponent.");
  expect_fatal([] { call("nrt", {var("x"), var("y")}); }, "Exponent of root operator must be a constant value.");
  for (double exponent : {1.0, 2.5, -2.0})
    expect_fatal([=] { call("nrt", {var("x"), num(exponent)}); },
                 "Root operator requires an integer greater equal two as exponent.");
}

TEST(ExpressionNodes, PrimedNamesAndLinearTerms) {
  const hexpr_var primed("x'"), plain("x"), quote("'"), twice("x''");
  EXPECT_EQ(std::make_pair(primed.name, primed.primed), std::make_pair(std::string("x"), true));
  EXPECT_EQ(std::make_pair(plain.name, plain.primed), std::make_pair(std::string("x"), false));
  EXPECT_EQ(std::make_pair(quote.name, quote.primed), std::make_pair(std::string("'"), false));
  EXPECT_EQ(std::make_pair(twice.name, twice.primed), std::make_pair(std::string("x'"), true));

  hexpr_linterm term;
  term.add_term(2.0, var("x"));
  term.add_term(-1.0, var("y'"));
  EXPECT_EQ(term.coefficients, (std::vector<double>{2.0, -1.0}));
  EXPECT_EQ(term.subexpr_count(), 2u);
  expect_fatal([] { hexpr_linterm().add_term(1.0, num(3)); }, "Subexpressions of HEXPR_LINTERM must be variables.");
}

TEST(ExpressionNodes, CopiesAreDeepAndCarryTheNodesData) {
  symtab.new_frame();
  const symbol_ref x_symbol = symtab.declare_variable(new hexpr_symobj("x", 0, 1, false, false));
  auto* x = new hexpr_var("x'");
  x->symbol_entry = x_symbol;
  auto* term = new hexpr_linterm;
  term->add_term(3.0, var("y"));
  hexpr* source = new hexpr_formula(new hexpr_and(
      new hexpr_leq(new hexpr_add(x, new hexpr_const(2, "c")), num(3)),
      new hexpr_gre(call("pow", {term, num(2)}), new hexpr_const(1, "true"))));

  hexpr* copy = copy_hexpr(source);
  const std::string before = dump(*source);
  EXPECT_EQ(dump(*copy), before);
  std::set<const hexpr*> source_nodes, copy_nodes;
  collect(source, source_nodes);
  collect(copy, copy_nodes);
  EXPECT_EQ(copy_nodes.size(), source_nodes.size());
  for (const hexpr* node : copy_nodes) EXPECT_EQ(source_nodes.count(node), 0u);

  const auto* copied_x = dynamic_cast<const hexpr_var*>(x->new_node());
  EXPECT_EQ(copied_x->symbol_entry, x_symbol);
  delete copied_x;
  delete source;
  EXPECT_EQ(dump(*copy), before);  // nothing of the source is reached any more
  delete copy;
  symtab.delete_last_frame();
}

TEST(ExpressionNodes, DeletionSkipsDetachedSlots) {
  destroyed = 0;
  auto* detached = new counted;
  auto* kept = new counted;
  auto* node = new hexpr_or(detached, new hexpr_not(kept));
  *node->subexprs_begin() = nullptr;
  delete node;
  EXPECT_EQ(destroyed, 1);
  delete detached;
  EXPECT_EQ(destroyed, 2);
}
