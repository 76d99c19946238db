// Translation of normalised trees into solver variables, tclauses and dclauses.
#include "hexpr/translate.hpp"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "base/error.hpp"
#include "hexpr/hexpr_nodes.hpp"
#include "lang/symtab.hpp"
#include "solver/solver.hpp"

int translation_phase = 0;

namespace {

// A variable used where a literal is needed stands for variable >= 1.
bound literal(krait_solver& s, const translation_result& r) { return r.var != 0 ? s.make_bound(r.var, 2, 1.0) : r.b; }

translation_result of_var(u32 v) { return {v, {}}; }
translation_result of_bound(bound b) { return {0, b}; }

// The variable of an arithmetic operand; a Boolean literal has no place there.
u32 operand(krait_solver& s, hexpr* child, u32 step, u32 polarity, const char* owner) {
  const translation_result r = child->hexpr2krait(s, step, polarity);
  if (r.var == 0) error("Subexpression of an %s node is a bound.", owner);
  return r.var;
}

// The name of the symbol that stands for solver variable v: "V_" and v, after a '$' that no
// identifier of the input can hold, so that it never meets a user's name; "+" or "-" in front
// for an upper- or lower-bound literal.
std::string helper_name(int kind, u32 v) {
  return std::string(kind == 1 ? "+" : kind == 2 ? "-" : "") + "$V_" + std::to_string(v);
}

// Binds the node to the symbol `name` (made with `make` when there is none yet).
template <class make_symbol>
hexpr_symobj& bind_symbol(symbol_ref& entry, hexpr* node, const std::string& name, make_symbol make) {
  symbol_ref found = symtab.lookup(name);
  if (found == no_symbol()) found = symtab.declare_helper(make());
  entry = found;
  (*found)->users.push_back(node);
  return **found;
}

// While TRANS is translated, the result of an operation is named in the symbol table so that
// its instances at consecutive steps are linked like those of a declared variable.
void register_result(krait_solver& s, hexpr_n_ary_node* node, u32 step, const translation_result& r) {
  if (translation_phase != 2) return;
  const u32 v = r.var != 0 ? r.var : r.b.var;
  const int kind = r.var != 0 ? 0 : r.b.is_lower ? 2 : 1;
  bool mismatch = false;
  if (node->symbol_entry == no_symbol()) {
    const std::string name = helper_name(kind, v);
    bind_symbol(node->symbol_entry, node, name, [&] {
      hexpr_symobj* record = new hexpr_symobj(name, 0.0, 0.0, true, false, true);
      record->instances.push_back(static_cast<int>(v));
      record->aux_kind = kind;
      return record;
    });
  } else {
    hexpr_symobj& symbol = **node->symbol_entry;
    if (step >= symbol.instances.size()) {
      symbol.instances.push_back(static_cast<int>(v));
      mismatch = kind != symbol.aux_kind;
    }
  }
  const std::vector<int>& instances = (*node->symbol_entry)->instances;
  if (instances.size() < 2) return;
  const u32 p = static_cast<u32>(instances[instances.size() - 2]);
  // A result of another kind at this step (say a bound where a variable was) is not a copy.
  s.vars[v].prev_var = mismatch ? 0 : p;
  s.vars[p].next_var = mismatch ? 0 : v;
}

}  // namespace

u32 instance_of(krait_solver& solver, hexpr_symobj& symbol, u32 index) {
  // Each new instance follows the one before it, so shifting can step through them one by one;
  // its order key is its own step, whatever step is being translated.
  const u32 translated_step = solver.order_key_counter;
  while (symbol.instances.size() <= index) {
    solver.order_key_counter = static_cast<u32>(symbol.instances.size());
    const u32 v = symbol.is_int ? solver.define_int_var(symbol.lower, symbol.upper)
                                : solver.define_float_var(symbol.lower, symbol.upper);
    if (!symbol.instances.empty()) {
      const u32 previous = static_cast<u32>(symbol.instances.back());
      solver.vars[v].prev_var = previous;
      solver.vars[previous].next_var = v;
    }
    symbol.instances.push_back(static_cast<int>(v));
  }
  solver.order_key_counter = translated_step;
  return static_cast<u32>(symbol.instances[index]);
}

translation_result hexpr::hexpr2krait(krait_solver&, u32, u32) { error("Missing member function 'hexpr2krait'."); }

translation_result hexpr_formula::hexpr2krait(krait_solver& s, u32 step, u32 polarity) {
  const translation_result r = children[0]->hexpr2krait(s, step, polarity);
  s.add_unit_dclause(literal(s, r));
  return r;
}

translation_result hexpr_constraint::hexpr2krait(krait_solver& s, u32 step, u32 polarity) {
  return children[0]->hexpr2krait(s, step, polarity);
}

translation_result hexpr_relop::hexpr2krait(krait_solver& s, u32 step, u32 polarity) {
  const translation_result left = children[0]->hexpr2krait(s, step, polarity);
  if (left.var == 0) error("Subexpression of an hexpr_relop node is a bound.");
  if (children[1]->get_opname() != HEXPR_CONST) error("Relop has non-constant righthand side.");
  const hexpr_kind kind = get_opname();
  if (kind == HEXPR_EQU) error("Unexpected case HEXPR_EQU in hexpr_relop::hexpr2krait.");
  if (kind == HEXPR_NEQ) error("Unexpected case HEXPR_NEQ in hexpr_relop::hexpr2krait.");
  const double value = static_cast<const hexpr_const*>(children[1])->value;
  const u32 relation = kind == HEXPR_LEQ ? 0 : kind == HEXPR_LES ? 1 : kind == HEXPR_GEQ ? 2 : 3;
  return of_bound(s.make_bound(left.var, relation, value));
}

