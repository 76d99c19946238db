// Arbitrary bytes as an SMT-LIB script through the reader, elaboration and the writing of the
// problems its check-sat commands would search; each problem then goes through the program's
// front as the frontend target's inputs do. Nothing is solved.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "harness.hpp"
#include "hexpr/hexpr.hpp"
#include "smt2/script.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  std::ostringstream responses;
  std::vector<std::string> problems;
  smt2::script script(responses, "fuzz", [&](const std::string& text, const smt2::check_settings&) {
    problems.push_back(text);
    return smt2::outcome{smt2::outcome::unknown, "not searched", {}};
  });
  script.run(in);
  for (const std::string& text : problems) {
    fuzz::run_input(reinterpret_cast<const std::uint8_t*>(text.data()), text.size(),
                    [](krait_solver& solver, hexpr& root) { root.hexpr2krait(solver, 0, 1); });
  }
  return 0;
}
