#pragma once

#include <string>
#include <utility>
#include <vector>

#include "hexpr/hexpr.hpp"

// A concrete class that carries no data of its own: it reports its kind, and an empty node of
// its class is its `new_node`.
template <class self, class base, hexpr_kind kind>
class hexpr_node_of : public base {
 public:
  using base::base;
  hexpr_kind get_opname() const override { return kind; }
  hexpr* new_node() const override { return new self; }
};

// ---- Leaves ----

// A numeric or Boolean literal (Boolean constants are 1.0 and 0.0).
class hexpr_const : public hexpr_leaf_node {
 public:
  hexpr_const(double value, std::string text) : text(std::move(text)), value(value) {}
  hexpr_kind get_opname() const override { return HEXPR_CONST; }
  void print_hexpr_opname(const std::string& prefix, std::ostream& out) const override;
  hexpr* new_node() const override;
  translation_result hexpr2krait(krait_solver& solver, std::uint32_t step, std::uint32_t polarity) override;

  std::string text;  // as written; "true"/"false" for folded Booleans; empty for plain numbers
  double value;
  // The number as the input writes it (a named constant's definition, with a '-' per negation);
  // empty for Booleans and for values that preprocessing computed.
  std::string literal;
  symbol_ref symbol_entry = no_symbol();
};

// One occurrence of a declared variable; x' denotes its value at the next step.
class hexpr_var : public hexpr_leaf_node {
 public:
  hexpr_var() = default;
  // A trailing quote (on a name longer than the quote alone) is taken off and marks `primed`.
  explicit hexpr_var(const std::string& written);
  hexpr_kind get_opname() const override { return HEXPR_VAR; }
  void print_hexpr_opname(const std::string& prefix, std::ostream& out) const override;
  hexpr* new_node() const override;
  translation_result hexpr2krait(krait_solver& solver, std::uint32_t step, std::uint32_t polarity) override;

  std::string name;  // without the quote
  bool primed = false;
  symbol_ref symbol_entry = no_symbol();
};

// ---- Unary nodes ----

class hexpr_not : public hexpr_node_of<hexpr_not, hexpr_1_ary_node, HEXPR_NOT> {
 public:
  using hexpr_node_of::hexpr_node_of;
  translation_result hexpr2krait(krait_solver& solver, std::uint32_t step, std::uint32_t polarity) override;
};
class hexpr_uminus : public hexpr_node_of<hexpr_uminus, hexpr_1_ary_node, HEXPR_UMINUS> {
 public:
  using hexpr_node_of::hexpr_node_of;
  hexpr* simplify() override;
};
// Round, square and curly brackets alike.
class hexpr_parentheses : public hexpr_node_of<hexpr_parentheses, hexpr_1_ary_node, HEXPR_PARENTHESES> {
 public:
  using hexpr_node_of::hexpr_node_of;
  hexpr* simplify() override;
};
// Root of a plain formula; also wraps each part of a transition system for translation.
class hexpr_formula : public hexpr_node_of<hexpr_formula, hexpr_1_ary_node, HEXPR_FORMULA> {
 public:
  using hexpr_node_of::hexpr_node_of;
  translation_result hexpr2krait(krait_solver& solver, std::uint32_t step, std::uint32_t polarity) override;
};

// ---- Binary nodes ----

class hexpr_sub : public hexpr_node_of<hexpr_sub, hexpr_2_ary_node, HEXPR_SUB> {
 public:
  using hexpr_node_of::hexpr_node_of;
  hexpr* simplify() override;
};
class hexpr_imp : public hexpr_node_of<hexpr_imp, hexpr_2_ary_node, HEXPR_IMP> {
 public:
  using hexpr_node_of::hexpr_node_of;
  hexpr* simplify() override;
};
class hexpr_xor : public hexpr_node_of<hexpr_xor, hexpr_2_ary_node, HEXPR_XOR> {
 public:
  using hexpr_node_of::hexpr_node_of;
  hexpr* simplify() override;
};
class hexpr_nxor : public hexpr_node_of<hexpr_nxor, hexpr_2_ary_node, HEXPR_NXOR> {
 public:
  using hexpr_node_of::hexpr_node_of;
  hexpr* simplify() override;
};
// A relation in solver-ready form, followed (when it is linear) by its linear-term version.
class hexpr_constraint : public hexpr_node_of<hexpr_constraint, hexpr_2_ary_node, HEXPR_CONSTRAINT> {
 public:
  using hexpr_node_of::hexpr_node_of;
  translation_result hexpr2krait(krait_solver& solver, std::uint32_t step, std::uint32_t polarity) override;
};

