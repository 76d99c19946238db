// The normal form: no parentheses, unary minus, subtraction, implication or exclusive or;
// flattened, sorted and folded sums, products and connectives; relations between an expression
// and a constant, wrapped into constraints.
#include "hexpr/preprocess.hpp"

#include <cmath>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "base/error.hpp"
#include "base/numbers.hpp"
#include "hexpr/hexpr_nodes.hpp"
#include "interval/endpoint.hpp"

namespace {

hexpr_kind kind(const hexpr* e) { return e->get_opname(); }
bool is_relation(hexpr_kind k) { return static_cast<unsigned>(k - HEXPR_EQU) < 6; }
bool is_const(const hexpr* e) { return kind(e) == HEXPR_CONST; }
double value_of(const hexpr* e) { return static_cast<const hexpr_const*>(e)->value; }
hexpr_inner_node* inner(hexpr* e) { return static_cast<hexpr_inner_node*>(e); }

hexpr* number(double value) { return new hexpr_const(value, ""); }
hexpr* truth(bool value) { return new hexpr_const(value ? 1.0 : 0.0, value ? "true" : "false"); }

// A variable's place in sorted sums, products and connectives: its name, and a quote if primed.
std::string sort_key(const hexpr* e) {
  const hexpr_var* v = static_cast<const hexpr_var*>(e);
  return v->primed ? v->name + "'" : v->name;
}

// Detaches every child of `node`, in order.
std::vector<hexpr*> take_children(hexpr* node) {
  std::vector<hexpr*> taken;
  for (hexpr** slot = inner(node)->subexprs_begin(); slot != inner(node)->subexprs_end(); ++slot) {
    taken.push_back(*slot);
    *slot = nullptr;
  }
  return taken;
}

// The children of `node` with the children of same-kind children in their place; deletes
// `node` and the absorbed children.
std::vector<hexpr*> flattened(hexpr* node) {
  const hexpr_kind self = kind(node);
  std::vector<hexpr*> flat;
  for (hexpr* child : take_children(node)) {
    if (kind(child) == self) {
      for (hexpr* grandchild : take_children(child)) flat.push_back(grandchild);
      delete child;
    } else {
      flat.push_back(child);
    }
  }
  delete node;
  return flat;
}

template <class node_class>
hexpr* build(const std::vector<hexpr*>& children) {
  hexpr* node = new node_class;
  for (hexpr* c : children) inner(node)->add_subexpr(c);
  return node;
}

void delete_all(const std::vector<hexpr*>& nodes) {
  for (hexpr* n : nodes) delete n;
}

// Disjunction (is_or) or conjunction: flattened, literals merged by key, constants folded.
hexpr* simplify_junction(hexpr* node, bool is_or) {
  std::map<std::string, double> literals;  // key -> +1, -1, or 0 for both
  std::vector<hexpr*> rest;
  for (hexpr* child : flattened(node)) {
    const bool negated_var = kind(child) == HEXPR_NOT && kind(*inner(child)->subexprs_begin()) == HEXPR_VAR;
    if (kind(child) != HEXPR_VAR && !negated_var) {
      rest.push_back(child);
      continue;
    }
    const double polarity = negated_var ? -1.0 : 1.0;
    const auto [it, inserted] = literals.try_emplace(sort_key(negated_var ? *inner(child)->subexprs_begin() : child),
                                                     polarity);
    if (!inserted && it->second != polarity) it->second = 0.0;
    delete child;
  }
  for (const auto& [key, polarity] : literals) {
    if (polarity == 0.0) {  // x together with not x
      delete_all(rest);
      return truth(is_or);
    }
    hexpr* v = new hexpr_var(key);
    rest.push_back(polarity > 0 ? v : new hexpr_not(v));
  }
  std::vector<hexpr*> kept;
  bool decided = false;
  for (hexpr* child : rest) {
    if (!is_const(child)) {
      kept.push_back(child);
      continue;
    }
    const double v = value_of(child);
    if (v != 0.0 && v != 1.0) error("Constant value '%f' appears as subexpression of a Boolean operator.", v);
    if ((v == 1.0) == is_or) decided = true;  // true in a disjunction, false in a conjunction
    delete child;
  }
  if (decided) {
    delete_all(kept);
    return truth(is_or);
  }
  if (kept.empty()) return truth(!is_or);
  if (kept.size() == 1) return kept[0];
  return is_or ? build<hexpr_or>(kept) : build<hexpr_and>(kept);
}

// (a + b) * c as a*c + b*c: every choice of one summand per sum, times the other factors.
void expand(const std::vector<hexpr*>& factors, std::size_t i, std::vector<const hexpr*>& partial, hexpr* sum) {
  if (i == factors.size()) {
    hexpr* product = new hexpr_mul;
    for (const hexpr* f : partial) inner(product)->add_subexpr(copy_hexpr(f));
    inner(sum)->add_subexpr(product);
    return;
  }
  if (kind(factors[i]) == HEXPR_ADD) {
    for (hexpr* const* s = inner(factors[i])->subexprs_begin(); s != inner(factors[i])->subexprs_end(); ++s) {
      partial.push_back(*s);
      expand(factors, i + 1, partial, sum);
      partial.pop_back();
    }
  } else {
    partial.push_back(factors[i]);
    expand(factors, i + 1, partial, sum);
    partial.pop_back();
  }
}

hexpr* expand_product(hexpr* product) {
  std::vector<hexpr*> factors(inner(product)->subexprs_begin(), inner(product)->subexprs_end());
  std::vector<const hexpr*> partial;
  hexpr* sum = new hexpr_add;
  expand(factors, 0, partial, sum);
  delete product;
  return preprocess_hexpr(sum);
}

// The relation of the same kind (or mirrored) between `left` and the constant `right`.
hexpr* relation(hexpr_kind k, hexpr* left, double right) {
  hexpr* r;
  switch (k) {
    case HEXPR_EQU: r = new hexpr_equ; break;
    case HEXPR_NEQ: r = new hexpr_neq; break;
    case HEXPR_LEQ: r = new hexpr_leq; break;
    case HEXPR_LES: r = new hexpr_les; break;
    case HEXPR_GEQ: r = new hexpr_geq; break;
    default: r = new hexpr_gre; break;
  }
  inner(r)->add_subexpr(left);
  inner(r)->add_subexpr(number(right == 0.0 ? 0.0 : right));
  return r;
}

hexpr_kind mirrored(hexpr_kind k) {
  switch (k) {
    case HEXPR_GRE: return HEXPR_LES;
    case HEXPR_LES: return HEXPR_GRE;
    case HEXPR_GEQ: return HEXPR_LEQ;
    case HEXPR_LEQ: return HEXPR_GEQ;
    default: return k;
  }
}

// Every relation becomes: expression, relation, constant; a constant factor of the expression
// is divided out, and a comparison of two constants is decided.
hexpr* simplify_relation(hexpr* node) {
  const hexpr_kind k = kind(node);
  hexpr** slots = inner(node)->subexprs_begin();
  hexpr* left = (new hexpr_sub(slots[0], slots[1]))->simplify();
  slots[0] = slots[1] = nullptr;
  double c = 0.0;
  if (kind(left) == HEXPR_ADD && is_const(inner(left)->subexprs_end()[-1])) {
    std::vector<hexpr*> terms = take_children(left);
    delete left;
    c = value_of(terms.back());
    delete terms.back();
    terms.pop_back();
    left = terms.empty() ? number(0.0) : terms.size() == 1 ? terms[0] : build<hexpr_add>(terms);
  }
  slots[0] = left;
  slots[1] = number(c == 0.0 ? 0.0 : -c);
  const double right = value_of(slots[1]);

  if (kind(left) == HEXPR_MUL && is_const(inner(left)->subexprs_end()[-1])) {
    const double d1 = value_of(inner(left)->subexprs_end()[-1]);
    hexpr* rest = left->new_node();
    for (hexpr* const* f = inner(left)->subexprs_begin(); f + 1 != inner(left)->subexprs_end(); ++f) {
      inner(rest)->add_subexpr(copy_hexpr(*f));
    }
    const bool flip = d1 < 0 && k != HEXPR_EQU && k != HEXPR_NEQ;
    hexpr* replacement = relation(flip ? mirrored(k) : k, rest->simplify(), right / d1);
    delete node;
    return k == HEXPR_EQU || k == HEXPR_NEQ ? simplify_relation(replacement) : replacement;
  }
  if (is_const(left)) {
    const double l = value_of(left), r = right;
    bool holds;
    switch (k) {
      case HEXPR_GRE: holds = !(l <= r); break;
      case HEXPR_GEQ: holds = !(l < r); break;
      case HEXPR_LES: holds = !(r <= l); break;
      case HEXPR_LEQ: holds = !(r < l); break;
      case HEXPR_EQU: holds = l == r; break;
      default: holds = l != r; break;
    }
    delete node;
    return truth(holds);
  }
  if (k != HEXPR_EQU && k != HEXPR_NEQ) return node;
  // a = b is a <= b and a >= b; a != b is a < b or a > b.
  hexpr* a = slots[0];
  slots[0] = nullptr;
  const bool equ = k == HEXPR_EQU;
  hexpr* first = relation(equ ? HEXPR_LEQ : HEXPR_LES, a, right);
  hexpr* second = relation(equ ? HEXPR_GEQ : HEXPR_GRE, copy_hexpr(a), right);
  delete node;
  return equ ? static_cast<hexpr*>(new hexpr_and(first, second)) : new hexpr_or(first, second);
}

// Left-nested chains of two-child sums and products.
hexpr* binarize_copy(const hexpr* e) {
  if (e->is_leaf()) return copy_hexpr(e);
  const hexpr_inner_node* n = static_cast<const hexpr_inner_node*>(e);
  const bool chain = (kind(e) == HEXPR_ADD || kind(e) == HEXPR_MUL) && n->subexpr_count() > 2;
  hexpr* result = e->new_node();
  for (hexpr* const* c = n->subexprs_begin(); c != n->subexprs_end(); ++c) {
    if (chain && inner(result)->subexpr_count() == 2) {
      hexpr* pair = result;
      result = e->new_node();
      inner(result)->add_subexpr(pair);
    }
    inner(result)->add_subexpr(binarize_copy(*c));
  }
  return result;
}

bool is_scaled_var(const hexpr* e) {
  if (kind(e) != HEXPR_MUL) return false;
  const hexpr_inner_node* n = static_cast<const hexpr_inner_node*>(e);
  return n->subexpr_count() == 2 && kind(n->subexprs_begin()[0]) == HEXPR_VAR && is_const(n->subexprs_begin()[1]);
}

bool is_linear_term(const hexpr* e) {
  if (kind(e) == HEXPR_VAR || is_scaled_var(e)) return true;
  if (kind(e) != HEXPR_ADD) return false;
  const hexpr_inner_node* n = static_cast<const hexpr_inner_node*>(e);
  for (hexpr* const* c = n->subexprs_begin(); c != n->subexprs_end(); ++c) {
    if (kind(*c) != HEXPR_VAR && !is_scaled_var(*c)) return false;
  }
  return true;
}

hexpr* make_linterm(const hexpr* e) {
  hexpr_linterm* term = new hexpr_linterm;
  auto add = [&](const hexpr* t) {
    if (kind(t) == HEXPR_VAR) {
      term->add_term(1.0, copy_hexpr(t));
    } else {
      const hexpr_inner_node* n = static_cast<const hexpr_inner_node*>(t);
      term->add_term(value_of(n->subexprs_begin()[1]), copy_hexpr(n->subexprs_begin()[0]));
    }
  };
  if (kind(e) == HEXPR_ADD) {
    for (hexpr* const* c = static_cast<const hexpr_inner_node*>(e)->subexprs_begin();
         c != static_cast<const hexpr_inner_node*>(e)->subexprs_end(); ++c) {
      add(*c);
    }
  } else {
    add(e);
  }
  return term;
}

// The relation for translation, with its linear form alongside when it has one.
hexpr* make_constraint(hexpr* rel) {
  hexpr* constraint = new hexpr_constraint;
  inner(constraint)->add_subexpr(binarize_copy(rel));
  const hexpr* left = inner(rel)->subexprs_begin()[0];
  if (is_linear_term(left)) {
    hexpr* linear = rel->new_node();
    inner(linear)->add_subexpr(make_linterm(left));
    inner(linear)->add_subexpr(copy_hexpr(inner(rel)->subexprs_begin()[1]));
    inner(constraint)->add_subexpr(linear);
  }
  delete rel;
  return constraint;
}

}  // namespace

