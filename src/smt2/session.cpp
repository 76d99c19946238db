// The search process of a script: requests on one pipe, outcomes on another.
//
// Requests, one per line: "pop N", "push", "text N" followed by N bytes of a text in the input
// language (translated into the top context), and "check WIDTH SEED" ("-" for none). A check
// answers with outcome blocks as a child of a single check writes them, then "carried N" (the
// learned clauses kept) or "search failed", then "end of check".
#include "smt2/session.hpp"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include "base/child.hpp"
#include "base/random.hpp"
#include "hexpr/hexpr.hpp"
#include "hexpr/hexpr_nodes.hpp"
#include "hexpr/preprocess.hpp"
#include "lang/parser.hpp"
#include "lang/symtab.hpp"
#include "solver/solver.hpp"

namespace smt2 {
namespace {

constexpr const char* closing = "end of check";

// The translation phase of the clauses of a context: their part mask tells which contexts a
// learned clause depends on. Phases 2 and 3 are avoided (shifting takes the first for a
// transition and reuse never carries the second), so five bits are left: the contexts from the
// fifth up share the last.
constexpr u32 phases[] = {1, 4, 5, 6, 7};
constexpr std::size_t marked_levels = sizeof phases / sizeof phases[0];

u32 phase_of(std::size_t level) { return phases[std::min(level, marked_levels - 1)]; }

class context_server {
 public:
  context_server() {
    solver_.push_context();
    symtab.new_frame();
    levels_.emplace_back();
  }

  void serve(std::FILE* requests, std::FILE* answers) {
    answers_ = fileno(answers);
    char* line = nullptr;
    std::size_t capacity = 0;
    while (getline(&line, &capacity, requests) > 0) {
      std::istringstream fields(line);
      std::string command, a, b;
      fields >> command >> a >> b;
      if (command == "pop") {
        pop(std::stoul(a));
      } else if (command == "push") {
        push();
      } else if (command == "text") {
        std::string text(std::stoul(a), '\0');
        if (std::fread(text.data(), 1, text.size(), requests) != text.size()) break;
        translate(text);
      } else if (command == "check") {
        check_settings settings;
        if (a != "-") settings.min_split_width = std::strtod(a.c_str(), nullptr);
        if (b != "-") settings.random_seed = std::stoi(b);
        check(settings);
      }
    }
    std::free(line);
  }

 private:
  // A learned clause and the deepest context it depends on.
  struct carried_clause {
    saved_dclause clause;
    std::size_t level;
  };
  struct level {
    std::vector<std::unique_ptr<hexpr>> formulas;  // as parsed, for the certifier
    std::vector<carried_clause> carried;           // of lower contexts: added there when this one goes
  };

  std::size_t top() const { return levels_.size() - 1; }

  // Level-0 propagation: a conflict means the assertions so far contradict each other, and
  // pushing a context would end the process with the check's fatal error.
  bool contradictory() {
    if (!contradictory_ && solver_.propagate()) contradictory_ = true;
    return contradictory_;
  }

  // Above a contradiction a context is only counted: nothing can be added there that matters,
  // and every check answers unsat until the contradicting context goes.
  void push() {
    if (contradictory()) {
      ++above_contradiction_;
      return;
    }
    solver_.push_context();
    symtab.new_frame();
    levels_.emplace_back();
  }

