// k-induction, each case searched in a child process.
#include "prove/induction.hpp"

#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <cstdlib>
#include <set>
#include <utility>
#include <vector>
#include <iostream>
#include <string>

#include "driver/run.hpp"
#include "hexpr/hexpr_nodes.hpp"
#include "hexpr/translate.hpp"
#include "lang/symtab.hpp"
#include "solver/solver.hpp"

namespace prove {
namespace {

// TARGET negated at one step, permanently: the step case's states before the last. The part
// stays in the tree; the negation borrows it.
void translate_negated_target(krait_solver& solver, hexpr& root, std::uint32_t step) {
  hexpr*& slot = static_cast<hexpr_inner_node&>(root).subexprs_begin()[2];
  auto* negation = new hexpr_not(slot);
  struct borrowed {
    hexpr_formula formula;
    hexpr_not* negation;
    explicit borrowed(hexpr_not* n) : formula(n), negation(n) {}
    ~borrowed() { negation->subexprs_begin()[0] = nullptr; }
  } wrapper(negation);
  solver.order_key_counter = step;
  solver.set_translation_phase(3);
  translation_phase = 3;
  wrapper.formula.hexpr2krait(solver, step, 1);
  solver.set_translation_phase(0);
  translation_phase = 0;
}

// The state variables: the input's variables that are not static.
std::vector<hexpr_symobj*> state_variables() {
  std::vector<hexpr_symobj*> state;
  for (hexpr_symobj* record : symtab.variables)
    if (!record->hidden && !record->is_static) state.push_back(record);
  return state;
}

// Pairs of step-case states that the box lets be equal: every state variable's ranges at both
// steps meet.
std::vector<std::pair<unsigned, unsigned>> repeated_states(krait_solver& solver, unsigned k) {
  const std::vector<hexpr_symobj*> state = state_variables();
  auto range = [&](hexpr_symobj* v, unsigned step) {
    const u32 x = instance_of(solver, *v, step);
    bool strict;
    double lo = -HUGE_VAL, hi = HUGE_VAL;
    if (!solver.get_lower_bound(x, strict, lo)) lo = -HUGE_VAL;
    if (!solver.get_upper_bound(x, strict, hi)) hi = HUGE_VAL;
    return std::pair<double, double>(lo, hi);
  };
  std::vector<std::pair<unsigned, unsigned>> pairs;
  for (unsigned j = 1; j <= k; ++j) {
    for (unsigned i = 0; i < j; ++i) {
      bool meet = true;
      for (hexpr_symobj* v : state) {
        const auto a = range(v, i), b = range(v, j);
        meet = meet && a.first <= b.second && b.first <= a.second;
      }
      if (meet) pairs.emplace_back(i, j);
    }
  }
  return pairs;
}

// States i and j differ in some state variable: x_j - x_i at least 1 away from 0 on an integer,
// not 0 on a real.
void keep_apart(krait_solver& solver, unsigned i, unsigned j) {
  std::vector<bound> atoms;
  for (hexpr_symobj* v : state_variables()) {
    const u32 xi = instance_of(solver, *v, i), xj = instance_of(solver, *v, j);
    const u32 d = solver.add_tclause(KRAIT_SUM, xj, solver.add_tclause(KRAIT_SCALE, xi, 0, -1.0), 0);
    atoms.push_back({d, false, !v->is_int, v->is_int ? -1.0 : 0.0});
    atoms.push_back({d, true, !v->is_int, v->is_int ? 1.0 : 0.0});
  }
  solver.add_dclause(atoms, false);
}

bool all_discrete() {
  for (hexpr_symobj* v : state_variables())
    if (!v->is_int) return false;
  return true;
}

// One case carried from k to k + 1 in its own solver, as bounded model checking carries its
// unwinding: the base case keeps INIT and the steps of TRANS; the step case keeps TRANS, TARGET
// negated at the states before the last, the invariant and the states kept apart. TARGET at the
// last state lives in a context of its own for one search. Learned clauses are reused and
// shifted as the options ask, as bounded model checking does.
class case_search {
 public:
  case_search(hexpr& root, const run_settings_t& settings, const prove_settings& options, bool step_case,
              const std::function<void(const krait_solver&, unsigned depth)>& after_box)
      : root_(root), settings_(settings), options_(options), step_case_(step_case), after_box_(after_box) {
    solver_.push_context();
    configure_solver(solver_, settings);
    if (!step_case_) translate_part(solver_, root_, 0, 0);
  }

