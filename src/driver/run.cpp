// One check of an input: a plain formula, a minimisation or bounded model checking, each with
// its report.
#include "driver/run.hpp"

#include <iostream>
#include <vector>

#include "base/error.hpp"
#include "hexpr/hexpr_nodes.hpp"
#include "hexpr/translate.hpp"
#include "lang/symtab.hpp"
#include "solver/solver.hpp"

namespace {

std::ostream& report = std::cout;
constexpr const char* indent = "    ";

void line(const char* text) { report << text << std::endl; }

void print_settings_section(const krait_solver& solver) {
  report << std::endl << "SETTINGS:" << std::endl;
  solver.print_settings(indent);
  report << std::endl;
}

// The run's sections, as its settings ask for them.
struct check {
  const run_settings_t& given;
  const box_observer& after_box;

  void box_reported(const krait_solver& solver, int depth) const {
    if (after_box) after_box(solver, depth);
  }

void print_statistics_section(const krait_solver& solver) {
  if (!given.show_statistics) return;
  report << std::endl << "STATISTICS:" << std::endl;
  solver.print_statistics(indent);
}

void print_solution_section(const krait_solver& solver) {
  if (!given.show_solution) return;
  report << std::endl << "SOLUTION: " << std::endl;
  symtab.print_solution(solver, report, true);
}

// The result block; after an unsatisfiable result an empty line closes it.
void print_result(const krait_solver& solver, bool unsatisfiable) {
  line("RESULT:");
  if (unsatisfiable) {
    line("    unsatisfiable");
    print_statistics_section(solver);
    report << std::endl;
  } else {
    line("    candidate solution box found");
    print_statistics_section(solver);
    print_solution_section(solver);
  }
}

void minimize(krait_solver& solver) {
  const symbol_ref entry = symtab.lookup(given.objective);
  // The translation's own symbols are no variables of the input.
  if (entry == no_symbol() || (*entry)->hidden) error("Objective variable '%s' does not exist!", given.objective);
  // A declared variable the formula never mentions still gets its instance.
  const u32 objective = instance_of(solver, **entry, 0);
  double lo = (*entry)->lower;

  print_settings_section(solver);
  line("MINIMIZING:");
  report << "    value of variable '" << given.objective << "'" << std::endl;
  if (solver.solve()) error("Problem is infeasible.");
  bool strict;
  double best;
  solver.get_upper_bound(objective, strict, best);
  report << "    objective value: " << best << std::endl;

  // Bisection between the proved lower limit and the best value found.
  auto step = [&](double upper) {
    solver.push_context();
    solver.add_unit_dclause(solver.make_bound(objective, 2, lo));
    solver.add_unit_dclause(solver.make_bound(objective, 0, upper));
    return solver.solve();
  };
  bool after_unsatisfiable = false;
  bool holds_box = true;  // false when the final search of a settled gap found none
  for (;;) {
    const double mid = (lo + best) * 0.5;
    if (after_unsatisfiable && mid == lo) {
      // The gap can no longer be halved: settle on the best range once more and keep it.
      holds_box = !step(best);
      if (holds_box) {
        solver.get_upper_bound(objective, strict, best);
        report << "    objective value: " << best << std::endl;
      }
      break;
    }
    after_unsatisfiable = step(mid);
    if (after_unsatisfiable) {
      lo = mid;
      solver.pop_context();
      continue;
    }
    solver.get_upper_bound(objective, strict, best);
    report << "    objective value: " << best << std::endl;
    if (!(best - lo > 1e-6)) break;
    solver.pop_context();
  }
  print_statistics_section(solver);
  print_solution_section(solver);
  if (holds_box) box_reported(solver, -1);
}

void plain_mode(krait_solver& solver, hexpr* root) {
  root->hexpr2krait(solver, 0, 1);
  if (given.min_depth >= 0) warning("Option '--min_depth' without effect when not in BMC mode!");
  if (given.max_depth >= 0) warning("Option '--max_depth' without effect when not in BMC mode!");
  if (given.var_order > 2) warning("Choosen variable order without effect when not in BMC mode!");
  if (given.reuse) warning("Option '--reuse' without effect when not in BMC mode!");
  if (given.shifting) warning("Option '--shifting' without effect when not in BMC mode!");
  if (given.minimize) {
    minimize(solver);
    return;
  }
  print_settings_section(solver);
  line("SOLVING:");
  line("    input formula");
  const bool unsatisfiable = solver.solve();
  report << std::endl;
  print_result(solver, unsatisfiable);
  if (!unsatisfiable) box_reported(solver, -1);
}

void bmc_mode(krait_solver& solver, hexpr* root) {
  if (given.minimize) error("Optimization is not yet available in BMC mode!");
  print_settings_section(solver);
  translate_part(solver, *root, 0, 0);
  for (int i = 0; i <= given.min_depth - 2; ++i) translate_part(solver, *root, 1, static_cast<u32>(i));
  std::vector<saved_dclause> saved;
  for (int k = given.min_depth >= 0 ? given.min_depth : 0;; ++k) {
    line("SOLVING:");
    report << "    k = " << k << std::endl << std::endl;
    if (k > 0) {
      translate_part(solver, *root, 1, static_cast<u32>(k - 1));
      if (given.shifting) solver.shift_pending();
      if (given.reuse) solver.reuse_dclauses(saved);
    }
    solver.push_context();
    symtab.new_frame();
    translate_part(solver, *root, 2, static_cast<u32>(k));
    if (given.reuse) saved.clear();
    const bool unsatisfiable = solver.solve();
    print_result(solver, unsatisfiable);
    if (!unsatisfiable) box_reported(solver, k);
    if (given.reuse) saved = solver.collect_reusable();
    solver.pop_context();
    symtab.delete_last_frame();
    if (given.max_depth >= 0 ? k + 1 > given.max_depth : !unsatisfiable) break;
  }
}

};

}  // namespace

