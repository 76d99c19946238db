// A check in a child process, its outcome handed back through a temporary file.
#include "smt2/check.hpp"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <sstream>
#include <stdexcept>

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

// Runs in the child: searches, certifies and writes the outcome as lines of
// "answer", then "reason TEXT" or "value NAME LOWER UPPER" (exact rationals).
void search_and_certify(const std::string& text, const check_settings& settings, std::FILE* out) {
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
  if (solver->solve()) {
    std::fputs("unsat\n", out);
    return;
  }
  auto write_values = [&](const certify::formula& f, const std::vector<certify::range>& values) {
    for (std::size_t i = 0; i < values.size(); ++i)
      std::fprintf(out, "value %s %s %s\n", f.vars[i].name.c_str(), values[i].lower.get_str().c_str(),
                   values[i].upper.get_str().c_str());
  };
  try {
    const certify::formula f = certify::formula::plain(*original);
    const std::vector<certify::range> box = certify::read_box(f, *solver);
    const certify::certificate c = certify::certify(f, box);
    if (c.kind == certify::verdict::verified || c.kind == certify::verdict::verified_beside) {
      std::fputs("sat\n", out);
      write_values(f, c.witness);
      return;
    }
    std::string reason = c.lines.empty() ? "" : c.lines.front();
    reason.erase(0, reason.find_first_not_of(' '));
    std::fprintf(out, "unknown\nreason candidate box; %s\n", reason.c_str());
    write_values(f, box);
  } catch (const std::invalid_argument& unsupported) {
    std::fprintf(out, "unknown\nreason candidate box; the certifier does not handle %s\n", unsupported.what());
  }
}

std::string contents(std::FILE* f) {
  std::string s;
  std::rewind(f);
  char buffer[4096];
  for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, f)) > 0;) s.append(buffer, n);
  return s;
}

}  // namespace

outcome run_check(const std::string& problem_text, const check_settings& settings) {
  outcome result;
  std::FILE* out = std::tmpfile();
  std::FILE* err = std::tmpfile();
  if (out == nullptr || err == nullptr) throw std::runtime_error("cannot create a temporary file");
  std::fflush(stdout);
  std::fflush(stderr);
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot start the search");
  if (child == 0) {
    // The report and the warnings are the program's own; only the outcome goes back.
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, 1);
    dup2(fileno(err), 2);
    search_and_certify(problem_text, settings, out);
    std::fflush(out);
    std::fflush(stderr);
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  const std::string written = contents(out), diagnostics = contents(err);
  std::fclose(out);
  std::fclose(err);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 || written.empty()) {
    std::string message = diagnostics;
    // The program's error lines begin "Error: "; the response quotes the message alone.
    const std::size_t at = message.find("Error: ");
    if (at != std::string::npos) message.erase(0, at + 7);
    while (!message.empty() && (message.back() == '\n' || message.back() == ' ')) message.pop_back();
    if (message.empty()) message = WIFSIGNALED(status) ? "the search ended by signal " + std::to_string(WTERMSIG(status)) : "the search failed";
    result.message = message;
    return result;
  }
  std::istringstream lines(written);
  std::string answer;
  std::getline(lines, answer);
  result.answer = answer == "sat" ? outcome::sat : answer == "unsat" ? outcome::unsat : outcome::unknown;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("reason ")) {
      result.message = line.substr(7);
      continue;
    }
    std::istringstream fields(line.substr(6));
    std::string name, lower, upper;
    fields >> name >> lower >> upper;
    result.values[name] = {mpq_class(lower, 10), mpq_class(upper, 10)};
  }
  return result;
}

}  // namespace smt2