  // The search at k (one more than the last); its verdict on a line of its own after any
  // warnings, the report of the case after it.
  void run(unsigned k) {
    for (; steps_ < k; ++steps_) {
      translate_part(solver_, root_, 1, steps_);
      if (step_case_) translate_negated_target(solver_, root_, steps_);
    }
    if (settings_.shifting) solver_.shift_pending();
    if (settings_.reuse) solver_.reuse_dclauses(saved_);
    // A proved invariant holds in every reachable state: the step case may assume it in all.
    // It is no part of TRANS: what is learned from it is never shifted to other steps.
    for (; step_case_ && options_.invariant != nullptr && assumed_ <= k; ++assumed_) {
      solver_.order_key_counter = assumed_;
      solver_.set_translation_phase(3);
      translation_phase = 3;
      options_.invariant->hexpr2krait(solver_, assumed_, 1);
      solver_.set_translation_phase(0);
      translation_phase = 0;
    }
    bool unsatisfiable = search(k);
    // Simple paths: a box whose states may repeat is no counterexample to induction, since the
    // loop between the repeated states can be cut. The states concerned are kept apart and the
    // case searched again; the constraints stay for every later k.
    std::size_t added = 0;
    if (step_case_ && (options_.simple_path_reals || all_discrete())) {
      while (!unsatisfiable) {
        // Pairs kept apart already may still meet in a box of real ranges: they add nothing.
        std::vector<std::pair<unsigned, unsigned>> pairs = repeated_states(solver_, k);
        std::erase_if(pairs, [&](const auto& p) { return kept_.count(p) > 0; });
        if (pairs.empty()) break;
        close_target();
        // Not a part of TRANS: never shifted to other steps.
        solver_.set_translation_phase(3);
        for (const auto& [i, j] : pairs) keep_apart(solver_, i, j);
        solver_.set_translation_phase(0);
        kept_.insert(pairs.begin(), pairs.end());
        added += pairs.size();
        unsatisfiable = search(k);
      }
    }
    if (added > 0) {
      std::cout << "    simple paths: " << added << (added == 1 ? " pair" : " pairs") << " of states kept apart"
                << std::endl;
    }
    std::cout << (unsatisfiable ? "verdict: unsatisfiable" : "verdict: box") << std::endl;
    if (settings_.show_statistics) {
      std::cout << std::endl << "STATISTICS:" << std::endl;
      solver_.print_statistics("    ");
    }
    if (!unsatisfiable) {
      if (settings_.show_solution) {
        std::cout << std::endl << "SOLUTION: " << std::endl;
        symtab.print_solution(solver_, std::cout, true);
      }
      if (after_box_) after_box_(solver_, k);
    }
    if (settings_.reuse) saved_ = solver_.collect_reusable();
    close_target();
  }

 private:
  bool search(unsigned k) {
    solver_.push_context();
    symtab.new_frame();
    target_open_ = true;
    translate_part(solver_, root_, 2, k);
    return solver_.solve();
  }

  void close_target() {
    if (!target_open_) return;
    solver_.pop_context();
    symtab.delete_last_frame();
    target_open_ = false;
  }

