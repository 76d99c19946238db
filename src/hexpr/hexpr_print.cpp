// The diagnostic dump of expression trees.

#include "base/error.hpp"
#include "hexpr/hexpr_nodes.hpp"

const char* hexpr_kind_name(hexpr_kind kind) {
  switch (kind) {
    case HEXPR_INVALID: return "INVALID";
    case HEXPR_VAR: return "VAR";
    case HEXPR_CONST: return "CONST";
    case HEXPR_LINTERM: return "LINTERM";
    case HEXPR_NOT: return "NOT";
    case HEXPR_AND: return "AND";
    case HEXPR_OR: return "OR";
    case HEXPR_XOR: return "XOR";
    case HEXPR_NXOR: return "NXOR";
    case HEXPR_IMP: return "IMP";
    case HEXPR_CONSTRAINT: return "CONSTRAINT";
    case HEXPR_EQU: return "EQU";
    case HEXPR_NEQ: return "NEQ";
    case HEXPR_LEQ: return "LEQ";
    case HEXPR_LES: return "LES";
    case HEXPR_GEQ: return "GEQ";
    case HEXPR_GRE: return "GRE";
    case HEXPR_PARENTHESES: return "PARENTHESES";
    case HEXPR_UMINUS: return "UMINUS";
    case HEXPR_ADD: return "ADD";
    case HEXPR_MUL: return "MUL";
    case HEXPR_SUB: return "SUB";
    case HEXPR_FUNCTION: return "FUNCTION";
    case HEXPR_FORMULA: return "FORMULA";
    case HEXPR_PROOF_SPEC: return "PROOF_SPEC";
  }
  return nullptr;
}

void hexpr::print_hexpr_opname(const std::string& prefix, std::ostream& out) const {
  const hexpr_kind kind = get_opname();
  const char* name = hexpr_kind_name(kind);
  if (name == nullptr) error("Unexpected case value %d in hexpr::print_hexpr_opname.", static_cast<int>(kind));
  out << prefix << name;
}

void hexpr::print_hexpr(const std::string&, std::ostream& out) const {
  print_hexpr_opname("", out);
  out << '\n';
}

void hexpr_inner_node::print_child(const hexpr* child, bool last, const std::string& indent,
                                   std::ostream& out) const {
  out << indent << "|\n" << indent << "+-";
  child->print_hexpr(indent + (last ? "  " : "| "), out);
}

void hexpr_inner_node::print_hexpr(const std::string& indent, std::ostream& out) const {
  hexpr::print_hexpr(indent, out);
  for (std::size_t i = 0; i < children.size(); ++i) print_child(children[i], i + 1 == children.size(), indent, out);
}

void hexpr_linterm::print_hexpr(const std::string& indent, std::ostream& out) const {
  hexpr::print_hexpr(indent, out);
  for (std::size_t i = 0; i < children.size(); ++i) {
    out << indent << "|\n" << indent << "+-(" << coefficients[i] << " * ";
    children[i]->print_hexpr_opname("", out);
    out << ")\n";
  }
}

void hexpr_var::print_hexpr_opname(const std::string& prefix, std::ostream& out) const {
  hexpr::print_hexpr_opname(prefix, out);
  out << ' ' << name << (primed ? "'" : "");
}

void hexpr_const::print_hexpr_opname(const std::string& prefix, std::ostream& out) const {
  hexpr::print_hexpr_opname(prefix, out);
  if (!text.empty()) out << ' ' << text << " =";
  out << ' ' << value;
}

void hexpr_function::print_hexpr_opname(const std::string& prefix, std::ostream& out) const {
  hexpr::print_hexpr_opname(prefix, out);
  out << ' ' << name;
}
