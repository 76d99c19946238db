// krait-smt2: the search as an SMT-LIB 2 solver, and conversion between the two languages.
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>

#include "hexpr/hexpr.hpp"
#include "lang/parser.hpp"
#include "lang/symtab.hpp"
#include "smt2/convert.hpp"
#include "smt2/script.hpp"
#include "version.hpp"

namespace {

const char* const usage_text =
    "\nUsage: %s [--default-range LO HI] [--from-scratch] FILE\n"
    "       %s --to-krait FILE [--default-range LO HI]\n"
    "       %s --from-krait FILE [--depth K]\n\n"
    "   Reads an SMT-LIB 2 script (FILE, or - for standard input) and answers its commands\n"
    "   as an SMT-LIB solver: unsat when the search proves it, sat when the certifier\n"
    "   verifies a witness (get-model prints its exact values), unknown otherwise (the\n"
    "   candidate box as comments in get-model). Every constant needs a finite range, read\n"
    "   from the assertions.\n\n"
    "   --default-range LO HI  range of constants the assertions leave unbounded\n"
    "   --from-scratch         searches every check-sat anew from all assertions, instead of\n"
    "                          keeping the solver's contexts from one check-sat to the next\n"
    "   --to-krait FILE        writes the script's assertions (at its first check-sat) as a\n"
    "                          Krait input on standard output\n"
    "   --from-krait FILE      writes a Krait input as an SMT-LIB script on standard output\n"
    "   --depth K              the unwinding depth of a transition system for --from-krait\n"
    "   --help                 prints this text\n"
    "   --version              prints the version\n\n"
    "Report bugs to " KRAIT_BUG_ADDRESS ".\n";

[[noreturn]] void fail(const std::string& message) {
  std::cerr << "krait-smt2: " << message << std::endl;
  std::exit(1);
}

std::optional<mpq_class> number_argument(const char* text) {
  try {
    std::string s = text;
    const bool negative = !s.empty() && s[0] == '-';
    if (negative) s.erase(0, 1);
    if (s.empty() || s.find_first_not_of("0123456789.") != std::string::npos || s.front() == '.' || s.back() == '.' ||
        s.find('.') != s.rfind('.'))
      return std::nullopt;
    const mpq_class v = smt2::literal_value(s);
    return negative ? mpq_class(-v) : v;
  } catch (const std::invalid_argument&) {
    return std::nullopt;
  }
}

int from_krait(const char* file, int depth) {
  std::FILE* input = std::fopen(file, "r");
  if (input == nullptr) fail(std::string("cannot open ") + file);
  symtab.new_frame();
  std::unique_ptr<hexpr> root(parse_hexpr_file(input));
  std::fclose(input);
  try {
    std::cout << smt2::krait_to_smt2(*root, depth, file);
  } catch (const std::invalid_argument& e) {
    fail(e.what());
  }
  root.reset();
  symtab.delete_last_frame();
  return 0;
}

// Runs the script up to its first check-sat and writes the problem it would search.
int to_krait(std::istream& in, const std::string& source, const std::optional<smt2::interval>& range) {
  std::ostringstream responses;
  std::optional<std::string> text;
  smt2::script s(responses, source, [&](const std::string& problem, const smt2::check_settings&) {
    if (!text) text = problem;
    return smt2::outcome{smt2::outcome::unknown, "converted", {}};
  });
  s.default_range = range;
  s.run(in);
  if (responses.str().find("(error") != std::string::npos) fail("the script has errors:\n" + responses.str());
  std::cout << (text ? *text : s.current_problem().text);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const char* file = nullptr;
  const char* to = nullptr;
  const char* from = nullptr;
  int depth = -1;
  bool from_scratch = false;
  std::optional<smt2::interval> range;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--help") {
      std::printf(usage_text, argv[0], argv[0], argv[0]);
      return 0;
    }
    if (arg == "--version") {
      std::printf("krait-smt2 (Krait's SMT-LIB 2 front), version " KRAIT_VERSION ".\n");
      return 0;
    }
    if (arg == "--default-range") {
      if (i + 2 >= argc) fail("--default-range needs LO and HI");
      const auto lo = number_argument(argv[i + 1]), hi = number_argument(argv[i + 2]);
      if (!lo || !hi || *lo > *hi) fail("--default-range needs two decimal numbers LO <= HI");
      range = smt2::interval{*lo, *hi};
      i += 2;
    } else if (arg == "--from-scratch") {
      from_scratch = true;
    } else if (arg == "--to-krait" || arg == "--from-krait") {
      if (i + 1 >= argc) fail(arg + " needs a file");
      (arg == "--to-krait" ? to : from) = argv[++i];
    } else if (arg == "--depth") {
      if (i + 1 >= argc) fail("--depth needs a number");
      const std::string k = argv[++i];
      if (k.empty() || k.size() > 6 || k.find_first_not_of("0123456789") != std::string::npos) fail("--depth needs a natural number");
      depth = std::stoi(k);
    } else if (arg != "-" && arg.starts_with("-")) {
      fail("unknown option " + arg + "; try --help");
    } else {
      if (file != nullptr) fail("more than one input file");
      file = argv[i];
    }
  }
  if ((to != nullptr) + (from != nullptr) + (file != nullptr) != 1) fail("give one input: FILE, --to-krait FILE or --from-krait FILE; try --help");
  if (depth >= 0 && from == nullptr) fail("--depth applies to --from-krait only");
  if (from_scratch && file == nullptr) fail("--from-scratch applies to a script's commands only");
  if (from != nullptr) return from_krait(from, depth);

  const char* name = to != nullptr ? to : file;
  std::ifstream opened;
  if (std::strcmp(name, "-") != 0) {
    opened.open(name);
    if (!opened) fail(std::string("cannot open ") + name);
  }
  std::istream& in = std::strcmp(name, "-") == 0 ? std::cin : opened;
  if (to != nullptr) return to_krait(in, name, range);
  smt2::script s(std::cout, name);
  s.default_range = range;
  if (!from_scratch) s.use_contexts(std::make_unique<smt2::search_process>());
  s.run(in);
  return 0;
}
