#pragma once

// The assertions of a script as a problem in the input language: every constant declared with
// a finite range (read from the assertions, or a default), every number the search cannot hold
// exactly in a double brought in as a variable its defining equation pins, and the result as
// text that the program's own reader takes.

#include <gmpxx.h>

#include <map>
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
  // By declaration index: the lower end of the declared range, 0 where there is none. A
  // constant whose every assertion the declared ranges imply holds any value of its range.
  std::vector<mpq_class> lows;
};

// The visible constants and their names as a problem gives them, without the text; every
// lower end 0.
problem named_constants(const symbols& table);

// `default_range`, when given, ranges constants that the assertions leave unbounded.
problem build_problem(const std::vector<term_ref>& assertions, const symbols& table,
                      const std::optional<interval>& default_range, const std::string& source);

// ---- The parts of a problem, for texts that declare and assert a little at a time ----

// A name of the script as the input language takes it: the script's own where the language
// allows it, otherwise a readable variant (not yet told apart from the others).
std::string language_name(const std::string& name);

// The ranges the assertions give the constants `wanted` (declaration indices of Int and Real
// constants; the other entries stay empty): each end from the first assertion made of bounds
// alone that bounds it (later ones stay constraints, as a formula's own bounds must), ends
// they leave open from all relations as far as sound narrowing reaches, then from
// `default_range`. Ends may stay open.
std::vector<interval> assertion_ranges(const std::vector<term_ref>& assertions, const symbols& table,
                                       const std::optional<interval>& default_range, const std::vector<int>& wanted);

// Why a constant has no range, for an open end of `r`.
std::string missing_range_message(const std::string& name, const interval& r);

// An end of a declared range as written; `exact` when the text is the end itself.
struct declared_end {
  std::string text;
  bool exact;
};

struct declared_range {
  interval range;  // finite ends
  declared_end low, high;
};

// A range with finite ends as a declaration writes it: integral ends for an Int; an empty
// range becomes a point (the search finds the contradiction).
declared_range declare_range(interval r, sort type);

// Whether an assertion is made of bounds alone, each implied exactly by the declared range
// (by declaration index) of its constant: it then says nothing more.
bool implied_by_ranges(const term& assertion, const std::vector<std::optional<declared_range>>& ranges);

// Names of the helper variables that texts written one after another declare: numbered on
// from `counter`, and the pinned constants made so far (by magnitude) used again.
struct helper_names {
  int counter = 0;
  std::map<mpq_class, std::string> pinned;
};

struct written_formulas {
  std::vector<std::string> declarations;  // of the helper variables
  std::vector<std::string> formulas;      // the helpers' definitions, then the assertions
};

// The assertions as formulas over constants named `names` (by declaration index) whose declared
// ranges are `ranges` (the helpers' ranges come from them).
written_formulas write_formulas(const std::vector<const term*>& assertions, const symbols& table,
                                const std::vector<interval>& ranges, const std::vector<std::string>& names,
                                helper_names& helpers);

// A text for the program's reader, whose grammar wants a declaration and a formula at least:
// `placeholder` is declared a boole where there is no declaration, `true` stands for no formula.
std::string krait_text(const std::string& comment, const std::vector<std::string>& declarations,
                       const std::vector<std::string>& formulas, const std::string& placeholder);

// A double-exact decimal text of a double.
std::string exact_decimal(double d);

}  // namespace smt2
