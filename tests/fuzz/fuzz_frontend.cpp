// Arbitrary bytes as an input file through the scanner, the parser, preprocessing and the
// translation, set up as the program does it: a plain formula at step 0; for a transition
// system INIT, then per depth one more TRANS step and TARGET in a context of its own. Nothing
// is solved.
#include <cstddef>
#include <cstdint>

#include "base/error.hpp"
#include "driver/run.hpp"
#include "harness.hpp"
#include "hexpr/hexpr_nodes.hpp"
#include "lang/symtab.hpp"
#include "solver/solver.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::uint32_t max_depth = 2;
  fuzz::run_input(data, size, [](krait_solver& solver, hexpr& root) {
    if (root.get_opname() == HEXPR_FORMULA) {
      root.hexpr2krait(solver, 0, 1);
      return;
    }
    if (root.get_opname() != HEXPR_PROOF_SPEC) error("Syntax error in input file.");
    translate_part(solver, root, 0, 0);
    for (std::uint32_t k = 0; k <= max_depth; ++k) {
      if (k > 0) translate_part(solver, root, 1, k - 1);
      solver.push_context();
      symtab.new_frame();
      translate_part(solver, root, 2, k);
      solver.pop_context();
      symtab.delete_last_frame();
    }
  });
  return 0;
}
