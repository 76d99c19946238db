#pragma once

// A script's assertion stack mirrored in the solver's contexts: one context per frame, the
// search's symbols in a frame beside it. At a check-sat only what changed since the last one
// is sent: the contexts of popped frames are popped (a frame popped and pushed again is a new
// one), a context is pushed per new frame, and what is not yet translated goes into the top
// context as a text in the input language.
//
// A constant becomes a variable of the search in the context of the first assertion that
// needs it, with the range that the assertions of the frames up to that context give it:
// those live as long as the context does, and later assertions only add constraints, so the
// range stays sound. An assertion whose constants have no range yet waits for the context
// where they have one, and is translated again once that context is popped.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "smt2/problem.hpp"
#include "smt2/terms.hpp"

namespace smt2 {

// The stack as a script holds it.
struct stack_view {
  const symbols& table;
  const std::vector<term_ref>& assertions;         // live, oldest first
  const std::vector<std::uint64_t>& assertion_ids;  // one per assertion, never given twice
  std::vector<std::uint64_t> frame_ids;             // per level; the base's is 0
  std::vector<std::size_t> frame_starts;            // per level: its first assertion
  std::optional<interval> default_range;
};

struct context_operation {
  enum kind_t { pop, push, translate } kind;
  std::size_t count = 0;  // pop: how many contexts
  std::string text;       // translate: a text for the program's reader
};

class context_planner {
 public:
  // A constant as a variable of the search.
  struct variable {
    std::size_t context;
    std::string name;                     // in the texts
    std::optional<declared_range> range;  // none for a Bool
  };

  struct state {
    struct context {
      std::uint64_t frame;
      std::vector<int> variables;             // declaration indices made here
      std::vector<std::uint64_t> assertions;  // translated here, or implied by the ranges
      std::vector<mpq_class> pinned;          // helper constants made here
    };
    std::vector<context> contexts{context{0, {}, {}, {}}};
    std::map<int, variable> variables;                 // by declaration index
    std::map<std::string, int> names;                  // of the variables: their declaration index
    std::map<std::uint64_t, std::size_t> assertions;  // by id: its context
    helper_names helpers;                              // counted over the script's whole life
  };

  struct plan {
    std::vector<context_operation> operations;
    state after;
  };

  // The operations that bring the contexts in line with `stack`. Throws std::runtime_error
  // where a text cannot be written (a constant without a range, a number out of reach).
  plan make_plan(const stack_view& stack) const;
  // The plan has been carried out.
  void commit(plan&& p) { state_ = std::move(p.after); }
  // The search starts afresh: the base context alone, empty. The helpers' count goes on.
  void reset();

  const state& current() const { return state_; }
  // The declaration index of a variable named in the texts; -1 for a helper.
  int declaration_of(const std::string& name) const;

 private:
  std::optional<std::string> translate_into(state& s, const stack_view& stack, std::size_t level,
                                            std::vector<std::size_t>& waiting) const;

  state state_;
};

}  // namespace smt2
