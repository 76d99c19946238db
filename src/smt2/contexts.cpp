// What a check-sat sends to the search's contexts.
#include "smt2/contexts.hpp"

#include <algorithm>
#include <set>
#include <stdexcept>

namespace smt2 {
namespace {

void variables_of(const term& t, std::set<int>& out) {
  if (t.kind == op::variable) out.insert(t.var);
  for (const term_ref& a : t.args) variables_of(*a, out);
}

// The name of a constant in the texts: the script's own where it can be, and never one a
// helper of any text takes, or another live variable.
std::string variable_name(const std::string& script_name, const std::map<std::string, int>& taken) {
  std::string base = language_name(script_name);
  if (base.starts_with("let_") || base.starts_with("unused_")) base = "s_" + base;
  std::string unique = base;
  for (int k = 2; taken.count(unique); ++k) unique = base + "_" + std::to_string(k);
  return unique;
}

void forget(context_planner::state& s, const context_planner::state::context& c) {
  for (int v : c.variables) {
    s.names.erase(s.variables.at(v).name);
    s.variables.erase(v);
  }
  for (std::uint64_t a : c.assertions) s.assertions.erase(a);
  for (const mpq_class& q : c.pinned) s.helpers.pinned.erase(q);
}

}  // namespace

void context_planner::reset() {
  const int counter = state_.helpers.counter;
  state_ = state{};
  state_.helpers.counter = counter;
}

int context_planner::declaration_of(const std::string& name) const {
  const auto known = state_.names.find(name);
  return known == state_.names.end() ? -1 : known->second;
}

context_planner::plan context_planner::make_plan(const stack_view& stack) const {
  plan p;
  state& s = p.after = state_;
  const std::size_t levels = stack.frame_ids.size();
  // The contexts of the frames still there stay; the base is always one of them.
  std::size_t kept = 1;
  while (kept < s.contexts.size() && kept < levels && s.contexts[kept].frame == stack.frame_ids[kept]) ++kept;
  if (s.contexts.size() > kept) {
    p.operations.push_back({context_operation::pop, s.contexts.size() - kept, ""});
    for (; s.contexts.size() > kept; s.contexts.pop_back()) forget(s, s.contexts.back());
  }
  std::vector<std::size_t> waiting;  // live assertions without a context, oldest first
  for (std::size_t a = 0; a < stack.assertions.size(); ++a)
    if (!s.assertions.count(stack.assertion_ids[a])) waiting.push_back(a);
  for (std::size_t level = kept - 1; level < levels; ++level) {
    if (level == s.contexts.size()) {
      p.operations.push_back({context_operation::push, 0, ""});
      s.contexts.push_back({stack.frame_ids[level], {}, {}, {}});
    }
    if (std::optional<std::string> text = translate_into(s, stack, level, waiting))
      p.operations.push_back({context_operation::translate, 0, std::move(*text)});
  }
  // Every live assertion has its place now, unless a constant has no range at all.
  for (std::size_t a : waiting) {
    std::set<int> used;
    variables_of(*stack.assertions[a], used);
    std::vector<int> open;
    for (int v : used)
      if (!s.variables.count(v) && stack.table.declared[static_cast<std::size_t>(v)].type != sort::boolean) open.push_back(v);
    const std::vector<interval> r = assertion_ranges(stack.assertions, stack.table, stack.default_range, open);
    for (int v : open)
      if (!r[static_cast<std::size_t>(v)].lo || !r[static_cast<std::size_t>(v)].hi)
        throw missing_range(missing_range_message(stack.table.declared[static_cast<std::size_t>(v)].name, r[static_cast<std::size_t>(v)]));
    throw std::runtime_error("an assertion found no context");
  }
  return p;
}

// The text that translates, into the context of `level`, the assertions of the frames up to it
// that wait (taken off `waiting`), with the variables they need; none when nothing that waits
// can go there.
std::optional<std::string> context_planner::translate_into(state& s, const stack_view& stack, std::size_t level,
                                                           std::vector<std::size_t>& all_waiting) const {
  const std::size_t end = level + 1 < stack.frame_starts.size() ? stack.frame_starts[level + 1] : stack.assertions.size();
  std::vector<std::size_t> waiting;
  std::vector<std::set<int>> needs;  // per waiting assertion: its constants without a variable
  std::set<int> open;
  for (std::size_t a : all_waiting) {
    if (a >= end) break;
    std::set<int> used;
    variables_of(*stack.assertions[a], used);
    std::erase_if(used, [&](int v) { return s.variables.count(v) > 0; });
    for (int v : used)
      if (stack.table.declared[static_cast<std::size_t>(v)].type != sort::boolean) open.insert(v);
    waiting.push_back(a);
    needs.push_back(std::move(used));
  }
  if (waiting.empty()) return std::nullopt;

  // Ranges from the frames up to this one only.
  std::vector<interval> found;
  if (!open.empty()) {
    const std::vector<term_ref> visible(stack.assertions.begin(), stack.assertions.begin() + static_cast<std::ptrdiff_t>(end));
    found = assertion_ranges(visible, stack.table, stack.default_range, std::vector<int>(open.begin(), open.end()));
  }
  auto ranged = [&](int v) {
    return stack.table.declared[static_cast<std::size_t>(v)].type == sort::boolean ||
           (found[static_cast<std::size_t>(v)].lo && found[static_cast<std::size_t>(v)].hi);
  };
  std::set<int> made;
  std::vector<std::size_t> ready;
  for (std::size_t w = 0; w < waiting.size(); ++w) {
    if (!std::all_of(needs[w].begin(), needs[w].end(), ranged)) continue;
    ready.push_back(waiting[w]);
    made.insert(needs[w].begin(), needs[w].end());
  }
  if (ready.empty()) return std::nullopt;

  state::context& here = s.contexts[level];
  std::vector<std::string> declarations;
  for (int v : made) {
    const declaration& d = stack.table.declared[static_cast<std::size_t>(v)];
    variable& made_var = s.variables[v] = {level, variable_name(d.name, s.names), std::nullopt};
    s.names[made_var.name] = v;
    here.variables.push_back(v);
    if (d.type == sort::boolean) {
      declarations.push_back("boole " + made_var.name);
      continue;
    }
    made_var.range = declare_range(found[static_cast<std::size_t>(v)], d.type);
    declarations.push_back(std::string(d.type == sort::integer ? "int" : "float") + " [" + made_var.range->low.text + ", " +
                           made_var.range->high.text + "] " + made_var.name);
  }

  std::vector<std::optional<declared_range>> declared(stack.table.declared.size());
  std::vector<interval> ranges(stack.table.declared.size());
  std::vector<std::string> names(stack.table.declared.size());
  for (const auto& [v, known] : s.variables) {
    names[static_cast<std::size_t>(v)] = known.name;
    declared[static_cast<std::size_t>(v)] = known.range;
    if (known.range) ranges[static_cast<std::size_t>(v)] = known.range->range;
  }
  std::erase_if(all_waiting, [&](std::size_t a) { return std::binary_search(ready.begin(), ready.end(), a); });
  std::vector<const term*> kept;
  for (std::size_t a : ready) {
    s.assertions[stack.assertion_ids[a]] = level;
    here.assertions.push_back(stack.assertion_ids[a]);
    // Bounds the declared ranges imply say nothing more.
    if (!implied_by_ranges(*stack.assertions[a], declared)) kept.push_back(stack.assertions[a].get());
  }
  const std::map<mpq_class, std::string> pinned_before = s.helpers.pinned;
  const written_formulas written = write_formulas(kept, stack.table, ranges, names, s.helpers);
  for (const auto& [q, name] : s.helpers.pinned)
    if (!pinned_before.count(q)) here.pinned.push_back(q);
  declarations.insert(declarations.end(), written.declarations.begin(), written.declarations.end());
  if (declarations.empty() && written.formulas.empty()) return std::nullopt;
  const std::string placeholder = declarations.empty() ? "unused_" + std::to_string(++s.helpers.counter) : "";
  return krait_text("context " + std::to_string(level), declarations, written.formulas, placeholder);
}

}  // namespace smt2
