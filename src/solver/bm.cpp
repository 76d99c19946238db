#include "solver/bm.hpp"

#include "base/error.hpp"

std::uint32_t bm::push(std::vector<bound_entry>& stack, bool is_lower, double value, bool strict,
                       const origin& why) {
  bound_entry& e = stack.emplace_back();
  e.value = value;
  e.strict = strict;
  e.reason = why;
  e.id = make_id(static_cast<std::uint32_t>(stack.size() - 1), is_lower);
  return e.id;
}

std::uint32_t bm::push_lower(double value, bool strict, const origin& why) {
  return push(lower_, true, value, strict, why);
}

std::uint32_t bm::push_upper(double value, bool strict, const origin& why) {
  return push(upper_, false, value, strict, why);
}

bool bm::top(const std::vector<bound_entry>& stack, double& value, bool& strict) {
  if (stack.empty()) return false;
  value = stack.back().value;
  strict = stack.back().strict;
  return true;
}

bool bm::at(const std::vector<bound_entry>& stack, std::uint32_t i, bool& strict, double& value,
            std::uint32_t& id) {
  if (i >= stack.size()) return false;
  strict = stack[i].strict;
  value = stack[i].value;
  id = stack[i].id;
  return true;
}

const bound_entry& bm::entry(std::uint32_t id) const {
  if (id == 0) error("Unexpected case in bm::get_bound_info.");
  return (id_is_lower(id) ? lower_ : upper_)[id_position(id)];
}

bound_entry& bm::entry(std::uint32_t id) {
  return const_cast<bound_entry&>(static_cast<const bm&>(*this).entry(id));
}

void bm::get_bound_info(std::uint32_t id, bool& is_lower, bool& strict, double& value) const {
  const bound_entry& e = entry(id);
  is_lower = id_is_lower(id);
  strict = e.strict;
  value = e.value;
}
