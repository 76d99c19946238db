#include "hexpr/hexpr.hpp"

#include "base/error.hpp"
#include "hexpr/hexpr_nodes.hpp"

hexpr_inner_node::~hexpr_inner_node() {
  for (hexpr* child : children) delete child;  // detached slots are null
}

void hexpr_inner_node::append_within(hexpr* child, std::size_t limit, const char* refusal) {
  if (children.size() >= limit) error("%s", refusal);
  children.push_back(child);
}

void hexpr_1_ary_node::add_subexpr(hexpr* child) {
  append_within(child, 1, "Can't add a second subexpression to a unary node.");
}

void hexpr_2_ary_node::add_subexpr(hexpr* child) {
  append_within(child, 2, "Can't add a third subexpression to a binary node.");
}

void hexpr_3_ary_node::add_subexpr(hexpr* child) {
  append_within(child, 3, "Can't add a fourth subexpression to a ternary node.");
}

hexpr* copy_hexpr(const hexpr* e) {
  hexpr* copy = e->new_node();
  if (e->is_leaf()) return copy;
  const auto* source = static_cast<const hexpr_inner_node*>(e);
  auto* target = static_cast<hexpr_inner_node*>(copy);
  for (auto slot = source->subexprs_begin(); slot != source->subexprs_end(); ++slot)
    target->add_subexpr(copy_hexpr(*slot));
  return copy;
}

// ---- Leaves ----

hexpr* hexpr_const::new_node() const {
  auto* copy = new hexpr_const(value, text);
  copy->literal = literal;
  copy->symbol_entry = symbol_entry;
  return copy;
}

hexpr_var::hexpr_var(const std::string& written) : name(written) {
  if (name.size() > 1 && name.back() == '\'') {
    name.pop_back();
    primed = true;
  }
}

hexpr* hexpr_var::new_node() const {
  auto* copy = new hexpr_var;
  copy->name = name;
  copy->primed = primed;
  copy->symbol_entry = symbol_entry;
  return copy;
}

// ---- Linear terms ----

hexpr* hexpr_linterm::new_node() const {
  auto* copy = new hexpr_linterm;
  copy->coefficients = coefficients;
  return copy;
}

void hexpr_linterm::add_term(double coefficient, hexpr* variable) {
  if (variable->get_opname() != HEXPR_VAR) error("Subexpressions of HEXPR_LINTERM must be variables.");
  coefficients.push_back(coefficient);
  add_subexpr(variable);
}
