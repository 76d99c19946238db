#include "certify/formula.hpp"

#include <cctype>
#include <stdexcept>

#include "hexpr/hexpr_nodes.hpp"
#include "lang/symtab.hpp"

namespace certify {

bool is_relation(op kind) { return kind >= op::equal && kind <= op::greater; }
bool is_term(op kind) { return kind < op::equal; }

std::string variable::label(bool with_step) const {
  return with_step && !is_static ? name + "@" + std::to_string(step) : name;
}

mpq_class literal_value(const std::string& text) {
  std::size_t i = 0;
  bool negative = false;
  while (i < text.size() && text[i] == '-') {
    negative = !negative;
    ++i;
  }
  std::string digits;
  long scale = 0;  // value = digits * 10^scale
  bool fraction = false;
  for (; i < text.size() && (std::isdigit(static_cast<unsigned char>(text[i])) || text[i] == '.'); ++i) {
    if (text[i] == '.') {
      fraction = true;
    } else {
      digits += text[i];
      if (fraction) --scale;
    }
  }
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) scale += std::stol(text.substr(i + 1));
  if (digits.empty()) throw std::invalid_argument("not a number: " + text);
  mpz_class ten_power;
  mpz_ui_pow_ui(ten_power.get_mpz_t(), 10, static_cast<unsigned long>(scale < 0 ? -scale : scale));
  mpq_class value(mpz_class(digits, 10));
  if (scale < 0) {
    value /= ten_power;
  } else {
    value *= ten_power;
  }
  value.canonicalize();
  return negative ? mpq_class(-value) : value;
}

namespace {

[[noreturn]] void unsupported(const std::string& what) { throw std::invalid_argument(what); }

const hexpr& child(const hexpr& e, std::size_t i) {
  return *static_cast<const hexpr_inner_node&>(e).subexprs_begin()[i];
}
std::size_t child_count(const hexpr& e) { return static_cast<const hexpr_inner_node&>(e).subexpr_count(); }

op relation_of(hexpr_kind kind) {
  switch (kind) {
    case HEXPR_EQU: return op::equal;
    case HEXPR_NEQ: return op::not_equal;
    case HEXPR_LEQ: return op::less_equal;
    case HEXPR_LES: return op::less;
    case HEXPR_GEQ: return op::greater_equal;
    default: return op::greater;
  }
}

}  // namespace

int formula::add(node n) {
  nodes.push_back(std::move(n));
  return static_cast<int>(nodes.size()) - 1;
}

int formula::variable_index(const std::string& name, bool primed, unsigned step) {
  const symbol_ref entry = symtab.lookup(name);
  if (entry == no_symbol() || (*entry)->hidden) unsupported("undeclared variable " + name);
  const hexpr_symobj& record = **entry;
  const unsigned at = record.is_static ? 0 : step + (primed ? 1 : 0);
  for (std::size_t i = 0; i < vars.size(); ++i)
    if (vars[i].name == name && vars[i].step == at) return static_cast<int>(i);
  variable v;
  v.name = name;
  v.step = at;
  v.is_int = record.is_int;
  v.is_static = record.is_static;
  v.lower = literal_value(record.lower_text);
  v.upper = literal_value(record.upper_text);
  v.lower_read = record.lower;
  v.upper_read = record.upper;
  vars.push_back(v);
  return static_cast<int>(vars.size()) - 1;
}

int formula::convert(const hexpr& e, unsigned step, int part, bool as_formula) {
  const hexpr_kind kind = e.get_opname();
  node n{};
  n.part = part;
  auto operands = [&](bool formulae) {
    for (std::size_t i = 0; i < child_count(e); ++i) n.args.push_back(convert(child(e, i), step, part, formulae));
  };
  switch (kind) {
    case HEXPR_PARENTHESES: return convert(child(e, 0), step, part, as_formula);
    case HEXPR_NOT:
    case HEXPR_AND:
    case HEXPR_OR:
    case HEXPR_XOR:
    case HEXPR_NXOR:
    case HEXPR_IMP:
      if (!as_formula) unsupported("a formula used as a number");
      operands(true);
      n.kind = kind == HEXPR_NOT ? op::negation : kind == HEXPR_AND ? op::conjunction
             : kind == HEXPR_OR  ? op::disjunction : kind == HEXPR_IMP ? op::implication : op::exclusive_or;
      if (kind == HEXPR_NXOR) return add(node{op::negation, {add(n)}, -1, 0, "", 0, part});
      return add(n);
    case HEXPR_EQU: case HEXPR_NEQ: case HEXPR_LEQ: case HEXPR_LES: case HEXPR_GEQ: case HEXPR_GRE:
      if (!as_formula) unsupported("a relation used as a number");
      operands(false);
      n.kind = relation_of(kind);
      return add(n);
    default: break;
  }
  // A term; where a formula is expected it holds when it is at least 1.
  if (as_formula) return add(node{op::truth, {convert(e, step, part, false)}, -1, 0, "", 0, part});
  switch (kind) {
    case HEXPR_VAR: {
      const auto& v = static_cast<const hexpr_var&>(e);
      n.kind = op::variable;
      n.var = variable_index(v.name, v.primed, step);
      return add(n);
    }
    case HEXPR_CONST: {
      const auto& c = static_cast<const hexpr_const&>(e);
      n.kind = op::number;
      n.value = c.literal.empty() ? mpq_class(c.value) : literal_value(c.literal);
      n.written = !c.text.empty() ? c.text : !c.literal.empty() ? c.literal : n.value.get_str();
      n.read = c.value;
      return add(n);
    }
    case HEXPR_UMINUS: n.kind = op::negate; break;
    case HEXPR_ADD: n.kind = op::add; break;
    case HEXPR_SUB: n.kind = op::subtract; break;
    case HEXPR_MUL: n.kind = op::multiply; break;
    case HEXPR_FUNCTION: {
      const std::string& name = static_cast<const hexpr_function&>(e).name;
      if (name == "pow" || name == "nrt") {
        n.kind = name == "pow" ? op::power : op::root;
        n.args.push_back(convert(child(e, 0), step, part, false));
        const auto& exponent = static_cast<const hexpr_const&>(child(e, 1));
        n.exponent = mpz_class(exponent.literal.empty() ? mpq_class(exponent.value) : literal_value(exponent.literal));
        if (n.kind == op::root && !n.exponent.fits_ulong_p()) unsupported("a root of order beyond 64 bits");
        return add(n);
      }
      n.kind = name == "abs" ? op::abs : name == "exp" ? op::exp : name == "sin" ? op::sin
             : name == "cos" ? op::cos : name == "min" ? op::min : op::max;
      break;
    }
    default: unsupported("an expression of kind " + std::to_string(kind));
  }
  operands(false);
  // Sums and products may hold more than two operands; the evaluation wants pairs.
  while (n.args.size() > 2) {
    node pair{n.kind, {n.args[0], n.args[1]}, -1, 0, "", 0, part};
    n.args.erase(n.args.begin());
    n.args[0] = add(pair);
  }
  return add(n);
}

