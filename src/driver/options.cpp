#include "driver/options.hpp"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/error.hpp"
#include "base/numbers.hpp"
#include "version.hpp"

run_settings_t run_settings;
program_texts_t program_texts;

namespace {

// Walks argv; an option's values are taken from the arguments after it.
class argument_walk {
 public:
  argument_walk(int argc, char** argv) : argc_(argc), argv_(argv) {}

  bool done() const { return pos_ >= argc_; }
  const char* next() { return argv_[pos_++]; }

  // The next argument as an option value, or the fatal `missing` message when there is none:
  // no argument left, an empty one, or one beginning with '-'.
  const char* value(const char* missing) {
    if (pos_ >= argc_ || argv_[pos_][0] == '\0' || argv_[pos_][0] == '-') error("%s", missing);
    return argv_[pos_++];
  }

  int int_value(const char* missing, const char* invalid, bool (*accept)(int)) {
    const char* text = value(missing);
    int result;
    if (str_to_int(text, result) || !accept(result)) error(invalid, text);
    return result;
  }

  double double_value(const char* missing, const char* invalid, bool (*accept)(double)) {
    const char* text = value(missing);
    double result;
    if (str_to_double(text, result) || !accept(result)) error(invalid, text);
    return result;
  }

 private:
  int argc_;
  char** argv_;
  int pos_ = 1;
};

run_settings_t& given = run_settings;

}  // namespace

void parse_options(int argc, char** argv) {
  argument_walk walk(argc, argv);
  while (!walk.done()) {
    const char* arg = walk.next();
    if (std::strcmp(arg, "--help") == 0) {
      program_texts.usage(argv[0]);
      std::exit(0);
    } else if (std::strcmp(arg, "--version") == 0) {
      program_texts.version();
      std::exit(0);
    } else if (std::strcmp(arg, "--nostats") == 0) {
      given.show_statistics = false;
    } else if (std::strcmp(arg, "--nosol") == 0) {
      given.show_solution = false;
    } else if (std::strcmp(arg, "--min_depth") == 0) {
      given.min_depth = walk.int_value(
          "Please specify minimal number of unwindings.", "Invalid minimal number of unwindings '%s'.",
          [](int d) { return d >= 0 && (given.max_depth < 0 || d <= given.max_depth); });
    } else if (std::strcmp(arg, "--max_depth") == 0) {
      given.max_depth = walk.int_value(
          "Please specify maximal number of unwindings.", "Invalid maximal number of unwindings '%s'.",
          [](int d) { return d >= 0 && (given.min_depth < 0 || d >= given.min_depth); });
    } else if (std::strcmp(arg, "--var_order") == 0) {
      given.var_order = walk.int_value("No variable order specified.", "Invalid variable order '%s'.",
                                   [](int d) { return d >= 0 && d <= 9; });
    } else if (std::strcmp(arg, "--msw") == 0) {
      given.min_split_width = walk.double_value(
          "Please specify minimal splitting width.",
          "Invalid minimal splitting width '%s'.\nPlease chose a value strictly greater than zero.",
          [](double f) { return f > 0.0; });
    } else if (std::strcmp(arg, "--mbd") == 0) {
      given.min_bound_delta = walk.double_value("Please specify minimal bound delta.",
                                            "Invalid min_bound_delta '%s'.",
                                            [](double f) { return f >= 0.0; });
    } else if (std::strcmp(arg, "--reuse") == 0) {
      given.reuse = true;
    } else if (std::strcmp(arg, "--shifting") == 0) {
      given.shifting = true;
    } else if (std::strcmp(arg, "--rst") == 0) {
      given.restarts = true;
      given.a_init = walk.int_value("Please specify a_init.", "Invalid value '%s' for a_init.\n",
                                [](int a) { return a > 0; });
      given.b_init = walk.int_value(
          "Please specify b_init.",
          "Invalid value '%s' for b_init.\nPlease chose a value greater or equal than a_init.",
          [](int b) { return b > 0 && b >= given.a_init; });
      given.f_a = walk.double_value(
          "Please specify f_a.",
          "Invalid value '%s' for f_a.\nPlease chose a value strictly greater than one.",
          [](double f) { return f > 1.0; });
      given.f_b = walk.double_value("Please specify f_b.",
                                "Invalid value '%s' for f_b.\nPlease chose a value strictly greater "
                                "than one and greater or equal f_a.",
                                [](double f) { return f > 1.0 && f >= given.f_a; });
    } else if (std::strcmp(arg, "--minimize") == 0) {
      given.minimize = true;
      given.objective = walk.value("Please specify name of variable to be minimized.");
    } else if (arg[0] == '-') {
      error("Invalid option '%s'. Try %s --help.", arg, argv[0]);
    } else if (given.input_file != nullptr) {
      error("Only one input file allowed.");
    } else {
      given.input_file = arg;
    }
  }
}

const char* const option_table =
    "   --help          print this help page\n"
    "   --version       print version number\n"
    "   --nostats       do not print statistics\n"
    "   --nosol         do not print candidate solutions\n"
    "   --min_depth d   minimal number of unwindings (default: 0)\n"
    "   --max_depth d   maximal number of unwindings (default: not specified)\n"
    "   --var_order d   variable order for round robin splitting\n"
    "                       0 - natural order (default)\n"
    "                       1 - boolevars first\n"
    "                       2 - boolevars last\n"
    "                       3 - bmc forward\n"
    "                       4 - bmc backward\n"
    "                       5 - bmc forward and boolevars first\n"
    "                       6 - bmc forward and boolevars last\n"
    "                       7 - bmc backward and boolevars first\n"
    "                       8 - bmc backward and boolevars last\n"
    "                       9 - shuffle\n"
    "   --msw f         minimal splitting width (default: 0.1)\n"
    "   --mbd f         minimal bound delta (default: 0.01)\n"
    "   --reuse         enable reuse of learned dclauses (default: disabled)\n"
    "   --shifting      enable shifting of learned dclauses (default: disabled)\n"
    "   --rst d d f f   enable restarting (default: disabled)\n"
    "   --minimize s    search solution which minimizes the value of variable s\n";

const char* const bug_address_line = "   Please report bugs to <" KRAIT_BUG_ADDRESS ">.\n";

void print_usage(const char* program_name) {
  std::printf("\nUsage: %s [options] filename\n\n%s\n%s\n", program_name, option_table, bug_address_line);
  std::fflush(stdout);
}

void print_version() {
  std::printf("\nKrait, version " KRAIT_VERSION ", revision number is unknown.\n\n");
  std::fflush(stdout);
}
