// k-induction, each case searched in a child process.
#include "prove/induction.hpp"

#include <cmath>
#include <cstdlib>
#include <set>
#include <utility>
#include <vector>
#include <iostream>
#include <string>

#include "base/child.hpp"
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

// In the child: the case searched; its verdict on a line of its own after any warnings of the
// search, the report of the case after it.
void search_case(hexpr& root, const run_settings_t& settings, const prove_settings& options, unsigned k, bool step_case,
                              const std::function<void(const krait_solver&)>& after_box) {
  krait_solver solver;
  solver.push_context();
  configure_solver(solver, settings);
  if (!step_case) translate_part(solver, root, 0, 0);
  for (unsigned i = 0; i < k; ++i) {
    translate_part(solver, root, 1, i);
    if (step_case) translate_negated_target(solver, root, i);
  }
  // A proved invariant holds in every reachable state: the step case may assume it in all.
  if (step_case && options.invariant != nullptr) {
    for (unsigned i = 0; i <= k; ++i) {
      solver.order_key_counter = i;
      solver.set_translation_phase(2);
      translation_phase = 2;
      options.invariant->hexpr2krait(solver, i, 1);
      solver.set_translation_phase(0);
      translation_phase = 0;
    }
  }
  solver.push_context();
  symtab.new_frame();
  translate_part(solver, root, 2, k);
  bool unsatisfiable = solver.solve();
  // Simple paths: a box whose states may repeat is no counterexample to induction, since the
  // loop between the repeated states can be cut. The states concerned are kept apart and the
  // case searched again; the constraints stay for every later search of this case.
  std::set<std::pair<unsigned, unsigned>> kept;
  if (step_case && (options.simple_path_reals || all_discrete())) {
    while (!unsatisfiable) {
      // Pairs kept apart already may still meet in a box of real ranges: they add nothing.
      std::vector<std::pair<unsigned, unsigned>> pairs = repeated_states(solver, k);
      std::erase_if(pairs, [&](const auto& p) { return kept.count(p) > 0; });
      if (pairs.empty()) break;
      solver.pop_context();
      symtab.delete_last_frame();
      for (const auto& [i, j] : pairs) keep_apart(solver, i, j);
      kept.insert(pairs.begin(), pairs.end());
      solver.push_context();
      symtab.new_frame();
      translate_part(solver, root, 2, k);
      unsatisfiable = solver.solve();
    }
  }
  if (!kept.empty())
    std::cout << "    simple paths: " << kept.size() << (kept.size() == 1 ? " pair" : " pairs") << " of states kept apart" << std::endl;
  std::cout << (unsatisfiable ? "verdict: unsatisfiable" : "verdict: box") << std::endl;
  if (settings.show_statistics) {
    std::cout << std::endl << "STATISTICS:" << std::endl;
    solver.print_statistics("    ");
  }
  if (!unsatisfiable) {
    if (settings.show_solution) {
      std::cout << std::endl << "SOLUTION: " << std::endl;
      symtab.print_solution(solver, std::cout, true);
    }
    if (after_box) after_box(solver);
  }
}

}  // namespace

case_result run_case(hexpr& root, const run_settings_t& settings, const prove_settings& options, unsigned k,
                     bool step_case, const std::function<void(const krait_solver&)>& after_box) {
  const child_output child = run_in_child([&] { search_case(root, settings, options, k, step_case, after_box); });
  // A fatal error in the child ends the run as it would have ended the program.
  std::cerr << child.err << std::flush;
  if (!child.exited || child.status != 0) std::exit(child.exited ? child.status : 1);
  case_result r;
  const std::size_t at = child.out.find("verdict: ");
  const std::size_t end = child.out.find('\n', at);
  r.warnings = child.out.substr(0, at);
  r.answer = child.out.substr(at, end - at) == "verdict: unsatisfiable" ? verdict::unsatisfiable : verdict::box;
  r.report = child.out.substr(end + 1);
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
  for (unsigned k = 0;; ++k) {
    report << "SOLVING:" << std::endl << "    k = " << k << std::endl;
    const case_result base = run_case(root, settings, options, k, false, [&](const krait_solver& solver) {
      if (certify_box) certify_box(solver, k);
    });
    report << base.warnings << "    base case: "
           << (base.answer == verdict::unsatisfiable ? "unsatisfiable" : "candidate solution box found") << std::endl;
    if (base.answer == verdict::box) {
      report << std::endl << "RESULT:" << std::endl
             << (of_invariant ? "    invariant false at depth " : "    target reachable at depth ") << k << std::endl
             << base.report;
      return false;
    }
    const case_result step = run_case(root, settings, options, k, true);
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
