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

// The certificate of the box the solver holds; the formula is taken from the input as parsed.
void print_certificate(const hexpr& original, const krait_solver& solver, int depth) {
  // The SOLUTION section ends with an empty line of its own.
  if (!run_settings.show_solution) std::cout << std::endl;
  std::cout << "CERTIFICATE:" << std::endl;
  try {
    const certify::formula f = depth < 0 ? certify::formula::plain(original)
                                         : certify::formula::unwound(original, static_cast<unsigned>(depth));
    const certify::certificate c = certify::certify(f, certify::read_box(f, solver));
    for (const std::string& line : c.lines) std::cout << line << std::endl;
    std::cout << "    time certifier: " << std::fixed << std::setprecision(4) << c.seconds << std::defaultfloat
              << std::setprecision(20) << std::endl;
  } catch (const std::invalid_argument& unsupported) {
    std::cout << "    not verified: the certifier does not handle " << unsupported.what() << std::endl;
  }
  std::cout << std::endl;
}

}  // namespace

int main(int argc, char** argv) {
  program_texts = {print_certify_usage, print_certify_version};
  return run_program(argc, argv, [](const hexpr& parsed) {
    // Preprocessing rewrites the tree in double precision; certificates speak of the input.
    std::shared_ptr<const hexpr> original(copy_hexpr(&parsed));
    return [original](const krait_solver& solver, int depth) { print_certificate(*original, solver, depth); };
  });
}
