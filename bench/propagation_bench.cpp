// Bound assignments per CPU-second on propagation-heavy problems built through the solver's
// interface. The search statistics are printed too: a change to the hot path must leave them
// exactly as they were.
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "base/random.hpp"
#include "base/stopwatch.hpp"
#include "solver/solver.hpp"

namespace {

// x_{i+1} = x_i + y_i along a long chain, with the end squeezed so that the search has to
// split and learn: propagation runs the whole chain back and forth.
void chain(krait_solver& s) {
  const int n = 400;
  u32 x = s.define_float_var(0, 10);
  for (int i = 0; i < n; ++i) {
    const u32 y = s.define_float_var(0.5, 1.5);
    x = s.add_tclause(KRAIT_SUM, x, y, 0);
  }
  s.add_unit_dclause({x, false, false, 0.5 * n + 0.3});
  s.add_unit_dclause({x, true, false, 0.5 * n + 0.1});
}

// Products and sums of random pairs with disjunctions on the results.
void products(krait_solver& s) {
  std::mt19937_64 rng(2026);
  std::vector<u32> v;
  for (int i = 0; i < 30; ++i) v.push_back(s.define_float_var(-3, 3));
  for (int i = 0; i < 100; ++i) {
    const u32 a = v[rng() % v.size()], b = v[rng() % v.size()];
    const u32 p = s.add_tclause(rng() % 2 ? KRAIT_PRODUCT : KRAIT_SUM, a, b, 0);
    v.push_back(p);
    const double c = static_cast<double>(rng() % 5) - 2.0;
    s.add_dclause({{p, true, false, c}, {a, false, true, c - 1.0}}, false);
  }
}

// Pigeons in too few holes: pairwise differences kept away from 0, unsatisfiable only after
// a search through many splits and conflicts.
void pigeons(krait_solver& s) {
  const int holes = 7;
  std::vector<u32> p;
  for (int i = 0; i <= holes; ++i) p.push_back(s.define_int_var(1, holes));
  for (int i = 0; i <= holes; ++i) {
    for (int j = i + 1; j <= holes; ++j) {
      const u32 d = s.add_tclause(KRAIT_SUM, p[i], s.add_tclause(KRAIT_SCALE, p[j], 0, -1.0), 0);
      s.add_dclause({{d, false, false, -1.0}, {d, true, false, 1.0}}, false);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  struct problem {
    const char* name;
    std::function<void(krait_solver&)> build;
  };
  const problem problems[] = {{"chain", chain}, {"products", products}, {"pigeons", pigeons}};
  u64 assignments = 0;
  double seconds = 0.0;
  for (const problem& p : problems) {
    // Problems named on the command line run alone (for profiling one of them).
    bool wanted = argc == 1;
    for (int a = 1; a < argc; ++a) wanted = wanted || std::string(argv[a]) == p.name;
    if (!wanted) continue;
    random_seed = 13;
    krait_solver s;
    s.set_min_split_width(0.05);
    p.build(s);
    const std::uint64_t start = process_cpu_milliseconds();
    const bool unsat = s.solve();
    const double used = static_cast<double>(process_cpu_milliseconds() - start) / 1000.0;
    std::printf("%-9s %-5s assignments %9llu  decisions %7llu  conflicts %6llu  %.3f s\n", p.name,
                unsat ? "unsat" : "box", static_cast<unsigned long long>(s.num_assignments),
                static_cast<unsigned long long>(s.num_decisions), static_cast<unsigned long long>(s.num_conflicts),
                used);
    assignments += s.num_assignments;
    seconds += used;
  }
  std::printf("bound assignments per CPU-second: %.0f\n", seconds > 0 ? static_cast<double>(assignments) / seconds : 0.0);
}