  // The clauses kept for lower contexts come back in the top one left, once.
  void pop(std::size_t count) {
    std::vector<carried_clause> carried;
    for (; count > 0 && above_contradiction_ > 0; --count) --above_contradiction_;
    for (; count > 0 && top() > 0; --count) {
      solver_.pop_context();
      symtab.delete_last_frame();
      std::vector<carried_clause>& more = levels_.back().carried;
      carried.insert(carried.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
      levels_.pop_back();
      contradictory_ = false;
    }
    std::erase_if(carried, [&](const carried_clause& c) { return c.level > top(); });
    add_learned(carried);
  }

  void translate(const std::string& text) {
    if (contradictory_) return;
    std::FILE* input = fmemopen(const_cast<char*>(text.data()), text.size(), "r");
    hexpr* parsed = parse_hexpr_file(input);
    std::fclose(input);
    levels_.back().formulas.emplace_back(copy_hexpr(parsed));
    std::unique_ptr<hexpr> root(prepare_hexpr(parsed));
    // The translation lists its nodes among the users of the symbols they name; the tree goes
    // once translated, and so do they.
    std::map<const hexpr_symobj*, std::size_t> users;
    for (const hexpr_symobj* record : symtab.variables) users[record] = record->users.size();
    solver_.set_translation_phase(phase_of(top()));
    root->hexpr2krait(solver_, 0, 1);
    solver_.set_translation_phase(0);
    for (hexpr_symobj* record : symtab.variables) {
      const auto before = users.find(record);
      record->users.resize(before == users.end() ? 0 : before->second);
    }
  }

  // Every formula of the live contexts, as one, for the certifier.
  std::unique_ptr<hexpr> all_formulas() const {
    auto* all = new hexpr_and;
    for (const level& l : levels_)
      for (const std::unique_ptr<hexpr>& f : l.formulas)
        all->add_subexpr(copy_hexpr(static_cast<const hexpr_inner_node&>(*f).subexprs_begin()[0]));
    return std::make_unique<hexpr_formula>(all);
  }

  // One search at one width in a context of its own, its outcome written; false for a box the
  // certifier could not verify. The clauses it learned are returned.
  bool search(double width, std::vector<saved_dclause>& learned) {
    solver_.push_context();
    solver_.set_min_split_width(width);
    std::string lines = "unsat\n";
    const bool settled = solver_.solve() || describe_outcome(false, *all_formulas(), solver_, lines);
    write_outcome(answers_, lines);
    learned = solver_.collect_reusable();
    solver_.pop_context();
    return settled;
  }

  // The deepest context a learned clause depends on: that of the clauses it was learned from
  // (by their part mask) and that of the variables it speaks of.
  std::size_t level_of(const saved_dclause& c) const {
    std::size_t deepest = 0;
    for (std::size_t l = 1; l < marked_levels; ++l)
      if (c.part_mask & (2u << (phase_of(l) - 1))) deepest = l;
    if (deepest == marked_levels - 1) deepest = top();  // the last bit stands for all above
    for (const bound& a : c.atoms) {
      std::size_t l = top();
      while (l > deepest && a.var <= solver_.context_stack[l].var_count) --l;
      deepest = std::max(deepest, l);
    }
    return deepest;
  }

  // Clauses that hold in the top context go there; those that hold below are kept to be added
  // again when it is popped.
  void add_learned(const std::vector<carried_clause>& clauses) {
    std::vector<saved_dclause> added;
    for (const carried_clause& c : clauses) {
      added.push_back(c.clause);
      if (c.level < top()) levels_.back().carried.push_back(c);
    }
    solver_.reuse_dclauses(added);
  }

  void check(const check_settings& settings) {
    if (settings.random_seed) random_seed = *settings.random_seed;
    const std::string end = std::string("\n") + closing + "\n";
    if (contradictory()) {
      write_outcome(answers_, "unsat\n");
      write_line("\ncarried 0" + end);
      return;
    }
    const std::vector<double> widths = search_widths(settings);
    std::vector<saved_dclause> learned;
    const bool settled = search(widths[0], learned);
    std::vector<carried_clause> carried;
    for (saved_dclause& c : learned) carried.push_back({std::move(c), 0});
    for (carried_clause& c : carried) c.level = level_of(c.clause);
    add_learned(carried);
    const bool refined_well = settled || widths.size() == 1 || refine(widths);
    write_line(refined_well ? "\ncarried " + std::to_string(carried.size()) + end : "\nsearch failed" + end);
  }

  // The finer searches, in a copy of this process that the time limit ends; false when it
  // ended otherwise.
  bool refine(const std::vector<double>& widths) {
    const pid_t child = fork();
    if (child < 0) return false;
    if (child == 0) {
      alarm(refinement_seconds);
      for (std::size_t i = 1; i < widths.size(); ++i) {
        std::vector<saved_dclause> learned;
        if (contradictory()) {
          write_outcome(answers_, "unsat\n");
          break;
        }
        if (search(widths[i], learned)) break;
      }
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) == 0 : WTERMSIG(status) == SIGALRM;
  }

  void write_line(const std::string& text) const {
    if (write(answers_, text.data(), text.size()) < 0) _exit(1);
  }

  krait_solver solver_;
  std::vector<level> levels_;
  bool contradictory_ = false;
  std::size_t above_contradiction_ = 0;
  int answers_ = -1;
};

std::string width_text(double w) {
  char buffer[64];
  return std::string(buffer, std::to_chars(buffer, buffer + sizeof buffer, w).ptr);
}

}  // namespace

search_process::search_process() = default;
search_process::~search_process() = default;

void search_process::reset() { child_.reset(); }

std::optional<outcome> search_process::check(const std::vector<context_operation>& sync, const check_settings& settings) {
  if (!child_) {
    try {
      child_ = std::make_unique<serving_child>(
          [](std::FILE* requests, std::FILE* answers) {
            context_server server;
            server.serve(requests, answers);
          },
          serving_child::answers_on::own_stream);
    } catch (const std::runtime_error&) {
      return std::nullopt;  // no process to be had: the search from scratch says why
    }
    ++started_;
  }
  std::string request;
  for (const context_operation& op : sync) {
    switch (op.kind) {
      case context_operation::pop: request += "pop " + std::to_string(op.count) + "\n"; break;
      case context_operation::push: request += "push\n"; break;
      case context_operation::translate: request += "text " + std::to_string(op.text.size()) + "\n" + op.text; break;
    }
  }
  request += "check " + (settings.min_split_width ? width_text(*settings.min_split_width) : "-") + " " +
             (settings.random_seed ? std::to_string(*settings.random_seed) : "-") + "\n";
  child_->send(request);
  const serving_child::answer answer = child_->read_answer(closing);
  if (!answer.complete) {
    child_.reset();
    return std::nullopt;
  }
  outcome result;
  const std::size_t carried = answer.text.rfind("\ncarried ");
  if (carried == std::string::npos || !read_outcome(answer.text, result)) return std::nullopt;
  result.carried = std::stoul(answer.text.substr(carried + 9));
  return result;
}

}  // namespace smt2