hexpr* prepare_hexpr(hexpr* root) { return wrap_constraints(preprocess_hexpr(root)); }

hexpr* preprocess_hexpr(hexpr* node) {
  if (node->is_leaf()) return node;
  for (hexpr** slot = inner(node)->subexprs_begin(); slot != inner(node)->subexprs_end(); ++slot) {
    *slot = preprocess_hexpr(*slot);
  }
  return node->simplify();
}

hexpr* wrap_constraints(hexpr* node) {
  if (node->is_leaf()) return node;
  if (is_relation(kind(node))) return make_constraint(node);
  for (hexpr** slot = inner(node)->subexprs_begin(); slot != inner(node)->subexprs_end(); ++slot) {
    *slot = is_relation(kind(*slot)) ? make_constraint(*slot) : wrap_constraints(*slot);
  }
  return node;
}

hexpr* hexpr_parentheses::simplify() {
  hexpr* child = children[0];
  children[0] = nullptr;
  delete this;
  return child;
}

hexpr* hexpr_uminus::simplify() {
  hexpr* product = new hexpr_mul(children[0], number(-1.0));
  children[0] = nullptr;
  delete this;
  return product->simplify();
}

hexpr* hexpr_sub::simplify() {
  hexpr* sum = new hexpr_add(children[0], new hexpr_mul(children[1], number(-1.0)));
  children[0] = children[1] = nullptr;
  delete this;
  return preprocess_hexpr(sum);
}

