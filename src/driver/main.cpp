// The program: options, banner, input, then the check with its report.
#include <cstdio>
#include <iostream>

#include "base/error.hpp"
#include "driver/options.hpp"
#include "hexpr/hexpr.hpp"
#include "hexpr/preprocess.hpp"
#include "lang/parser.hpp"
#include "lang/symtab.hpp"
#include "solver/solver.hpp"
#include "version.hpp"

int main(int argc, char** argv) {
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
  std::cout << "Preprocessing input formulae." << std::endl;
  root = prepare_hexpr(root);
  check_input(*solver, root, given);

  solver->pop_context();
  symtab.delete_last_frame();
  delete root;
  delete solver;
  return 0;
}
