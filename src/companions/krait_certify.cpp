// krait-certify: the program's check with its report, and after every candidate box a
// certificate saying whether the box holds a solution of the formula as written.
#include <cstdio>
#include <iomanip>
#include <iostream>
#include <memory>
#include <stdexcept>

#include "certify/certify.hpp"
#include "certify/formula.hpp"
#include "driver/options.hpp"
#include "driver/run.hpp"
#include "hexpr/hexpr.hpp"
#include "solver/solver.hpp"
#include "version.hpp"

namespace {

void print_certify_usage(const char* program_name) {
  std::printf(
      "\nUsage: %s [options] filename\n\n"
      "   Checks the input file as krait does, with the same options and report, and adds a\n"
      "   CERTIFICATE section after every candidate solution box: whether the box holds a\n"
      "   solution of the formula as written (exact rational arithmetic, validated enclosures\n"
      "   and an interval Newton test for equations), with a witness, or which constraint\n"
      "   could not be settled.\n\n%s\n%s\n",
      program_name, option_table, bug_address_line);
  std::fflush(stdout);
}

void print_certify_version() {
  std::printf("\nkrait-certify (Krait's certifier), version " KRAIT_VERSION ".\n\n");
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  program_texts = {print_certify_usage, print_certify_version};
  return run_program(argc, argv, [](const hexpr& parsed) {
    // Preprocessing rewrites the tree in double precision; certificates speak of the input.
    std::shared_ptr<const hexpr> original(copy_hexpr(&parsed));
    return [original](const krait_solver& solver, int depth) {
      // The SOLUTION section ends with an empty line of its own.
      if (!run_settings.show_solution) std::cout << std::endl;
      certify::print_section(*original, solver, depth, std::cout);
    };
  });
}
