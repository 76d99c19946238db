// The program around the check: options, banner, input file, preprocessing.
#include <cstdio>
#include <iostream>

#include "base/error.hpp"
#include "driver/options.hpp"
#include "driver/run.hpp"
#include "hexpr/hexpr.hpp"
#include "hexpr/preprocess.hpp"
#include "lang/parser.hpp"
#include "lang/symtab.hpp"
#include "solver/solver.hpp"
#include "version.hpp"

int run_program(int argc, char** argv, const std::function<box_observer(const hexpr& parsed)>& observe) {
  parse_options(argc, argv);
  const run_settings_t& given = run_settings;
  std::cout << std::endl << "# This is Krait " KRAIT_VERSION ", compiled on " KRAIT_BUILD_DATE "." << std::endl;
  if (given.input_file == nullptr) error("No input file specified. Try %s --help.", argv[0]);
  std::FILE* input = std::fopen(given.input_file, "r");
  if (input == nullptr) error("Could not open input file.");

  krait_solver* solver = new krait_solver;
  solver->push_context();
  symtab.new_frame();
  configure_solver(*solver, given);

  std::cout << "Reading input file '" << given.input_file << "'." << std::endl;
  hexpr* root = parse_hexpr_file(input);
  std::fclose(input);
  const box_observer after_box = observe ? observe(*root) : box_observer();
  std::cout << "Preprocessing input formulae." << std::endl;
  root = prepare_hexpr(root);
  check_input(*solver, root, given, after_box);

  solver->pop_context();
  symtab.delete_last_frame();
  delete root;
  delete solver;
  return 0;
}
