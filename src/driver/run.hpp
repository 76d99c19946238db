#pragma once

// One check of a parsed and preprocessed input, reported on standard output: a plain formula,
// the minimisation of a variable, or bounded model checking depth by depth. The program and
// its companions share it.

#include <cstdint>
#include <functional>

class hexpr;
struct krait_solver;

// Settings of a run. Numeric fields hold -1 when not given, so that the solver keeps its own
// defaults; every accepted value is 0 or more.
struct run_settings_t {
  double min_split_width = -1.0;
  double min_bound_delta = -1.0;
  int var_order = -1;
  int min_depth = -1;
  int max_depth = -1;
  bool show_statistics = true;
  bool show_solution = true;
  const char* input_file = nullptr;
  bool reuse = false;
  bool shifting = false;
  bool restarts = false;
  int a_init = 0;
  int b_init = 0;
  double f_a = 0.0;
  double f_b = 0.0;
  bool minimize = false;
  const char* objective = nullptr;
};

// Hands the given settings to the solver; the others keep the solver's defaults.
void configure_solver(krait_solver& solver, const run_settings_t& settings);

// Checks `root` (a formula or a transition system) and prints the sections that follow the
// preprocessing line of the report. The solver has its base context pushed and the symbol
// table its base frame open, as for the parse.
// `after_box`, when given, runs after the report of every candidate box, while the solver still
// holds the box: with the depth in bounded model checking, -1 for a plain formula.
using box_observer = std::function<void(const krait_solver& solver, int depth)>;
void check_input(krait_solver& solver, hexpr* root, const run_settings_t& settings,
                 const box_observer& after_box = {});

// One part of a transition system (0 INIT, 1 TRANS, 2 TARGET) translated at one unwinding
// step, in its translation phase; the part stays in the tree for the next step.
void translate_part(krait_solver& solver, hexpr& root, int part, std::uint32_t step);

// The whole program: options, banner, input, preprocessing and the check with its report.
// `observe`, when given, sees the tree as parsed (before preprocessing rewrites it) and returns
// the observer of the candidate boxes.
int run_program(int argc, char** argv, const std::function<box_observer(const hexpr& parsed)>& observe = {});
