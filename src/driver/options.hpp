#pragma once

// Settings from the command line. Numeric fields hold -1 when the option was not given, so
// that the solver keeps its own defaults; every accepted value is 0 or more.
struct run_settings_t {
  double min_split_width = -1.0;
  double min_bound_delta = -1.0;
  int var_order = -1;
  int min_depth = -1;
  int max_depth = -1;
  bool show_statistics = true;
  bool show_solution = true;
  const char* input_file = nullptr;  // points into argv
  bool reuse = false;
  bool shifting = false;
  bool restarts = false;
  int a_init = 0;
  int b_init = 0;
  double f_a = 0.0;
  double f_b = 0.0;
  bool minimize = false;
  const char* objective = nullptr;  // points into argv
};

extern run_settings_t run_settings;

// Walks the arguments once and fills `run_settings`. Returns only when every argument was
// accepted; --help and --version end the process with status 0, a bad argument with status 1.
void parse_options(int argc, char** argv);

void print_usage(const char* program_name);
void print_version();
