// A check in a child process, its outcome handed back through a temporary file.
#include "smt2/check.hpp"

#include <cstdio>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "base/child.hpp"
#include "base/random.hpp"
#include "certify/certify.hpp"
#include "certify/formula.hpp"
#include "hexpr/hexpr.hpp"
#include "hexpr/preprocess.hpp"
#include "lang/parser.hpp"
#include "lang/symtab.hpp"
#include "solver/solver.hpp"

namespace smt2 {
namespace {

// Runs in the child: searches, certifies and writes the outcome on standard output as lines of
// "answer", then "reason TEXT" or "value NAME LOWER UPPER" (exact rationals). The program's
// warnings may come between them, on lines of their own.
void search_and_certify(const std::string& text, const check_settings& settings) {
  if (settings.random_seed) random_seed = *settings.random_seed;
  krait_solver* solver = new krait_solver;
  solver->push_context();
  symtab.new_frame();
  if (settings.min_split_width) solver->set_min_split_width(*settings.min_split_width);
  std::FILE* input = fmemopen(const_cast<char*>(text.data()), text.size(), "r");
  hexpr* root = parse_hexpr_file(input);
  std::fclose(input);
  std::unique_ptr<hexpr> original(copy_hexpr(root));
  root = prepare_hexpr(root);
  root->hexpr2krait(*solver, 0, 1);
  std::ostringstream out;
  if (solver->solve()) {
    std::cout << "\nunsat\n" << std::flush;
    return;
  }
  auto write_values = [&](const certify::formula& f, const std::vector<certify::range>& values) {
    for (std::size_t i = 0; i < values.size(); ++i)
      out << "value " << f.vars[i].name << " " << values[i].lower.get_str() << " " << values[i].upper.get_str() << "\n";
  };
  try {
    const certify::formula f = certify::formula::plain(*original);
    const std::vector<certify::range> box = certify::read_box(f, *solver);
    const certify::certificate c = certify::certify(f, box);
    if (c.kind == certify::verdict::verified || c.kind == certify::verdict::verified_beside) {
      out << "sat\n";
      write_values(f, c.witness);
    } else {
      std::string reason = c.lines.empty() ? "" : c.lines.front();
      reason.erase(0, reason.find_first_not_of(' '));
      out << "unknown\nreason candidate box; " << reason << "\n";
      write_values(f, box);
    }
  } catch (const std::invalid_argument& unsupported) {
    out << "unknown\nreason candidate box; the certifier does not handle " << unsupported.what() << "\n";
  }
  std::cout << "\n" << out.str() << std::flush;
}

}  // namespace

outcome run_check(const std::string& problem_text, const check_settings& settings) {
  outcome result;
  const child_output child = run_in_child([&] { search_and_certify(problem_text, settings); });
  std::istringstream lines(child.out);
  bool answered = false;
  for (std::string line; std::getline(lines, line);) {
    if (!answered) {
      answered = line == "sat" || line == "unsat" || line == "unknown";
      result.answer = line == "sat" ? outcome::sat : line == "unsat" ? outcome::unsat : outcome::unknown;
    } else if (line.starts_with("reason ")) {
      result.message = line.substr(7);
    } else if (line.starts_with("value ")) {
      std::istringstream fields(line.substr(6));
      std::string name, lower, upper;
      fields >> name >> lower >> upper;
      result.values[name] = {mpq_class(lower, 10), mpq_class(upper, 10)};
    }
  }
  if (child.exited && child.status == 0 && answered) return result;
  std::string message = child.err;
  // The program's error lines begin "Error: "; the response quotes the message alone.
  const std::size_t at = message.find("Error: ");
  if (at != std::string::npos) message.erase(0, at + 7);
  while (!message.empty() && (message.back() == '\n' || message.back() == ' ')) message.pop_back();
  if (message.empty()) message = child.exited ? "the search failed" : "the search ended by signal " + std::to_string(child.status);
  result = outcome{};
  result.message = message;
  return result;
}

}  // namespace smt2
