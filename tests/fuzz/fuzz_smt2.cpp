// Arbitrary bytes as an SMT-LIB script through the reader, elaboration and the writing of the
// problems its check-sat commands would search; each problem then goes through the program's
// front as the frontend target's inputs do. The script runs a second time as it does on the
// solver's contexts, against a stand-in search that checks the contexts it is asked for exist.
// Nothing is solved.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "harness.hpp"
#include "hexpr/hexpr.hpp"
#include "smt2/script.hpp"

namespace {

const smt2::outcome not_searched{smt2::outcome::unknown, "not searched", {}};

struct contexts_stand_in : smt2::context_search {
  std::size_t depth = 0;
  std::optional<smt2::outcome> check(const std::vector<smt2::context_operation>& sync,
                                     const smt2::check_settings&) override {
    for (const smt2::context_operation& op : sync) {
      if (op.kind == smt2::context_operation::pop) {
        if (op.count > depth) std::abort();  // a pop of contexts never pushed
        depth -= op.count;
      } else if (op.kind == smt2::context_operation::push) {
        ++depth;
      } else if (op.text.empty()) {
        std::abort();
      }
    }
    return not_searched;
  }
  void reset() override { depth = 0; }
  std::size_t started() const override { return 1; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::vector<std::string> problems;
  const auto record = [&](const std::string& problem, const smt2::check_settings&) {
    problems.push_back(problem);
    return not_searched;
  };
  {
    std::istringstream in(text);
    std::ostringstream responses;
    smt2::script script(responses, "fuzz", record);
    script.run(in);
  }
  {
    std::istringstream in(text);
    std::ostringstream responses;
    smt2::script script(responses, "fuzz", [](const std::string&, const smt2::check_settings&) { return not_searched; });
    script.use_contexts(std::make_unique<contexts_stand_in>());
    script.run(in);
  }
  for (const std::string& problem : problems) {
    fuzz::run_input(reinterpret_cast<const std::uint8_t*>(problem.data()), problem.size(),
                    [](krait_solver& solver, hexpr& root) { root.hexpr2krait(solver, 0, 1); });
  }
  return 0;
}
