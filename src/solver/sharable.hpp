#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <vector>

#include "solver/bound.hpp"

// Keys of definitions that equal subterms share: a tclause, a numeric constant, or a
// disjunction / conjunction of bounds.
class sharable_expr {
 public:
  virtual std::uint32_t hash_val() const = 0;
  virtual bool operator==(const sharable_expr& other) const = 0;
  virtual unsigned get_sharable_kind() const = 0;
  virtual ~sharable_expr() = default;
};

enum sharable_kind : unsigned {
  SHARABLE_OR = 0,
  SHARABLE_AND = 1,
  SHARABLE_TCLAUSE = 2,
  SHARABLE_ARITHCONST = 3,
};

using bound_set = std::set<bound, bound_order>;

// The bounds of a disjunction (kind 0) or conjunction (kind 1).
class sharable_connective : public sharable_expr {
 public:
  sharable_connective(unsigned kind, bound_set bounds) : kind_(kind), bounds(std::move(bounds)) {}
  std::uint32_t hash_val() const override;
  bool operator==(const sharable_expr& other) const override;
  unsigned get_sharable_kind() const override { return kind_; }

 private:
  unsigned kind_;

 public:
  bound_set bounds;
};

class sharable_or : public sharable_connective {
 public:
  explicit sharable_or(bound_set bounds) : sharable_connective(SHARABLE_OR, std::move(bounds)) {}
};

class sharable_and : public sharable_connective {
 public:
  explicit sharable_and(bound_set bounds) : sharable_connective(SHARABLE_AND, std::move(bounds)) {}
};

class sharable_tclause : public sharable_expr {
 public:
  sharable_tclause(std::uint32_t functor, std::uint32_t y, std::uint32_t z, double c)
      : functor(functor), y(y), z(z), c(c) {}
  std::uint32_t hash_val() const override;
  bool operator==(const sharable_expr& other) const override;
  unsigned get_sharable_kind() const override { return SHARABLE_TCLAUSE; }

  std::uint32_t functor, y, z;
  double c;
};

class sharable_arithconst : public sharable_expr {
 public:
  explicit sharable_arithconst(double value) : value(value) {}
  std::uint32_t hash_val() const override;
  bool operator==(const sharable_expr& other) const override;
  unsigned get_sharable_kind() const override { return SHARABLE_ARITHCONST; }

  double value;
};

// What a definition is represented by, and which of its implication directions are encoded:
// 1 positive, 2 negative, 3 both.
struct sharable_entry {
  bound rep;
  std::uint32_t polarity = 0;
};

// Swaps positive and negative; leaves none and both.
std::uint32_t toggle_polarity(std::uint32_t polarity);

// A chained hash table from keys to entries. Entries keep their position for as long as they
// are in the table, so that undo logs can name them.
class sharable_table {
 public:
  static constexpr std::uint32_t npos = UINT32_MAX;

  std::uint32_t find(const sharable_expr& key) const;
  std::uint32_t insert(std::unique_ptr<sharable_expr> key, sharable_entry entry);
  void erase(std::uint32_t position);
  sharable_entry& at(std::uint32_t position) { return nodes_[position].entry; }
  const sharable_entry& at(std::uint32_t position) const { return nodes_[position].entry; }
  std::size_t size() const { return count_; }
  std::size_t bucket_count() const { return buckets_.size(); }

 private:
  struct node {
    std::unique_ptr<sharable_expr> key;
    sharable_entry entry;
    std::uint32_t hash = 0;
    std::uint32_t next = npos;  // next node of the same bucket
  };
  void grow_for(std::size_t elements);
  void link(std::uint32_t position);

  std::vector<node> nodes_;
  std::vector<std::uint32_t> free_nodes_;
  std::vector<std::uint32_t> buckets_;  // first node of each chain
  std::size_t count_ = 0;
};
