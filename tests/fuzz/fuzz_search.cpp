// Whole searches: the first four bytes choose the settings, the rest is the input file. A plain
// formula is solved once; a transition system is checked depth by depth up to a small maximal
// depth, as the program does it. Every search stops after a fixed number of decisions plus
// conflicts, so that each input ends.
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "driver/run.hpp"
#include "harness.hpp"
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

run_settings_t decode(const std::uint8_t* h) {
  run_settings_t s;
  s.show_statistics = false;
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
void print_command_line(const run_settings_t& s) {
  std::fprintf(stderr, "krait --nostats");
  if (s.reuse) std::fprintf(stderr, " --reuse");
  if (s.shifting) std::fprintf(stderr, " --shifting");
  if (s.restarts) std::fprintf(stderr, " --rst %d %d %.17g %.17g", s.a_init, s.b_init, s.f_a, s.f_b);
  if (s.min_depth >= 0) std::fprintf(stderr, " --min_depth %d", s.min_depth);
  std::fprintf(stderr, " --max_depth %d", s.max_depth);
  if (s.var_order >= 0) std::fprintf(stderr, " --var_order %d", s.var_order);
  if (s.min_split_width >= 0) std::fprintf(stderr, " --msw %.17g", s.min_split_width);
  if (s.min_bound_delta >= 0) std::fprintf(stderr, " --mbd %.17g", s.min_bound_delta);
  std::fprintf(stderr, " <input>  (search budget %llu)\n", static_cast<unsigned long long>(step_budget));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < header_size) return 0;
  const run_settings_t s = decode(data);
  if (fuzz::verbose()) print_command_line(s);
  fuzz::run_input(data + header_size, size - header_size, [&](krait_solver& solver, hexpr& root) {
    configure_solver(solver, s);
    solver.step_budget = step_budget;
    check_input(solver, &root, s);
  });
  return 0;
}