  hexpr& root_;
  const run_settings_t& settings_;
  const prove_settings& options_;
  bool step_case_;
  std::function<void(const krait_solver&, unsigned depth)> after_box_;
  krait_solver solver_;
  unsigned steps_ = 0;    // steps of TRANS translated
  unsigned assumed_ = 0;  // states that assume the invariant
  bool target_open_ = false;
  std::set<std::pair<unsigned, unsigned>> kept_;
  std::vector<saved_dclause> saved_;
};

}  // namespace

case_worker::case_worker(hexpr& root, const run_settings_t& settings, const prove_settings& options, bool step_case,
                         const std::function<void(const krait_solver&, unsigned depth)>& after_box)
    : child_(
          [&](std::FILE* requests, std::FILE*) {
            // A k per line; the report of each search on standard output, closed by its marker.
            case_search search(root, settings, options, step_case, after_box);
            for (unsigned k; std::fscanf(requests, "%u", &k) == 1;) {
              search.run(k);
              std::cout << end_marker << std::endl;
              std::fflush(stdout);
            }
          },
          serving_child::answers_on::standard_output) {}

case_result case_worker::run(unsigned k) {
  child_.send(std::to_string(k) + "\n");
  const serving_child::answer answer = child_.read_answer(end_marker);
  const std::string& text = answer.text;
  if (!answer.complete) {
    // A fatal error in the child has said why on standard error; the run ends as it would have.
    std::cout << text << std::flush;
    std::exit(child_.exited() && child_.status() != 0 ? child_.status() : 1);
  }
  case_result r;
  const std::size_t at = text.find("verdict: ");
  const std::size_t end = text.find('\n', at);
  r.warnings = text.substr(0, at);
  r.answer = text.substr(at, end - at) == "verdict: unsatisfiable" ? verdict::unsatisfiable : verdict::box;
  r.report = text.substr(end + 1);
  return r;
}

void print_settings(const run_settings_t& settings) {
  krait_solver shown;
  configure_solver(shown, settings);
  std::cout << std::endl << "SETTINGS:" << std::endl;
  shown.print_settings("    ");
  std::cout << std::endl;
}

bool prove_target(hexpr& root, const run_settings_t& settings, const prove_settings& options,
                  const std::function<void(const krait_solver&, unsigned depth)>& certify_box, bool of_invariant) {
  std::ostream& report = std::cout;
  case_worker base_case(root, settings, options, false, certify_box);
  case_worker step_case(root, settings, options, true);
  for (unsigned k = 0;; ++k) {
    report << "SOLVING:" << std::endl << "    k = " << k << std::endl;
    const case_result base = base_case.run(k);
    report << base.warnings << "    base case: "
           << (base.answer == verdict::unsatisfiable ? "unsatisfiable" : "candidate solution box found") << std::endl;
    if (base.answer == verdict::box) {
      report << std::endl << "RESULT:" << std::endl
             << (of_invariant ? "    invariant false at depth " : "    target reachable at depth ") << k << std::endl
             << base.report;
      return false;
    }
    const case_result step = step_case.run(k);
    report << step.warnings << "    step case: "
           << (step.answer == verdict::unsatisfiable ? "unsatisfiable" : "candidate solution box found") << std::endl
           << std::endl;
    if (step.answer == verdict::unsatisfiable) {
      const std::string proved = " at every depth (proved by induction at k = " + std::to_string(k) + ")";
      if (of_invariant) {
        report << "    invariant holds" << proved << std::endl << std::endl;
        return true;
      }
      report << "RESULT:" << std::endl << "    target unreachable" << proved << std::endl << step.report << std::endl;
      return true;
    }
    // The step case's box: states that no induction at this k excludes, a hint for an invariant.
    if (options.max_k >= 0 && static_cast<int>(k) >= options.max_k) {
      report << "RESULT:" << std::endl << (of_invariant ? "    invariant not proven up to k = " : "    not proven up to k = ")
             << k << std::endl << step.report;
      return false;
    }
  }
}

}  // namespace prove
