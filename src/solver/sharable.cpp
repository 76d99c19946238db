#include "solver/sharable.hpp"

#include <cstdint>

#include "base/error.hpp"
#include "base/numbers.hpp"

namespace {

// Low 32 bits of the value truncated toward zero to 64 bits (saturating beyond them).
std::uint32_t truncated(double value) { return static_cast<std::uint32_t>(truncated_int64(value)); }

bool commutative(std::uint32_t functor) { return functor == 0 || functor == 2 || functor == 3 || functor == 4; }
bool with_constant(std::uint32_t functor) { return functor == 1 || functor == 8 || functor == 9; }
bool unary(std::uint32_t functor) { return functor == 5 || functor == 6 || functor == 7; }

}  // namespace

std::uint32_t sharable_connective::hash_val() const {
  std::uint32_t sum = kind_;
  for (const bound& b : bounds) sum += b.var;
  return sum;
}

bool sharable_connective::operator==(const sharable_expr& other) const {
  if (other.get_sharable_kind() != kind_) return false;
  const bound_set& theirs = static_cast<const sharable_connective&>(other).bounds;
  if (theirs.size() != bounds.size()) return false;
  auto it = theirs.begin();
  for (const bound& b : bounds) {
    if (!bounds_equal(b, *it++)) return false;
  }
  return true;
}

std::uint32_t sharable_tclause::hash_val() const {
  if (commutative(functor)) return y + z;
  if (with_constant(functor)) return truncated(c) * 1237u + y;
  if (unary(functor)) return y;
  error("Unexpected case in sharable_tclause::hash_val.");
}

bool sharable_tclause::operator==(const sharable_expr& other) const {
  if (other.get_sharable_kind() != SHARABLE_TCLAUSE) return false;
  const sharable_tclause& o = static_cast<const sharable_tclause&>(other);
  if (o.functor != functor) return false;
  if (commutative(functor)) return (y == o.y && z == o.z) || (y == o.z && z == o.y);
  if (with_constant(functor)) return y == o.y && c == o.c;
  if (unary(functor)) return y == o.y;
  error("Unexpected case in sharable_tclause::operator==.");
}

std::uint32_t sharable_arithconst::hash_val() const { return truncated(value); }

bool sharable_arithconst::operator==(const sharable_expr& other) const {
  return other.get_sharable_kind() == SHARABLE_ARITHCONST &&
         static_cast<const sharable_arithconst&>(other).value == value;
}

std::uint32_t toggle_polarity(std::uint32_t polarity) {
  switch (polarity) {
    case 0:
    case 3: return polarity;
    case 1: return 2;
    case 2: return 1;
    default: error("Passed invalid argument to toggle_polarity.");
  }
}

std::uint32_t sharable_table::find(const sharable_expr& key) const {
  if (buckets_.empty()) return npos;
  for (std::uint32_t n = buckets_[key.hash_val() % buckets_.size()]; n != npos; n = nodes_[n].next) {
    if (*nodes_[n].key == key) return n;
  }
  return npos;
}

namespace {

bool is_prime(std::size_t n) {
  if (n < 2) return false;
  for (std::size_t d = 2; d * d <= n; ++d) {
    if (n % d == 0) return false;
  }
  return true;
}

}  // namespace

void sharable_table::grow_for(std::size_t elements) {
  if (elements <= buckets_.size()) return;
  std::size_t size = buckets_.empty() ? 53 : 2 * buckets_.size() + 1;
  while (!is_prime(size)) ++size;
  buckets_.assign(size, npos);
  for (std::uint32_t n = 0; n < nodes_.size(); ++n) {
    if (nodes_[n].key) link(n);
  }
}

void sharable_table::link(std::uint32_t position) {
  std::uint32_t& head = buckets_[nodes_[position].hash % buckets_.size()];
  nodes_[position].next = head;
  head = position;
}

std::uint32_t sharable_table::insert(std::unique_ptr<sharable_expr> key, sharable_entry entry) {
  grow_for(count_ + 1);
  std::uint32_t position;
  if (!free_nodes_.empty()) {
    position = free_nodes_.back();
    free_nodes_.pop_back();
  } else {
    position = static_cast<std::uint32_t>(nodes_.size());
    nodes_.emplace_back();
  }
  node& n = nodes_[position];
  n.hash = key->hash_val();
  n.key = std::move(key);
  n.entry = entry;
  link(position);
  ++count_;
  return position;
}

void sharable_table::erase(std::uint32_t position) {
  std::uint32_t* link_to = &buckets_[nodes_[position].hash % buckets_.size()];
  while (*link_to != position) link_to = &nodes_[*link_to].next;
  *link_to = nodes_[position].next;
  nodes_[position].key.reset();
  free_nodes_.push_back(position);
  --count_;
}
