#pragma once

#include <cstdint>
#include <vector>

#include "solver/bound.hpp"

// One element of a bound stack.
struct bound_entry {
  double value = 0.0;
  bool strict = false;
  origin reason;
  std::uint32_t mark = 0;    // work slot of conflict analysis
  std::uint32_t dlevel = 0;  // decision level at which the bound was pushed
  std::uint32_t id = 0;      // this entry's own bound id
};

// A variable's lower and upper bound stacks. Each entry is at least as tight as the one below
// it, so the tops are the current bounds.
class bm {
 public:
  std::uint32_t push_lower(double value, bool strict, const origin& why) { return push(lower_, true, value, strict, why); }
  std::uint32_t push_upper(double value, bool strict, const origin& why) { return push(upper_, false, value, strict, why); }
  void pop(bool is_lower) { (is_lower ? lower_ : upper_).pop_back(); }

  bool get_lower(double& value, bool& strict) const { return top(lower_, value, strict); }
  bool get_upper(double& value, bool& strict) const { return top(upper_, value, strict); }
  std::uint32_t top_lower_id() const { return lower_.empty() ? 0 : lower_.back().id; }
  std::uint32_t top_upper_id() const { return upper_.empty() ? 0 : upper_.back().id; }

  void get_bound_info(std::uint32_t id, bool& is_lower, bool& strict, double& value) const {
    const bound_entry& e = entry(id);
    is_lower = id_is_lower(id);
    strict = e.strict;
    value = e.value;
  }
  bound_entry& entry(std::uint32_t id) { return const_cast<bound_entry&>(static_cast<const bm&>(*this).entry(id)); }
  const bound_entry& entry(std::uint32_t id) const {
    if (id == 0) no_such_entry();
    return (id_is_lower(id) ? lower_ : upper_)[id_position(id)];
  }
  origin get_origin(std::uint32_t id) const { return entry(id).reason; }
  std::uint32_t& mark(std::uint32_t id) { return entry(id).mark; }
  std::uint32_t& dlevel(std::uint32_t id) { return entry(id).dlevel; }

  // The id of the oldest entry of the lower (upper) stack for which `holds(strict, value)` is
  // true, 0 if none, where `holds` stays true from an entry on up (a property that a tighter
  // bound keeps): found by bisection, since stacks grow deep within one level.
  template <typename Holds>
  std::uint32_t oldest_where(bool lower, Holds holds) const {
    const std::vector<bound_entry>& stack = lower ? lower_ : upper_;
    std::size_t from = 0, to = stack.size();
    while (from < to) {
      const std::size_t mid = from + (to - from) / 2;
      if (holds(stack[mid].strict, stack[mid].value)) {
        to = mid;
      } else {
        from = mid + 1;
      }
    }
    return from < stack.size() ? stack[from].id : 0;
  }

 private:
  [[noreturn]] static void no_such_entry();
  static bool top(const std::vector<bound_entry>& stack, double& value, bool& strict) {
    if (stack.empty()) return false;
    value = stack.back().value;
    strict = stack.back().strict;
    return true;
  }
  static std::uint32_t push(std::vector<bound_entry>& stack, bool is_lower, double value, bool strict,
                            const origin& why) {
    bound_entry& e = stack.emplace_back();
    e.value = value;
    e.strict = strict;
    e.reason = why;
    e.id = make_id(static_cast<std::uint32_t>(stack.size() - 1), is_lower);
    return e.id;
  }

  std::vector<bound_entry> lower_;
  std::vector<bound_entry> upper_;
};
