#pragma once

// Certificates for candidate boxes: does the box hold a point that satisfies the formula as
// written? Exact rational arithmetic decides polynomial relations at points, validated
// enclosures decide the rest where they can, and an interval Newton (Krawczyk) test proves
// that equations no rational point meets have a solution in a small box.

#include <gmpxx.h>

#include <ostream>
#include <string>
#include <vector>

#include "certify/formula.hpp"

struct krait_solver;
class hexpr;

namespace certify {

// The closed range of one formula variable in the candidate box.
struct range {
  mpq_class lower, upper;
};

enum class verdict {
  verified,         // a solution lies in the box
  verified_beside,  // a solution lies just outside the box (the rounding of its constants)
  refuted,          // some relation is false at every point of the box
  undecided,
};

struct certificate {
  verdict kind = verdict::undecided;
  std::vector<std::string> lines;  // the section's lines after its heading, indented
  double seconds = 0.0;
  // A verified verdict's witness, by formula variable: an exact value (lower == upper), or the
  // range an existence proof encloses the solution's coordinate in.
  std::vector<range> witness;
};

// The candidate box of the search the solver has just ended: the ranges of the formula's
// variable instances (read before the solver leaves the box's context).
std::vector<range> read_box(const formula& f, const krait_solver& solver);

certificate certify(const formula& f, const std::vector<range>& box);

// The CERTIFICATE section of the box the solver holds, for the formula as parsed (`original`),
// unwound to `depth` (-1: a plain formula), followed by an empty line.
void print_section(const hexpr& original, const krait_solver& solver, int depth, std::ostream& out);

// An exact value for a report: an integer, a finite decimal of moderate length, or a fraction
// with its approximate value.
std::string exact_text(const mpq_class& q);

}  // namespace certify
