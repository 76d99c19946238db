#pragma once

// Terms of a script after elaboration: symbols resolved to declared constants, `let` and
// defined functions expanded (shared, not copied), chains and `distinct` spelt out, every
// number an exact rational, every node of a known sort.

#include <gmpxx.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "smt2/sexpr.hpp"

namespace smt2 {

enum class sort { boolean, integer, real };
const char* sort_name(sort s);

enum class op {
  variable, number, truth,                              // leaves
  negation, conjunction, disjunction, exclusive_or, implication, equivalence, ite,  // Boolean (ite on any sort)
  equal, less_equal, less, greater_equal, greater, not_equal,  // relations of two terms
  add, subtract, negate, multiply, abs, exp, sin, cos, power, divide,  // terms; divide by a constant only
};

struct term;
using term_ref = std::shared_ptr<const term>;

struct term {
  op kind;
  sort type;
  std::vector<term_ref> args;
  mpq_class value;         // number; truth: 1 or 0
  int var = -1;            // variable: index of the declared constant
  unsigned long exponent = 0;  // power
};

// A declared constant (a function of no arguments).
struct declaration {
  std::string name;
  sort type;
};

// A defined function: its parameters and body, expanded at every application.
struct definition {
  std::vector<std::pair<std::string, sort>> parameters;
  sort result;
  sexpr body;
};

// What symbols mean while a script runs; push and pop save and restore it whole.
struct symbols {
  std::vector<declaration> declared;  // every constant ever declared: indices stay valid
  std::map<std::string, int> constants;  // visible declared constants by name
  std::map<std::string, definition> functions;
};

// Elaborates `e` in the scope of `table`; throws script_error naming the fault.
term_ref elaborate(const sexpr& e, const symbols& table);

// The sort a sort expression names.
sort read_sort(const sexpr& e);

// The exact value of a numeral or decimal as written.
mpq_class literal_value(const std::string& text);

// A rational as an SMT-LIB term: a numeral (an integer of sort Int), a decimal where its
// expansion ends, a quotient of numerals otherwise; negative ones under a minus.
std::string rational_term(const mpq_class& q, bool integer_sort);

// A name as an SMT-LIB symbol: as it is if it is a simple symbol, between bars otherwise.
std::string symbol_term(const std::string& name);

}  // namespace smt2
