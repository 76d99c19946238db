#pragma once

// Evaluation of a formula over exact points, boxes, and boxes with derivatives, in one pass
// over its nodes (every node comes after its operands). A term's value is exact where its
// operands are exact and the operation keeps rationals rational; otherwise it is an
// enclosure. A relation is decided only when the values decide it for every point they stand
// for; formulae take three truth values.

#include <gmpxx.h>

#include <vector>

#include "certify/enclosure.hpp"
#include "certify/formula.hpp"

namespace certify {

enum class truth { no, yes, unknown };

struct value {
  bool exact = false;
  mpq_class q;                    // when exact
  enclosure e;                    // always
  std::vector<enclosure> slopes;  // derivatives by the free variables, when asked for
  static value of(const mpq_class& q, std::size_t free_count);
  static value over(const enclosure& e, std::size_t free_count);
};

class evaluator {
 public:
  explicit evaluator(const formula& f) : f_(f) {}

  // Evaluates every node with the variables' values (one per formula variable); derivatives
  // are carried for `free_count` free variables (their values bring unit slopes).
  truth run(const std::vector<value>& vars, std::size_t free_count = 0);

  // Relations given the truth value `yes` whatever their operands say (for proofs in which
  // an equation's solution is established separately); empty for none.
  std::vector<int> assumed;

  const value& term(int n) const { return values_[static_cast<std::size_t>(n)]; }
  truth result(int n) const { return truths_[static_cast<std::size_t>(n)]; }
  // A relation that makes node n take the truth value it has (false or unknown).
  int culprit(int n) const;

 private:
  value apply(const node& n);
  truth decide(const node& n);

  const formula& f_;
  std::size_t free_ = 0;
  const std::vector<value>* vars_ = nullptr;
  std::vector<value> values_;
  std::vector<truth> truths_;
};

}  // namespace certify
