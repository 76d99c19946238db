// krait-prove: a transition system's target proved unreachable at every depth by k-induction,
// or found reachable at the depth bounded model checking finds it.
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <vector>

#include "base/error.hpp"
#include "base/numbers.hpp"
#include "certify/certify.hpp"
#include "driver/options.hpp"
#include "driver/run.hpp"
#include "hexpr/hexpr.hpp"
#include "hexpr/hexpr_nodes.hpp"
#include "hexpr/preprocess.hpp"
#include "lang/parser.hpp"
#include "lang/symtab.hpp"
#include "prove/induction.hpp"
#include "solver/solver.hpp"
#include "version.hpp"

namespace {

void print_prove_usage(const char* program_name) {
  std::printf(
      "\nUsage: %s [options] filename\n\n"
      "   Proves that the target of a transition system is unreachable at every depth, by\n"
      "   k-induction: per k the base case (INIT, k steps, TARGET: bounded model checking) and\n"
      "   the step case (k + 1 states linked by TRANS, TARGET false in the first k and true in\n"
      "   the last). An unsatisfiable step case proves the target unreachable; a box in a base\n"
      "   case shows it reachable at that depth, with a certificate.\n\n"
      "   --max_k k       the largest k tried (default: no limit)\n"
      "   --simple_path_reals\n"
      "                   keep the step case's states apart also when some state\n"
      "                   variables are real (default: only when all are int or boole)\n%s\n%s\n",
      program_name, option_table, bug_address_line);
  std::fflush(stdout);
}

void print_prove_version() {
  std::printf("\nkrait-prove (Krait's induction prover), version " KRAIT_VERSION ".\n\n");
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  program_texts = {print_prove_usage, print_prove_version};
  // --max_k and --simple_path_reals are this command's own; the others are the program's.
  prove::prove_settings options;
  std::vector<char*> rest;
  for (int i = 0; i < argc; ++i) {
    if (i > 0 && std::strcmp(argv[i], "--max_k") == 0) {
      if (i + 1 >= argc || str_to_int(argv[i + 1], options.max_k) || options.max_k < 0)
        error("Option '--max_k' requires a non-negative integer value.");
      ++i;
      continue;
    }
    if (i > 0 && std::strcmp(argv[i], "--simple_path_reals") == 0) {
      options.simple_path_reals = true;
      continue;
    }
    rest.push_back(argv[i]);
  }
  parse_options(static_cast<int>(rest.size()), rest.data());
  const run_settings_t& given = run_settings;
  std::cout << std::endl << "# This is Krait " KRAIT_VERSION ", compiled on " KRAIT_BUILD_DATE "." << std::endl;
  if (given.input_file == nullptr) error("No input file specified. Try %s --help.", argv[0]);
  if (given.minimize) error("Optimization is not available in krait-prove.");
  if (given.min_depth >= 0 || given.max_depth >= 0) warning("Options '--min_depth' and '--max_depth' are without effect; use '--max_k'.");
  std::FILE* input = std::fopen(given.input_file, "r");
  if (input == nullptr) error("Could not open input file.");
  symtab.new_frame();
  std::cout << "Reading input file '" << given.input_file << "'." << std::endl;
  hexpr* invariant = nullptr;
  hexpr* root = parse_hexpr_file(input, &invariant);
  std::fclose(input);
  if (root->get_opname() != HEXPR_PROOF_SPEC) error("krait-prove needs a transition system (INIT, TRANS, TARGET).");
  // Certificates speak of the input as written, before preprocessing rewrites it.
  std::unique_ptr<hexpr> original(copy_hexpr(root));
  const auto part = [&](int i) { return copy_hexpr(static_cast<hexpr_inner_node&>(*original).subexprs_begin()[i]); };
  // The invariant's own system: the same INIT and TRANS, its negation as the target.
  std::unique_ptr<hexpr> invariant_system, invariant_original, assumed;
  if (invariant != nullptr) {
    invariant_system.reset(new hexpr_proof_spec(part(0), part(1), new hexpr_not(copy_hexpr(invariant))));
    invariant_original.reset(copy_hexpr(invariant_system.get()));
    assumed.reset(new hexpr_formula(invariant));
  }
  std::cout << "Preprocessing input formulae." << std::endl;
  root = prepare_hexpr(root);
  if (invariant != nullptr) {
    invariant_system.reset(prepare_hexpr(invariant_system.release()));
    assumed.reset(prepare_hexpr(assumed.release()));
  }
  const auto certify_with = [&](const hexpr& written) {
    return [&](const krait_solver& solver, unsigned depth) {
      if (!given.show_solution) std::cout << std::endl;
      certify::print_section(written, solver, static_cast<int>(depth), std::cout);
    };
  };
  prove::print_settings(given);
  bool usable = true;
  if (invariant != nullptr) {
    std::cout << "INVARIANT:" << std::endl << "    checked by induction before it is assumed" << std::endl << std::endl;
    usable = prove::prove_target(*invariant_system, given, options, certify_with(*invariant_original), true);
    options.invariant = assumed.get();
  }
  if (usable) prove::prove_target(*root, given, options, certify_with(*original));
  symtab.delete_last_frame();
  delete root;
  return 0;
}
