#pragma once

// One check-sat: the problem searched and its box certified in a child process. The program's
// state (symbol table, scanner, random generator) is process-wide and its fatal errors end the
// process; a child starts from the parent's untouched state every time, and a fatal error in it
// becomes an error response while the script goes on.

#include <gmpxx.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

class hexpr;
struct krait_solver;

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
  std::size_t carried = 0;  // searched in contexts: learned clauses kept after the check
};

outcome run_check(const std::string& problem_text, const check_settings& settings);

// ---- The parts of a check that a search process keeping its contexts shares ----

// The splitting widths of the searches: the script's own, or a first one and finer ones for a
// box the certifier cannot verify (a coarse box may hold no solution or hide it from the
// points tried). The finer searches get a few seconds in all, so that an answer comes soon.
std::vector<double> search_widths(const check_settings& settings);
constexpr unsigned refinement_seconds = 5;

// The outcome of the search the solver has just ended, for `original` (the formula as parsed),
// as lines: "unsat"; or "sat" or "unknown", then "reason TEXT" (unknown) and "value NAME LOWER
// UPPER" (exact rationals). False for a box the certifier could not verify.
bool describe_outcome(bool unsatisfiable, const hexpr& original, const krait_solver& solver, std::string& lines);

// Writes an outcome on a file descriptor as one block: an empty line, the lines, "end". The
// program's warnings may come between blocks, on lines of their own.
bool write_outcome(int fd, const std::string& lines);

// The last complete outcome among the blocks of `text`; false when there is none.
bool read_outcome(const std::string& text, outcome& result);

}  // namespace smt2
