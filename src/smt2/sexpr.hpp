#pragma once

// The concrete syntax of SMT-LIB 2 scripts: tokens and s-expressions, read one command at a
// time so that a script on a pipe is answered command by command.

#include <istream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace smt2 {

struct sexpr {
  enum kind_t { list, symbol, keyword, numeral, decimal, hexadecimal, binary, string } kind = list;
  std::string text;  // a symbol without its bars, a keyword with its colon, a string unescaped
  bool quoted = false;  // a symbol written |...|
  int line = 0;
  std::vector<sexpr> items;  // list

  bool is_symbol(const char* name) const { return kind == symbol && text == name; }
  bool is_list() const { return kind == list; }
};

// A fault of a script: its message and the line it was found on.
struct script_error : std::runtime_error {
  int line;
  script_error(int at, const std::string& message) : std::runtime_error(message), line(at) {}
};

class reader {
 public:
  explicit reader(std::istream& in) : in_(in) {}

  // The next top-level s-expression; false at the end of the input. A syntax error throws
  // script_error after skipping to the end of the s-expression it occurred in, so that the
  // caller can go on with the next one.
  bool next(sexpr& out);
  int line() const { return line_; }

 private:
  int get();
  int peek() { return in_.peek(); }
  void skip_space();
  sexpr read(int depth);
  sexpr atom(int c);
  void recover(int depth);

  std::istream& in_;
  int line_ = 1;
};

// The s-expression written back in concrete syntax (for echoing terms in responses).
std::string to_text(const sexpr& e);

}  // namespace smt2
