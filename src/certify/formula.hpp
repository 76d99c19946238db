#pragma once

// The formula a certificate speaks about: the input as written (before preprocessing, whose
// folding and rewriting round in double precision), unwound to one depth for a transition
// system, over the variable instances the search has ranges for. Numbers are the exact
// rationals of their decimal text.

#include <gmpxx.h>

#include <string>
#include <vector>

class hexpr;

namespace certify {

enum class op {
  // terms
  variable, number, negate, add, subtract, multiply, power, root, exp, sin, cos, abs, min, max,
  // relations between two terms
  equal, not_equal, less_equal, less, greater_equal, greater,
  // Boolean structure; `truth` is a term used as a formula (it holds when the term is >= 1)
  truth, negation, conjunction, disjunction, exclusive_or, implication,
};

bool is_relation(op kind);
bool is_term(op kind);

struct node {
  op kind;
  std::vector<int> args;    // node indices
  int var = -1;             // variable: index into formula::vars
  mpq_class value;          // number
  std::string written;      // number: as the input writes it (or the constant's name)
  double read = 0.0;        // number: the double the program reads it as
  mpz_class exponent;       // power, root
  int part = -1;            // the section a relation comes from (see formula::parts)
};

// One instance of a declared variable: the variable at one unwinding step.
struct variable {
  std::string name;
  unsigned step = 0;
  bool is_int = false;
  bool is_static = false;
  mpq_class lower, upper;  // the declared range as written
  double lower_read = 0.0, upper_read = 0.0;  // the range as the program reads it
  std::string label(bool with_step) const;
};

class formula {
 public:
  // A plain formula.
  static formula plain(const hexpr& root);
  // A transition system unwound to `depth`: INIT at step 0, TRANS at steps 0 to depth - 1,
  // TARGET at step `depth`.
  static formula unwound(const hexpr& root, unsigned depth);

  std::vector<variable> vars;
  std::vector<node> nodes;
  std::vector<std::string> parts;  // "", or "INIT", "TRANS at step 2", "TARGET at step 3"
  int root = -1;
  bool with_steps = false;

  // The subterm or relation as the input writes it, with step labels in transition systems.
  std::string text(int n) const;
  // The relation and where it comes from, for the certificate.
  std::string describe(int n) const;

 private:
  int convert(const hexpr& e, unsigned step, int part, bool as_formula);
  int variable_index(const std::string& name, bool primed, unsigned step);
  int add(node n);
};

// The exact value of a number as the input writes it: digits, an optional fraction and an
// optional exponent, after any number of '-' signs.
mpq_class literal_value(const std::string& text);

}  // namespace certify