translation_result hexpr_not::hexpr2krait(krait_solver& s, u32 step, u32 polarity) {
  const translation_result r = children[0]->hexpr2krait(s, step, toggle_polarity(polarity));
  return of_bound(s.negate_bound(literal(s, r)));
}

namespace {

translation_result connective(krait_solver& s, hexpr_n_ary_node* node, const std::vector<hexpr*>& children,
                              u32 step, u32 polarity, bool is_or) {
  std::vector<bound> literals;
  literals.reserve(children.size());
  for (hexpr* child : children) literals.push_back(literal(s, child->hexpr2krait(s, step, polarity)));
  const translation_result r = of_bound(is_or ? s.define_or(literals, polarity) : s.define_and(literals, polarity));
  register_result(s, node, step, r);
  return r;
}

}  // namespace

translation_result hexpr_and::hexpr2krait(krait_solver& s, u32 step, u32 polarity) {
  return connective(s, this, children, step, polarity, false);
}

translation_result hexpr_or::hexpr2krait(krait_solver& s, u32 step, u32 polarity) {
  return connective(s, this, children, step, polarity, true);
}

translation_result hexpr_add::hexpr2krait(krait_solver& s, u32 step, u32 polarity) {
  if (children.size() != 2) {
    error("Discovered hexpr_add node with %d subexpressions in hexpr_add::hexpr2krait.", static_cast<int>(children.size()));
  }
  const u32 y = operand(s, children[0], step, polarity, "hexpr_add");
  const u32 z = operand(s, children[1], step, polarity, "hexpr_add");
  const translation_result r = of_var(s.add_tclause(KRAIT_SUM, y, z, 0.0));
  register_result(s, this, step, r);
  return r;
}

translation_result hexpr_mul::hexpr2krait(krait_solver& s, u32 step, u32 polarity) {
  if (children.size() != 2) {
    error("Discovered hexpr_mul node with %d subexpressions in hexpr_mul::hexpr2krait.", static_cast<int>(children.size()));
  }
  const u32 y = operand(s, children[0], step, polarity, "hexpr_mul");
  translation_result r;
  if (children[1]->get_opname() == HEXPR_CONST) {
    // A constant factor needs no variable of its own.
    r = of_var(s.add_tclause(KRAIT_SCALE, y, 0, static_cast<const hexpr_const*>(children[1])->value));
  } else {
    r = of_var(s.add_tclause(KRAIT_PRODUCT, y, operand(s, children[1], step, polarity, "hexpr_mul"), 0.0));
  }
  register_result(s, this, step, r);
  return r;
}

translation_result hexpr_function::hexpr2krait(krait_solver& s, u32 step, u32 polarity) {
  const bool with_exponent = name == "pow" || name == "nrt";
  const u32 y = operand(s, children[0], step, polarity, "hexpr_function");
  u32 z = 0;
  if (!with_exponent && children.size() > 1) z = operand(s, children[1], step, polarity, "hexpr_function");
  const double c = with_exponent ? static_cast<const hexpr_const*>(children[1])->value : 0.0;
  static const std::pair<const char*, u32> functors[] = {{"abs", KRAIT_ABS}, {"exp", KRAIT_EXP}, {"cos", KRAIT_COS},
                                                         {"min", KRAIT_MIN}, {"max", KRAIT_MAX}, {"pow", KRAIT_POW},
                                                         {"nrt", KRAIT_NRT}};
  const auto* found = std::find_if(std::begin(functors), std::end(functors), [&](const auto& f) { return name == f.first; });
  if (found == std::end(functors)) error("Unexpected case in hexpr_function::hexpr2krait.");
  const u32 functor = found->second;
  const translation_result r = of_var(s.add_tclause(functor, y, z, c));
  register_result(s, this, step, r);
  return r;
}

translation_result hexpr_const::hexpr2krait(krait_solver& s, u32, u32) {
  if (symbol_entry != no_symbol()) return of_var(static_cast<u32>((*symbol_entry)->instances.back()));
  const u32 v = s.define_constant_var(value);
  const std::string name = helper_name(0, v);
  bind_symbol(symbol_entry, this, name, [&] {
    hexpr_symobj* record = new hexpr_symobj(name, value, value, true, true, true);
    record->instances.push_back(static_cast<int>(v));
    // A constant is its own instance at every step.
    s.vars[v].prev_var = v;
    s.vars[v].next_var = v;
    return record;
  });
  return of_var(v);
}

translation_result hexpr_var::hexpr2krait(krait_solver& s, u32 step, u32) {
  if (symbol_entry == no_symbol()) {
    symbol_entry = symtab.lookup(name);
    if (symbol_entry == no_symbol()) error("Variable '%s' is undeclared.", name.c_str());
    (*symbol_entry)->users.push_back(this);
  }
  hexpr_symobj& symbol = **symbol_entry;
  const u32 index = symbol.is_static ? 0 : primed ? step + 1 : step;
  return of_var(instance_of(s, symbol, index));
}
