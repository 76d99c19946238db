// Reading SMT-LIB 2 s-expressions by hand: the syntax is a handful of token kinds, a command
// must be answered before the next one is read from a pipe (a generated scanner reads ahead),
// and an error has to leave the reader at the next command.
#include "smt2/sexpr.hpp"

#include <cctype>
#include <cstring>

namespace smt2 {
namespace {

// Characters of a simple symbol besides letters and digits.
bool symbol_char(int c) {
  return c >= 0 && (std::isalnum(c) || std::strchr("~!@$%^&*_-+=<>.?/", c) != nullptr) && c != '\0';
}

// Deeply nested input must not exhaust the stack.
constexpr int max_depth = 10000;

}  // namespace

int reader::get() {
  const int c = in_.get();
  if (c == '\n') ++line_;
  return c;
}

void reader::skip_space() {
  for (;;) {
    const int c = peek();
    if (c == ';') {
      while (peek() != '\n' && peek() != EOF) get();
    } else if (c != EOF && std::isspace(c)) {
      get();
    } else {
      return;
    }
  }
}

bool reader::next(sexpr& out) {
  skip_space();
  if (peek() == EOF) return false;
  out = read(0);
  return true;
}

// Skips what is left of an s-expression `depth` lists deep.
void reader::recover(int depth) {
  bool in_string = false, in_bars = false;
  while (depth > 0) {
    const int c = get();
    if (c == EOF) return;
    if (in_string) {
      if (c == '"') in_string = peek() == '"' ? (get(), true) : false;
    } else if (in_bars) {
      in_bars = c != '|';
    } else if (c == ';') {
      while (peek() != '\n' && peek() != EOF) get();
    } else if (c == '"') {
      in_string = true;
    } else if (c == '|') {
      in_bars = true;
    } else if (c == '(') {
      ++depth;
    } else if (c == ')') {
      --depth;
    }
  }
}

sexpr reader::read(int depth) {
  skip_space();
  const int start = line_;
  const int c = get();
  if (c == EOF) throw script_error(start, "unexpected end of input");
  if (c == ')') throw script_error(start, "unexpected ')'");
  if (c != '(') {
    try {
      return atom(c);
    } catch (const script_error&) {
      recover(depth);
      throw;
    }
  }
  if (depth >= max_depth) {
    recover(depth + 1);
    throw script_error(start, "s-expression nested too deeply");
  }
  sexpr e;
  e.kind = sexpr::list;
  e.line = start;
  for (;;) {
    skip_space();
    if (peek() == EOF) throw script_error(start, "unexpected end of input: missing ')'");
    if (peek() == ')') {
      get();
      return e;
    }
    e.items.push_back(read(depth + 1));
  }
}

sexpr reader::atom(int c) {
  sexpr e;
  e.line = line_;
  if (c == '"') {
    e.kind = sexpr::string;
    for (;;) {
      const int d = get();
      if (d == EOF) throw script_error(e.line, "unterminated string literal");
      if (d == '"') {
        if (peek() != '"') return e;
        get();  // "" stands for one quote
      }
      e.text.push_back(static_cast<char>(d));
    }
  }
  if (c == '|') {
    e.kind = sexpr::symbol;
    e.quoted = true;
    for (;;) {
      const int d = get();
      if (d == EOF) throw script_error(e.line, "unterminated quoted symbol");
      if (d == '|') return e;
      if (d == '\\') throw script_error(e.line, "a quoted symbol may not contain '\\'");
      e.text.push_back(static_cast<char>(d));
    }
  }
  if (c == '#') {
    const int base = get();
    if (base != 'x' && base != 'b') throw script_error(e.line, "'#' must begin #x or #b");
    e.kind = base == 'x' ? sexpr::hexadecimal : sexpr::binary;
    while (base == 'x' ? std::isxdigit(peek()) : (peek() == '0' || peek() == '1')) e.text.push_back(static_cast<char>(get()));
    if (e.text.empty()) throw script_error(e.line, "empty hexadecimal or binary literal");
    return e;
  }
  if (c == ':') {
    e.kind = sexpr::keyword;
    e.text = ":";
    while (symbol_char(peek())) e.text.push_back(static_cast<char>(get()));
    if (e.text.size() == 1) throw script_error(e.line, "empty keyword");
    return e;
  }
  if (std::isdigit(c)) {
    e.kind = sexpr::numeral;
    e.text.push_back(static_cast<char>(c));
    while (std::isdigit(peek())) e.text.push_back(static_cast<char>(get()));
    if (peek() == '.') {
      e.kind = sexpr::decimal;
      e.text.push_back(static_cast<char>(get()));
      if (!std::isdigit(peek())) throw script_error(e.line, "a decimal needs digits after '.'");
      while (std::isdigit(peek())) e.text.push_back(static_cast<char>(get()));
    }
    if (e.text.size() > 1 && e.text[0] == '0' && e.text[1] != '.') throw script_error(e.line, "a numeral may not begin with 0");
    if (symbol_char(peek())) throw script_error(e.line, "a number runs into a symbol");
    return e;
  }
  if (!symbol_char(c)) throw script_error(e.line, std::string("unexpected character '") + static_cast<char>(c) + "'");
  e.kind = sexpr::symbol;
  e.text.push_back(static_cast<char>(c));
  while (symbol_char(peek())) e.text.push_back(static_cast<char>(get()));
  return e;
}

std::string to_text(const sexpr& e) {
  switch (e.kind) {
    case sexpr::list: {
      std::string s = "(";
      for (std::size_t i = 0; i < e.items.size(); ++i) s += (i ? " " : "") + to_text(e.items[i]);
      return s + ")";
    }
    case sexpr::symbol: return e.quoted ? "|" + e.text + "|" : e.text;
    case sexpr::string: {
      std::string s = "\"";
      for (char c : e.text) s += c == '"' ? std::string("\"\"") : std::string(1, c);
      return s + "\"";
    }
    case sexpr::hexadecimal: return "#x" + e.text;
    case sexpr::binary: return "#b" + e.text;
    default: return e.text;
  }
}

}  // namespace smt2