hexpr* hexpr_imp::simplify() {
  hexpr* either = new hexpr_or(new hexpr_not(children[0]), children[1]);
  children[0] = children[1] = nullptr;
  delete this;
  return preprocess_hexpr(either);
}

hexpr* hexpr_xor::simplify() {
  hexpr *a = children[0], *b = children[1];
  children[0] = children[1] = nullptr;
  hexpr* both = new hexpr_and(new hexpr_or(a, b),
                              new hexpr_or(new hexpr_not(copy_hexpr(a)), new hexpr_not(copy_hexpr(b))));
  delete this;
  return preprocess_hexpr(both);
}

hexpr* hexpr_nxor::simplify() {
  hexpr *a = children[0], *b = children[1];
  children[0] = children[1] = nullptr;
  hexpr* both = new hexpr_and(new hexpr_or(new hexpr_not(a), b),
                              new hexpr_or(copy_hexpr(a), new hexpr_not(copy_hexpr(b))));
  delete this;
  return preprocess_hexpr(both);
}

hexpr* hexpr_or::simplify() { return simplify_junction(this, true); }

hexpr* hexpr_and::simplify() { return simplify_junction(this, false); }

hexpr* hexpr_add::simplify() {
  std::map<std::string, double> coefficients;  // "" holds the constant term
  std::vector<hexpr*> rest;
  auto collect = [&](const std::string& key, double c) {
    const double sum = (coefficients[key] += c);
    if (sum == 0.0) coefficients.erase(key);
  };
  for (hexpr* child : flattened(this)) {
    if (is_const(child)) {
      collect("", value_of(child));
    } else if (kind(child) == HEXPR_VAR) {
      collect(sort_key(child), 1.0);
    } else if (is_scaled_var(child)) {
      collect(sort_key(inner(child)->subexprs_begin()[0]), value_of(inner(child)->subexprs_begin()[1]));
    } else {
      rest.push_back(child);
      continue;
    }
    delete child;
  }
  double k = 0.0;
  for (const auto& [key, c] : coefficients) {
    if (key.empty()) {
      k = c;
    } else {
      rest.push_back(c == 1.0 ? static_cast<hexpr*>(new hexpr_var(key)) : new hexpr_mul(new hexpr_var(key), number(c)));
    }
  }
  if (rest.empty()) return number(k);
  if (k == 0.0 && rest.size() == 1) return rest[0];
  // The constant term of a normalised sum is always its last child.
  if (k != 0.0) rest.push_back(number(k));
  return build<hexpr_add>(rest);
}

