#pragma once

// check-sat commands searched in the solver's contexts, by one search process that lives as
// long as the script (or until `reset`): it mirrors the script's assertion stack with a
// context and a symbol frame per frame, and each check-sat adds only what changed since the
// last one. A check pushes a context of its own, searches, and pops it again; the clauses it
// learned follow from the contexts below, so they are added again where they hold, as
// bounded model checking carries clauses from one depth to the next.

#include <memory>
#include <optional>
#include <vector>

#include "smt2/check.hpp"
#include "smt2/contexts.hpp"

class serving_child;

namespace smt2 {

class context_search {
 public:
  virtual ~context_search() = default;
  // Carries out `sync`, then the check. None when the search could not answer: its process
  // ended (a new one, with no context but the base, starts at the next call), or a finer
  // search failed.
  virtual std::optional<outcome> check(const std::vector<context_operation>& sync, const check_settings& settings) = 0;
  // Drops every context: the next call starts afresh.
  virtual void reset() = 0;
  // Searches started afresh so far.
  virtual std::size_t started() const = 0;
};

class search_process : public context_search {
 public:
  search_process();
  ~search_process() override;
  std::optional<outcome> check(const std::vector<context_operation>& sync, const check_settings& settings) override;
  void reset() override;
  std::size_t started() const override { return started_; }

 private:
  std::unique_ptr<serving_child> child_;
  std::size_t started_ = 0;
};

}  // namespace smt2
