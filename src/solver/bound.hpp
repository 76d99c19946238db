#pragma once

#include <cstdint>
#include <initializer_list>

// A bound atom on one variable: x >= c, x > c, x <= c or x < c. Passed and stored by value.
struct bound {
  std::uint32_t var = 0;  // 0: no variable
  bool is_lower = false;
  bool strict = false;
  double value = 0.0;
};

inline bool bounds_equal(bound a, bound b) {
  return a.var == b.var && a.is_lower == b.is_lower && a.strict == b.strict && a.value == b.value;
}

// The order of atoms: by variable; lower bounds before upper ones; each direction from weakest
// to strongest, a non-strict bound before a strict one of the same value.
inline bool bound_less(bound a, bound b) {
  if (a.var != b.var) return a.var < b.var;
  if (a.is_lower != b.is_lower) return a.is_lower;
  if (a.value != b.value) return a.is_lower ? a.value < b.value : a.value > b.value;
  return !a.strict && b.strict;
}

struct bound_order {
  bool operator()(bound a, bound b) const { return bound_less(a, b); }
};

// Names one entry of one variable's bound stacks. The id is local to the variable:
// ((position + 1) << 1) | is_lower, so 0 means no bound.
struct bound_ref {
  std::uint32_t var = 0;
  std::uint32_t id = 0;
};

inline bool id_is_lower(std::uint32_t id) { return (id & 1u) != 0; }
inline std::uint32_t id_position(std::uint32_t id) { return (id >> 1) - 1; }
inline std::uint32_t make_id(std::uint32_t position, bool is_lower) {
  return ((position + 1) << 1) | (is_lower ? 1u : 0u);
}

enum origin_kind : std::uint32_t {
  KRAIT_ORIGIN_NONE = 0,
  KRAIT_ORIGIN_DECISION = 1,
  KRAIT_ORIGIN_DCLAUSE = 2,
  KRAIT_ORIGIN_TCLAUSE = 3,
  KRAIT_ORIGIN_MULTIPLE = 4,
};

// The bounds a deduction rule computed a new bound from. No rule uses more than four, so
// they are kept inline and asserting a bound never allocates.
class antecedent_list {
 public:
  static constexpr std::uint32_t capacity = 4;

  antecedent_list() = default;
  antecedent_list(std::initializer_list<bound_ref> refs) {
    for (bound_ref r : refs) push_back(r);
  }
  void push_back(bound_ref r) { refs_[size_++] = r; }
  std::uint32_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  const bound_ref* begin() const { return refs_; }
  const bound_ref* end() const { return refs_ + size_; }
  const bound_ref& operator[](std::uint32_t i) const { return refs_[i]; }

 private:
  bound_ref refs_[capacity];
  std::uint32_t size_ = 0;
};

// Why a bound holds.
struct origin {
  std::uint32_t kind = KRAIT_ORIGIN_NONE;
  std::uint32_t index = 0;  // dclause index (kind 2) or tclause index (kind 3)
  antecedent_list antecedents;  // kind 3 only
};
