#include <iomanip>

#include "lang/symtab.hpp"
#include "solver/solver.hpp"

namespace {

const char* type_word(const hexpr_symobj& record) {
  if (!record.is_int) return "float";
  return record.lower == 0.0 && record.upper == 1.0 ? "boole" : "int";
}

// A bracket turned away from the value marks an open end: ]1.5, 2] excludes 1.5.
void print_range(const krait_solver& solver, u32 var, std::ostream& out) {
  bool strict = false;
  double value = 0.0;
  if (solver.get_lower_bound(var, strict, value))
    out << (strict ? "]" : "[") << value << ", ";
  else
    out << "]-inf, ";
  if (solver.get_upper_bound(var, strict, value))
    out << value << (strict ? "[" : "]");
  else
    out << "+inf[";
}

}  // namespace

void hexpr_symtab::print_solution(const krait_solver& solver, std::ostream& out, bool skip_hidden) const {
  for (const hexpr_symobj* record : variables) {
    if (skip_hidden && record->hidden) continue;
    print_variable(*record, solver, out);
    out << std::endl;
  }
}

void hexpr_symtab::print_variable(const hexpr_symobj& record, const krait_solver& solver, std::ostream& out) {
  // The precision stays on the stream: later doubles of the report use it too.
  out << std::defaultfloat << std::setprecision(20);
  out << "    " << record.name << " (";
  if (record.is_static) out << "static ";
  out << type_word(record) << "): ";
  if (record.instances.empty()) {
    out << "declared in symtab but not used" << std::endl;
    return;
  }
  out << std::endl;
  for (std::size_t i = 0; i < record.instances.size(); ++i) {
    out << "        @" << i << ": ";
    print_range(solver, static_cast<u32>(record.instances[i]), out);
    out << std::endl;
  }
}
