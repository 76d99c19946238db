#include <cmath>
#include <cstddef>

#include "base/error.hpp"
#include "hexpr/hexpr_nodes.hpp"

namespace {

struct function_info {
  const char* name;
  std::size_t arity;
};

constexpr function_info function_table[] = {
    {"abs", 1}, {"exp", 1}, {"sin", 1}, {"cos", 1},
    {"min", 2}, {"max", 2}, {"pow", 2}, {"nrt", 2},
};

const function_info* find_function(const std::string& name) {
  for (const function_info& f : function_table)
    if (name == f.name) return &f;
  return nullptr;
}

bool integral(double value) { return value == std::trunc(value); }

// The exponent of pow and of nrt must be a literal the solver can use as an integer.
void check_exponent(const std::string& function, const hexpr* exponent) {
  const bool is_pow = function == "pow";
  if (exponent->get_opname() != HEXPR_CONST)
    error(is_pow ? "Exponent of power operator must be a constant value."
                 : "Exponent of root operator must be a constant value.");
  const double value = static_cast<const hexpr_const*>(exponent)->value;
  if (is_pow && !(integral(value) && value >= 0.0))
    error("Power operator requires a non-negative integer value as exponent.");
  if (!is_pow && !(integral(value) && value >= 2.0))
    error("Root operator requires an integer greater equal two as exponent.");
}

}  // namespace

hexpr_function::hexpr_function(const std::string& name) : name(name) {
  if (find_function(name) == nullptr) error("Unknown function '%s'.", name.c_str());
}

void hexpr_function::add_subexpr(hexpr* child) {
  const std::size_t arity = find_function(name)->arity;
  if (children.size() >= arity)
    error(arity == 1 ? "Can't add a second subexpression to function '%s'."
                     : "Can't add a third subexpression to function '%s'.",
          name.c_str());
  if (children.size() == 1 && (name == "pow" || name == "nrt")) check_exponent(name, child);
  children.push_back(child);
}