class hexpr_equ : public hexpr_node_of<hexpr_equ, hexpr_relop, HEXPR_EQU> {
 public:
  using hexpr_node_of::hexpr_node_of;
};
class hexpr_neq : public hexpr_node_of<hexpr_neq, hexpr_relop, HEXPR_NEQ> {
 public:
  using hexpr_node_of::hexpr_node_of;
};
class hexpr_leq : public hexpr_node_of<hexpr_leq, hexpr_relop, HEXPR_LEQ> {
 public:
  using hexpr_node_of::hexpr_node_of;
};
class hexpr_les : public hexpr_node_of<hexpr_les, hexpr_relop, HEXPR_LES> {
 public:
  using hexpr_node_of::hexpr_node_of;
};
class hexpr_geq : public hexpr_node_of<hexpr_geq, hexpr_relop, HEXPR_GEQ> {
 public:
  using hexpr_node_of::hexpr_node_of;
};
class hexpr_gre : public hexpr_node_of<hexpr_gre, hexpr_relop, HEXPR_GRE> {
 public:
  using hexpr_node_of::hexpr_node_of;
};

// ---- Ternary nodes ----

// Children: INIT, TRANS, TARGET.
class hexpr_proof_spec : public hexpr_node_of<hexpr_proof_spec, hexpr_3_ary_node, HEXPR_PROOF_SPEC> {
 public:
  using hexpr_node_of::hexpr_node_of;
};

// ---- N-ary nodes ----

class hexpr_and : public hexpr_node_of<hexpr_and, hexpr_n_ary_node, HEXPR_AND> {
 public:
  using hexpr_node_of::hexpr_node_of;
  hexpr* simplify() override;
  translation_result hexpr2krait(krait_solver& solver, std::uint32_t step, std::uint32_t polarity) override;
};
class hexpr_or : public hexpr_node_of<hexpr_or, hexpr_n_ary_node, HEXPR_OR> {
 public:
  using hexpr_node_of::hexpr_node_of;
  hexpr* simplify() override;
  translation_result hexpr2krait(krait_solver& solver, std::uint32_t step, std::uint32_t polarity) override;
};
class hexpr_add : public hexpr_node_of<hexpr_add, hexpr_n_ary_node, HEXPR_ADD> {
 public:
  using hexpr_node_of::hexpr_node_of;
  hexpr* simplify() override;
  translation_result hexpr2krait(krait_solver& solver, std::uint32_t step, std::uint32_t polarity) override;
};
class hexpr_mul : public hexpr_node_of<hexpr_mul, hexpr_n_ary_node, HEXPR_MUL> {
 public:
  using hexpr_node_of::hexpr_node_of;
  hexpr* simplify() override;
  translation_result hexpr2krait(krait_solver& solver, std::uint32_t step, std::uint32_t polarity) override;
};

// A call of one of the built-in functions: abs, exp, sin, cos (one argument), min, max,
// pow and nrt (two; the exponent of pow and nrt must be an integral constant).
class hexpr_function : public hexpr_n_ary_node {
 public:
  // An unknown name ends the run.
  explicit hexpr_function(const std::string& name);
  hexpr_kind get_opname() const override { return HEXPR_FUNCTION; }
  void print_hexpr_opname(const std::string& prefix, std::ostream& out) const override;
  hexpr* new_node() const override { return new hexpr_function(name); }
  void add_subexpr(hexpr* child) override;
  hexpr* simplify() override;
  translation_result hexpr2krait(krait_solver& solver, std::uint32_t step, std::uint32_t polarity) override;

  std::string name;
};

// The sum of coefficient times variable over its children, which are all variables.
class hexpr_linterm : public hexpr_n_ary_node {
 public:
  hexpr_kind get_opname() const override { return HEXPR_LINTERM; }
  void print_hexpr(const std::string& indent, std::ostream& out) const override;
  hexpr* new_node() const override;
  // Appends coefficient * variable; anything but an hexpr_var ends the run.
  void add_term(double coefficient, hexpr* variable);

  std::vector<double> coefficients;  // parallel to the children
};
