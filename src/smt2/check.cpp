// A check in a child process, its outcome handed back through a temporary file.
#include "smt2/check.hpp"

#include <unistd.h>

#include <csignal>
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

// One search at one splitting width, its box certified; false for a box the certifier could
// not verify, whose outcome `lines` then holds all the same.
bool search_once(hexpr& root, const hexpr& original, double width, std::string& lines) {
  // The instances this search makes are dropped with the frame, ready for the next one.
  krait_solver solver;
  solver.push_context();
  symtab.new_frame();
  solver.set_min_split_width(width);
  root.hexpr2krait(solver, 0, 1);
  const bool settled = describe_outcome(solver.solve(), original, solver, lines);
  solver.pop_context();
  symtab.delete_last_frame();
  return settled;
}

// Runs in the child: searches, certifies and writes each outcome as it is known on standard
// output; the last one complete counts.
void search_and_certify(const std::string& text, const check_settings& settings) {
  if (settings.random_seed) random_seed = *settings.random_seed;
  symtab.new_frame();
  std::FILE* input = fmemopen(const_cast<char*>(text.data()), text.size(), "r");
  hexpr* parsed = parse_hexpr_file(input);
  std::fclose(input);
  std::unique_ptr<hexpr> original(copy_hexpr(parsed));
  std::unique_ptr<hexpr> root(prepare_hexpr(parsed));
  const std::vector<double> widths = search_widths(settings);
  std::string lines;
  for (std::size_t i = 0; i < widths.size(); ++i) {
    const bool settled = search_once(*root, *original, widths[i], lines);
    std::cout.flush();
    std::fflush(stdout);
    if (!write_outcome(1, lines)) return;
    if (settled) return;
    if (i == 0) alarm(refinement_seconds);
  }
}

}  // namespace

std::vector<double> search_widths(const check_settings& settings) {
  return settings.min_split_width ? std::vector<double>{*settings.min_split_width} : std::vector<double>{0.1, 1e-3, 1e-5};
}

bool describe_outcome(bool unsatisfiable, const hexpr& original, const krait_solver& solver, std::string& lines) {
  if (unsatisfiable) {
    lines = "unsat\n";
    return true;
  }
  std::ostringstream out;
  auto write_values = [&](const certify::formula& f, const std::vector<certify::range>& values) {
    for (std::size_t i = 0; i < values.size(); ++i)
      out << "value " << f.vars[i].name << " " << values[i].lower.get_str() << " " << values[i].upper.get_str() << "\n";
  };
  bool settled = true;
  try {
    const certify::formula f = certify::formula::plain(original);
    const std::vector<certify::range> box = certify::read_box(f, solver);
    const certify::certificate c = certify::certify(f, box);
    if (c.kind == certify::verdict::verified || c.kind == certify::verdict::verified_beside) {
      out << "sat\n";
      write_values(f, c.witness);
    } else {
      std::string reason = c.lines.empty() ? "" : c.lines.front();
      reason.erase(0, reason.find_first_not_of(' '));
      out << "unknown\nreason candidate box; " << reason << "\n";
      write_values(f, box);
      settled = false;
    }
  } catch (const std::invalid_argument& unsupported) {
    out << "unknown\nreason candidate box; the certifier does not handle " << unsupported.what() << "\n";
    settled = false;
  }
  lines = out.str();
  return settled;
}

bool write_outcome(int fd, const std::string& lines) {
  const std::string block = "\n" + lines + "end\n";
  return write(fd, block.data(), block.size()) == static_cast<ssize_t>(block.size());
}

bool read_outcome(const std::string& text, outcome& result) {
  outcome reading;
  std::istringstream lines(text);
  bool answered = false, open = false;
  for (std::string line; std::getline(lines, line);) {
    if (line == "sat" || line == "unsat" || line == "unknown") {
      reading = outcome{};
      reading.answer = line == "sat" ? outcome::sat : line == "unsat" ? outcome::unsat : outcome::unknown;
      open = true;
    } else if (!open) {
      continue;  // a warning of the search
    } else if (line == "end") {
      result = reading;
      answered = true;
      open = false;
    } else if (line.starts_with("reason ")) {
      reading.message = line.substr(7);
    } else if (line.starts_with("value ")) {
      std::istringstream fields(line.substr(6));
      std::string name, lower, upper;
      fields >> name >> lower >> upper;
      reading.values[name] = {mpq_class(lower, 10), mpq_class(upper, 10)};
    }
  }
  return answered;
}

outcome run_check(const std::string& problem_text, const check_settings& settings) {
  outcome result;
  const child_output child = run_in_child([&] { search_and_certify(problem_text, settings); });
  const bool answered = read_outcome(child.out, result);
  // A search cut off by its time leaves the outcome of the one before it.
  if (answered && (child.exited ? child.status == 0 : child.status == SIGALRM)) return result;
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
