#pragma once

#include <initializer_list>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "hexpr/translate.hpp"
#include "lang/symtab.hpp"

// Node kinds. The numbers appear in diagnostics and relations are tested as a range
// (kind - HEXPR_EQU < 6), so the values and their gaps are fixed.
enum hexpr_kind : int {
  HEXPR_INVALID = 1,
  HEXPR_VAR = 10,
  HEXPR_CONST = 11,
  HEXPR_LINTERM = 12,
  HEXPR_NOT = 20,
  HEXPR_AND = 21,
  HEXPR_OR = 22,
  HEXPR_XOR = 23,
  HEXPR_NXOR = 24,
  HEXPR_IMP = 25,
  HEXPR_CONSTRAINT = 26,
  HEXPR_EQU = 30,
  HEXPR_NEQ = 31,
  HEXPR_LEQ = 32,
  HEXPR_LES = 33,
  HEXPR_GEQ = 34,
  HEXPR_GRE = 35,
  HEXPR_PARENTHESES = 40,
  HEXPR_UMINUS = 41,
  HEXPR_ADD = 42,
  HEXPR_MUL = 43,
  HEXPR_SUB = 44,
  HEXPR_FUNCTION = 50,
  HEXPR_FORMULA = 60,
  HEXPR_PROOF_SPEC = 61,
};

// Root of the expression tree. Every operation has a default so that even the abstract
// levels of the hierarchy can be instantiated; they report HEXPR_INVALID.
class hexpr {
 public:
  hexpr() = default;
  hexpr(const hexpr&) = delete;
  hexpr& operator=(const hexpr&) = delete;
  virtual ~hexpr() = default;

  virtual hexpr_kind get_opname() const { return HEXPR_INVALID; }
  // A plain hexpr has no children either, so walks treat it like a leaf.
  virtual bool is_leaf() const { return true; }
  // Writes `prefix`, the kind name and, for leaves and functions, the node's own data.
  virtual void print_hexpr_opname(const std::string& prefix, std::ostream& out) const;
  // Writes the subtree as an indented drawing, each line but the first starting with `indent`.
  virtual void print_hexpr(const std::string& indent, std::ostream& out) const;
  // A new node of the same class with the node's own data but no children.
  virtual hexpr* new_node() const { return new hexpr; }
  // The local rewrite of preprocessing, called once the children are rewritten: returns the
  // node that takes this one's place (this node is deleted if that is another one).
  virtual hexpr* simplify() { return this; }
  // The subterm's variables and clauses at one unwinding step.
  virtual translation_result hexpr2krait(krait_solver& solver, std::uint32_t step, std::uint32_t polarity);
};

// Deep copy; shares nothing with the source.
hexpr* copy_hexpr(const hexpr* e);

// The kind name used by the dump, or nullptr for a value outside the table.
const char* hexpr_kind_name(hexpr_kind kind);

class hexpr_leaf_node : public hexpr {
 public:
  bool is_leaf() const override { return true; }
  hexpr* new_node() const override { return new hexpr_leaf_node; }
};

// A node that owns its children (null slots are skipped when it is deleted).
class hexpr_inner_node : public hexpr {
 public:
  ~hexpr_inner_node() override;

  bool is_leaf() const override { return false; }
  void print_hexpr(const std::string& indent, std::ostream& out) const override;
  hexpr* new_node() const override { return new hexpr_inner_node; }

  // Appends a child; the arity classes refuse one beyond their limit.
  virtual void add_subexpr(hexpr* child) { children.push_back(child); }
  // Walks use these two only; a slot may be overwritten in place to replace a child.
  virtual hexpr** subexprs_begin() { return children.data(); }
  virtual hexpr** subexprs_end() { return children.data() + children.size(); }
  hexpr* const* subexprs_begin() const { return children.data(); }
  hexpr* const* subexprs_end() const { return children.data() + children.size(); }
  std::size_t subexpr_count() const { return children.size(); }

 protected:
  // Appends in order, through the arity check of the class under construction.
  void add_subexprs(std::initializer_list<hexpr*> list) {
    for (hexpr* child : list) add_subexpr(child);
  }
  // Appends `child`, or ends the run with `refusal` when `limit` children are there already.
  void append_within(hexpr* child, std::size_t limit, const char* refusal);
  // The connector lines in front of one child's drawing, then the drawing.
  void print_child(const hexpr* child, bool last, const std::string& indent, std::ostream& out) const;

  std::vector<hexpr*> children;  // in source order
};

class hexpr_1_ary_node : public hexpr_inner_node {
 public:
  hexpr_1_ary_node() = default;
  explicit hexpr_1_ary_node(hexpr* child) { add_subexpr(child); }
  hexpr* new_node() const override { return new hexpr_1_ary_node; }
  void add_subexpr(hexpr* child) override;
};

class hexpr_2_ary_node : public hexpr_inner_node {
 public:
  hexpr_2_ary_node() = default;
  hexpr_2_ary_node(hexpr* first, hexpr* second) { add_subexprs({first, second}); }
  hexpr* new_node() const override { return new hexpr_2_ary_node; }
  void add_subexpr(hexpr* child) override;
};

class hexpr_3_ary_node : public hexpr_inner_node {
 public:
  hexpr_3_ary_node() = default;
  hexpr_3_ary_node(hexpr* first, hexpr* second, hexpr* third) { add_subexprs({first, second, third}); }
  hexpr* new_node() const override { return new hexpr_3_ary_node; }
  void add_subexpr(hexpr* child) override;
};

class hexpr_n_ary_node : public hexpr_inner_node {
 public:
  hexpr_n_ary_node() = default;
  hexpr_n_ary_node(hexpr* first, hexpr* second) { add_subexprs({first, second}); }
  hexpr* new_node() const override { return new hexpr_n_ary_node; }

  // Lets the translation name the node's auxiliary variable in the symbol table.
  symbol_ref symbol_entry = no_symbol();
};

// A relation: left side, right side.
class hexpr_relop : public hexpr_2_ary_node {
 public:
  using hexpr_2_ary_node::hexpr_2_ary_node;
  hexpr* new_node() const override { return new hexpr_relop; }
  hexpr* simplify() override;
  translation_result hexpr2krait(krait_solver& solver, std::uint32_t step, std::uint32_t polarity) override;
};