hexpr* hexpr_mul::simplify() {
  double k = 1.0;
  std::multiset<std::string> variables;
  std::vector<hexpr*> rest;
  for (hexpr* child : flattened(this)) {
    if (is_const(child)) {
      k *= value_of(child);
    } else if (kind(child) == HEXPR_VAR) {
      variables.insert(sort_key(child));
    } else {
      rest.push_back(child);
      continue;
    }
    delete child;
  }
  for (const std::string& key : variables) rest.push_back(new hexpr_var(key));
  if (rest.empty()) return number(k);
  if (k == 0.0) {
    delete_all(rest);
    return number(0.0);
  }
  if (k == 1.0 && rest.size() == 1) return rest[0];
  if (k != 1.0) rest.push_back(number(k));
  hexpr* product = build<hexpr_mul>(rest);
  for (hexpr* factor : rest) {
    if (kind(factor) == HEXPR_ADD) return expand_product(product);
  }
  return product;
}

hexpr* hexpr_relop::simplify() { return simplify_relation(this); }

namespace {

// A constant power or root is folded only where the double result is the exact value; otherwise
// the node stays, and the solver's outward-rounded narrowing encloses the true value.
bool exact_power(double base, double exponent, double& result) {
  const double below = power_by_multiplication(base, exponent, true);
  const double above = power_by_multiplication(base, exponent, false);
  clear_fp_exceptions();
  result = below;
  return below == above && std::isfinite(below);
}

// The candidate pow(|b|, 1/n) (negated for a negative b and odd n) or one of its neighbours,
// raised to n exactly, must give b back.
bool exact_root(double base, double n, double& result) {
  const bool even = std::fmod(n, 2.0) == 0.0;
  if (!std::isfinite(base) || (base < 0.0 && even)) return false;
  double root = std::pow(std::fabs(base), 1.0 / n);
  if (base < 0.0) root = -root;
  bool found = false;
  for (double candidate : {root, std::nextafter(root, -HUGE_VAL), std::nextafter(root, HUGE_VAL)}) {
    double power;
    if (exact_power(candidate, n, power) && power == base && (!even || candidate >= 0.0)) {
      result = candidate;
      found = true;
      break;
    }
  }
  clear_fp_exceptions();
  return found;
}

}  // namespace

