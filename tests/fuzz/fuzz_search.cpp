// Whole searches: the first four bytes choose the settings, the rest is the input file. A plain
// formula is solved once; a transition system is checked depth by depth up to a small maximal
// depth, as the program does it. Every search stops after a fixed number of decisions plus
// conflicts, so that each input ends.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <vector>

#include "base/error.hpp"
#include "harness.hpp"
#include "hexpr/hexpr_nodes.hpp"
#include "lang/symtab.hpp"
#include "solver/solver.hpp"

namespace {

constexpr std::size_t header_size = 4;
constexpr u64 step_budget = 1000;

// Splitting widths and bound deltas worth trying, including the degenerate ends; a negative
// value keeps the solver's default.
constexpr double split_widths[16] = {-1, 1, 0.5, 0.1, 0.01, 1e-3, 1e-6, 1e-9,
                                     1e-12, 1e-17, 1e-300, 5e-324, 10, 1000, 1e10, 1e300};
constexpr double bound_deltas[8] = {-1, 1, 0.5, 0.1, 0.05, 0.001, 1e-4, 100};
// Restart growth factors, up to ones whose grown limit lies beyond 64 bits.
constexpr double growth_factors[4] = {1.5, 2, 100, 1e300};

struct settings {
  bool reuse = false;
  bool shifting = false;
  bool restarts = false;
  int min_depth = -1;  // -1: not given
  int max_depth = 0;
  int var_order = -1;  // -1: not given
  double min_split_width = -1;
  double min_bound_delta = -1;
  u32 a_init = 0, b_init = 0;
  double f_a = 0, f_b = 0;
};

settings decode(const std::uint8_t* h) {
  settings s;
  s.reuse = (h[0] & 1) != 0;
  s.shifting = (h[0] & 2) != 0;
  s.restarts = (h[0] & 4) != 0;
  s.min_depth = ((h[0] >> 3) & 3) - 1;
  s.max_depth = (s.min_depth < 0 ? 0 : s.min_depth) + ((h[0] >> 5) & 3);
  if ((h[0] & 0x80) != 0) s.var_order = h[1] % 10;
  s.min_split_width = split_widths[h[2] & 15];
  s.min_bound_delta = bound_deltas[(h[2] >> 4) & 7];
  s.a_init = 1 + (h[3] & 7);
  s.b_init = s.a_init * (1 + ((h[3] >> 3) & 3));
  s.f_a = growth_factors[(h[3] >> 5) & 3];
  s.f_b = s.f_a * ((h[3] & 0x80) != 0 ? 2 : 1);
  return s;
}

// The options that make the program run the same searches, for reproducing a finding.
void print_command_line(const settings& s) {
  std::fprintf(stderr, "krait --nostats");
  if (s.reuse) std::fprintf(stderr, " --reuse");
  if (s.shifting) std::fprintf(stderr, " --shifting");
  if (s.restarts) std::fprintf(stderr, " --rst %u %u %.17g %.17g", s.a_init, s.b_init, s.f_a, s.f_b);
  if (s.min_depth >= 0) std::fprintf(stderr, " --min_depth %d", s.min_depth);
  std::fprintf(stderr, " --max_depth %d", s.max_depth);
  if (s.var_order >= 0) std::fprintf(stderr, " --var_order %d", s.var_order);
  if (s.min_split_width >= 0) std::fprintf(stderr, " --msw %.17g", s.min_split_width);
  if (s.min_bound_delta >= 0) std::fprintf(stderr, " --mbd %.17g", s.min_bound_delta);
  std::fprintf(stderr, " <input>  (search budget %llu)\n", static_cast<unsigned long long>(step_budget));
}

void configure(krait_solver& solver, const settings& s) {
  if (s.min_split_width >= 0) solver.set_min_split_width(s.min_split_width);
  if (s.min_bound_delta >= 0) solver.set_min_bound_delta(s.min_bound_delta);
  if (s.reuse) solver.set_reuse(true);
  if (s.shifting) solver.set_shifting(true);
  if (s.restarts) {
    solver.set_restarts(true);
    solver.set_a_init(s.a_init);
    solver.set_b_init(s.b_init);
    solver.set_f_a(s.f_a);
    solver.set_f_b(s.f_b);
  }
  if (s.var_order >= 0) solver.set_var_order(static_cast<u32>(s.var_order));
  solver.step_budget = step_budget;
}

void report_result(const krait_solver& solver, bool unsatisfiable) {
  std::cout << "RESULT:" << std::endl;
  if (unsatisfiable) {
    std::cout << "    unsatisfiable" << std::endl << std::endl;
  } else {
    std::cout << "    candidate solution box found" << std::endl << std::endl << "SOLUTION: " << std::endl;
    symtab.print_solution(solver, std::cout, true);
  }
}

void plain(krait_solver& solver, hexpr& root) {
  root.hexpr2krait(solver, 0, 1);
  std::cout << std::endl << "SETTINGS:" << std::endl;
  solver.print_settings("    ");
  std::cout << std::endl << "SOLVING:" << std::endl << "    input formula" << std::endl;
  const bool unsatisfiable = solver.solve();
  std::cout << std::endl;
  report_result(solver, unsatisfiable);
}

void bounded_model_checking(krait_solver& solver, hexpr& root, const settings& s) {
  std::cout << std::endl << "SETTINGS:" << std::endl;
  solver.print_settings("    ");
  std::cout << std::endl;
  fuzz::translate_part(solver, root, 0, 0);
  for (int i = 0; i <= s.min_depth - 2; ++i) fuzz::translate_part(solver, root, 1, static_cast<u32>(i));
  std::vector<saved_dclause> saved;
  for (int k = s.min_depth >= 0 ? s.min_depth : 0; k <= s.max_depth; ++k) {
    std::cout << "SOLVING:" << std::endl << "    k = " << k << std::endl << std::endl;
    if (k > 0) {
      fuzz::translate_part(solver, root, 1, static_cast<u32>(k - 1));
      if (s.shifting) solver.shift_pending();
      if (s.reuse) solver.reuse_dclauses(saved);
    }
    solver.push_context();
    symtab.new_frame();
    fuzz::translate_part(solver, root, 2, static_cast<u32>(k));
    if (s.reuse) saved.clear();
    const bool unsatisfiable = solver.solve();
    report_result(solver, unsatisfiable);
    if (s.reuse) saved = solver.collect_reusable();
    solver.pop_context();
    symtab.delete_last_frame();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < header_size) return 0;
  const settings s = decode(data);
  if (fuzz::verbose()) print_command_line(s);
  fuzz::run_input([&] {
    std::unique_ptr<krait_solver> solver = fuzz::new_solver();
    configure(*solver, s);
    std::unique_ptr<hexpr> root = fuzz::parse(data + header_size, size - header_size);
    if (root == nullptr) return;
    switch (root->get_opname()) {
      case HEXPR_FORMULA: plain(*solver, *root); break;
      case HEXPR_PROOF_SPEC: bounded_model_checking(*solver, *root, s); break;
      default: error("Syntax error in input file.");
    }
    fuzz::finish(std::move(solver), std::move(root));
  });
  return 0;
}