void configure_solver(krait_solver& solver, const run_settings_t& given) {
  if (given.min_split_width >= 0) solver.set_min_split_width(given.min_split_width);
  if (given.min_bound_delta >= 0) solver.set_min_bound_delta(given.min_bound_delta);
  if (given.reuse) solver.set_reuse(true);
  if (given.shifting) solver.set_shifting(true);
  if (given.restarts) {
    solver.set_restarts(true);
    solver.set_a_init(static_cast<u32>(given.a_init));
    solver.set_b_init(static_cast<u32>(given.b_init));
    solver.set_f_a(given.f_a);
    solver.set_f_b(given.f_b);
  }
  if (given.var_order >= 0) solver.set_var_order(static_cast<u32>(given.var_order));
}

void translate_part(krait_solver& solver, hexpr& root, int part, u32 step) {
  hexpr*& slot = static_cast<hexpr_inner_node&>(root).subexprs_begin()[part];
  // A wrapper formula makes the part a translation root; it borrows the part from the tree,
  // also when a fatal error handed to a harness unwinds through here.
  struct borrowed {
    hexpr_formula formula;
    explicit borrowed(hexpr*& part) : formula(part) {}
    ~borrowed() { formula.subexprs_begin()[0] = nullptr; }
  } wrapper(slot);
  // Variables made for this step (auxiliary ones too) are ordered by it in the bmc orders.
  solver.order_key_counter = step;
  solver.set_translation_phase(static_cast<u32>(part + 1));
  translation_phase = part + 1;
  wrapper.formula.hexpr2krait(solver, step, 1);
  solver.set_translation_phase(0);
  translation_phase = 0;
}

void check_input(krait_solver& solver, hexpr* root, const run_settings_t& settings, const box_observer& after_box) {
  check run{settings, after_box};
  switch (root->get_opname()) {
    case HEXPR_FORMULA: run.plain_mode(solver, root); break;
    case HEXPR_PROOF_SPEC: run.bmc_mode(solver, root); break;
    default: error("Syntax error in input file.");
  }
}