hexpr* hexpr_function::simplify() {
  const std::size_t n = children.size();
  const bool binary = name == "min" || name == "max" || name == "pow" || name == "nrt";
  if (binary && n < 2) error("Operator '%s' requires two arguments.", name.c_str());
  auto replace = [&](hexpr* result) {
    delete this;
    return result;
  };
  const bool constant_argument = n >= 1 && is_const(children[0]);
  if (name == "abs" && constant_argument) return replace(number(std::fabs(value_of(children[0]))));
  if (name == "exp" && constant_argument && value_of(children[0]) == 0.0) return replace(number(1.0));
  if (name == "sin") {
    // sin x = cos(x - pi/2); the new sum is left as it is.
    hexpr* cosine = new hexpr_function("cos");
    inner(cosine)->add_subexpr(new hexpr_add(children[0], number(-1.5707963267948966)));
    children[0] = nullptr;
    return replace(cosine);
  }
  if ((name == "min" || name == "max") && constant_argument && is_const(children[1])) {
    const double a = value_of(children[0]), b = value_of(children[1]);
    return replace(number(name == "min" ? (a < b ? a : b) : (a > b ? a : b)));
  }
  if (name == "pow") {
    const double e = value_of(children[1]);
    double folded;
    if (constant_argument && exact_power(value_of(children[0]), e, folded)) return replace(number(folded));
    if (e == 0.0) return replace(number(1.0));
    if (e == 1.0) {
      hexpr* base = children[0];
      children[0] = nullptr;
      return replace(base);
    }
  }
  double folded;
  if (name == "nrt" && constant_argument && exact_root(value_of(children[0]), value_of(children[1]), folded)) {
    return replace(number(folded));
  }
  return this;
}
