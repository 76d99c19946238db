#pragma once

// The assertions of a script as a problem in the input language: every constant declared with
// a finite range (read from the assertions, or a default), every number the search cannot hold
// exactly in a double brought in as a variable its defining equation pins, and the result as
// text that the program's own reader takes.

#include <gmpxx.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "smt2/terms.hpp"

namespace smt2 {

// A closed range with possibly infinite ends.
struct interval {
  std::optional<mpq_class> lo, hi;  // none: infinite
};

// The ranges the top-level assertions imply for the constants of `table` (by declaration
// index), soundly: every model of the assertions lies within them. Integer constants get
// integral ends.
std::vector<interval> implied_ranges(const std::vector<term_ref>& assertions, const symbols& table);

// No range for a constant: the message names it and the assertion that would give one.
struct missing_range : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct problem {
  std::string text;                   // the problem in the input language
  std::vector<std::string> names;     // by declaration index: the name in `text`, "" if absent
  std::vector<int> declared;          // declaration indices of the script's visible constants
};

// `default_range`, when given, ranges constants that the assertions leave unbounded.
problem build_problem(const std::vector<term_ref>& assertions, const symbols& table,
                      const std::optional<interval>& default_range, const std::string& source);

// A double-exact decimal text of a double.
std::string exact_decimal(double d);

}  // namespace smt2