formula formula::plain(const hexpr& root) {
  formula f;
  f.parts = {""};
  f.root = f.convert(child(root, 0), 0, 0, true);
  return f;
}

formula formula::unwound(const hexpr& root, unsigned depth) {
  formula f;
  f.with_steps = true;
  node all{op::conjunction, {}, -1, 0, "", 0, -1};
  f.parts.push_back("INIT");
  all.args.push_back(f.convert(child(root, 0), 0, 0, true));
  for (unsigned i = 0; i < depth; ++i) {
    f.parts.push_back("TRANS at step " + std::to_string(i));
    all.args.push_back(f.convert(child(root, 1), i, static_cast<int>(f.parts.size()) - 1, true));
  }
  f.parts.push_back("TARGET at step " + std::to_string(depth));
  all.args.push_back(f.convert(child(root, 2), depth, static_cast<int>(f.parts.size()) - 1, true));
  f.root = f.add(all);
  return f;
}

namespace {

int precedence(op kind) {
  switch (kind) {
    case op::implication: return 1;
    case op::disjunction: return 2;
    case op::exclusive_or: return 3;
    case op::conjunction: return 4;
    case op::negation: return 5;
    case op::equal: case op::not_equal: case op::less_equal: case op::less:
    case op::greater_equal: case op::greater: return 6;
    case op::add: case op::subtract: return 7;
    case op::multiply: return 8;
    case op::negate: return 9;
    case op::power: return 10;
    default: return 11;
  }
}

const char* infix(op kind) {
  switch (kind) {
    case op::add: return " + ";
    case op::subtract: return " - ";
    case op::multiply: return " * ";
    case op::equal: return " = ";
    case op::not_equal: return " != ";
    case op::less_equal: return " <= ";
    case op::less: return " < ";
    case op::greater_equal: return " >= ";
    case op::greater: return " > ";
    case op::conjunction: return " and ";
    case op::disjunction: return " or ";
    case op::exclusive_or: return " xor ";
    case op::implication: return " -> ";
    default: return nullptr;
  }
}

const char* function_name(op kind) {
  switch (kind) {
    case op::exp: return "exp";
    case op::sin: return "sin";
    case op::cos: return "cos";
    case op::abs: return "abs";
    case op::min: return "min";
    case op::max: return "max";
    default: return "nrt";
  }
}

}  // namespace

std::string formula::text(int index) const {
  const node& n = nodes[static_cast<std::size_t>(index)];
  auto operand = [&](int arg, bool right) {
    const int own = precedence(n.kind);
    const int theirs = precedence(nodes[static_cast<std::size_t>(arg)].kind);
    const bool wrap = theirs < own || (right && theirs == own && n.kind != op::add && n.kind != op::multiply &&
                                       n.kind != op::conjunction && n.kind != op::disjunction);
    return wrap ? "(" + text(arg) + ")" : text(arg);
  };
  switch (n.kind) {
    case op::variable: return vars[static_cast<std::size_t>(n.var)].label(with_steps);
    case op::number: return n.written;
    case op::negate: return "-" + operand(n.args[0], true);
    case op::negation: return "not " + operand(n.args[0], true);
    case op::truth: return text(n.args[0]);
    case op::power: return operand(n.args[0], false) + "^" + n.exponent.get_str();
    case op::root: return "nrt(" + text(n.args[0]) + ", " + n.exponent.get_str() + ")";
    case op::exp: case op::sin: case op::cos: case op::abs:
      return std::string(function_name(n.kind)) + "(" + text(n.args[0]) + ")";
    case op::min: case op::max:
      return std::string(function_name(n.kind)) + "(" + text(n.args[0]) + ", " + text(n.args[1]) + ")";
    default: break;
  }
  std::string out;
  for (std::size_t i = 0; i < n.args.size(); ++i) {
    if (i > 0) out += infix(n.kind);
    out += operand(n.args[i], i > 0);
  }
  return out;
}

std::string formula::describe(int index) const {
  const node& n = nodes[static_cast<std::size_t>(index)];
  const std::string& where = n.part >= 0 ? parts[static_cast<std::size_t>(n.part)] : std::string();
  return where.empty() ? text(index) : text(index) + " (" + where + ")";
}

}  // namespace certify
