#pragma once

// Proofs that a transition system's target is never reached, by k-induction on the search: at
// each k the base case (INIT, k steps of TRANS, TARGET at step k: bounded model checking) and
// the step case (k + 1 states within their ranges linked by TRANS, TARGET false at the first k
// and true at the last, no INIT; states a box lets repeat are kept apart, since a path to the
// target need not loop: simple paths, which make the induction complete for finite systems). An unsatisfiable step case after unsatisfiable base cases up
// to k proves the target unreachable at every depth; only "unsatisfiable" proves anything.

#include <cstdio>
#include <functional>
#include <string>

#include "base/child.hpp"

class hexpr;
struct krait_solver;
struct run_settings_t;

namespace prove {

enum class verdict { unsatisfiable, box };

struct prove_settings {
  int max_k = -1;                  // the largest k tried; -1: no limit
  bool simple_path_reals = false;  // simple paths also for systems with real state variables
  hexpr* invariant = nullptr;      // a proved invariant (a prepared formula root) the step case assumes
};

struct case_result {
  verdict answer = verdict::box;
  std::string warnings;  // what the search warned of, as the program prints it
  std::string report;    // the statistics block, and the SOLUTION block of a box
};

// One case (base or step) searched in a child process of its own, carried from k to k + 1:
// the symbol table and the translation are process-wide, and each case needs its own instances
// of the variables. `after_box` runs in the child on a box (with its depth), its output added to the report. A
// fatal error in the child ends the run with its status.
class case_worker {
 public:
  case_worker(hexpr& root, const run_settings_t& settings, const prove_settings& options, bool step_case,
              const std::function<void(const krait_solver&, unsigned depth)>& after_box = {});

  case_result run(unsigned k);  // k = 0, 1, 2, ... in turn

 private:
  static constexpr const char* end_marker = "end of case";
  serving_child child_;
};

// The SETTINGS section, as the program prints it.
void print_settings(const run_settings_t& settings);

// The whole proof with its report on standard output; true when proved. For the user's
// invariant (`of_invariant`, the system's TARGET being its negation) a proof is reported as an
// intermediate line, and a failure in the words of an invariant.
bool prove_target(hexpr& root, const run_settings_t& settings, const prove_settings& options,
                  const std::function<void(const krait_solver&, unsigned depth)>& certify_box = {},
                  bool of_invariant = false);

}  // namespace prove
