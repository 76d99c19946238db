#pragma once

// One check-sat: the problem searched and its box certified in a child process. The program's
// state (symbol table, scanner, random generator) is process-wide and its fatal errors end the
// process; a child starts from the parent's untouched state every time, and a fatal error in it
// becomes an error response while the script goes on.

#include <gmpxx.h>

#include <map>
#include <optional>
#include <string>

namespace smt2 {

struct check_settings {
  std::optional<double> min_split_width;
  std::optional<int> random_seed;
};

struct value_range {
  mpq_class lower, upper;  // equal for an exact value
};

struct outcome {
  enum kind_t { sat, unsat, unknown, failed } answer = failed;
  std::string message;                         // failed: the error; unknown: why not sat
  std::map<std::string, value_range> values;   // by name in the problem: sat the witness, unknown the box
};

outcome run_check(const std::string& problem_text, const check_settings& settings);

}  // namespace smt2
