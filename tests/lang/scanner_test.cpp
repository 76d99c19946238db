#include <gtest/gtest.h>

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "hexpr.tab.hpp"
#include "lang/scanner.hpp"
#include "support/capture.hpp"

namespace {

struct token {
  token(int code, std::string name = "", double number = 0)  // a bare code is a token too
      : code(code), name(std::move(name)), number(number) {}
  bool operator==(const token&) const = default;

  int code;
  std::string name;  // identifiers
  double number;     // numbers
};
using tokens = std::vector<token>;

token id(const std::string& name) { return {t_ID, name}; }
token num(double value) { return {t_CONST, "", value}; }

std::string describe(const tokens& list) {
  std::ostringstream text;
  for (const token& t : list) text << t.code << (t.code == t_ID ? ":" + t.name : "") << ' ';
  return text.str();
}
void PrintTo(const token& t, std::ostream* out) { *out << describe({t}) << t.number; }

// Scans the buffer to the end of input and deletes it; `lines` receives the line after each token.
tokens scan_buffer(YY_BUFFER_STATE buffer, std::vector<int>* lines = nullptr) {
  krait_hexpr__switch_to_buffer(buffer);
  const int first_line = krait_hexpr_lineno;
  tokens list;
  for (int code; (code = krait_hexpr_lex()) != 0;) {
    list.emplace_back(code, code == t_ID ? *krait_hexpr_lval.str : "", code == t_CONST ? krait_hexpr_lval.literal.value : 0);
    if (code == t_ID) delete krait_hexpr_lval.str;
    if (code == t_CONST) delete krait_hexpr_lval.literal.text;
    if (lines != nullptr) lines->push_back(krait_hexpr_lineno - first_line + 1);
  }
  krait_hexpr__delete_buffer(buffer);
  return list;
}

tokens scan(const std::string& text, std::vector<int>* lines = nullptr) {
  return scan_buffer(krait_hexpr__scan_string(text.c_str()), lines);
}

// For inputs whose scan writes notes: the notes, then the tokens.
captured_run scan_captured(const std::string& text) {
  return run_captured([&] { std::cout << describe(scan(text)); });
}

}  // namespace

TEST(Scanner, EverySpellingGivesItsTokenNumber) {
  // One spelling per token in the order of the numbers 258 to 304; 290 (t_MOD) never occurs.
  tokens expected;
  for (int code = 258; code <= 304; ++code)
    if (code != t_MOD) expected.emplace_back(code, code == t_ID ? "x" : "");
  EXPECT_EQ(scan("DECL EXPR INIT TRANS TARGET boole float int , ; ( ) [ ] { } inf -inf x not and nand or nor "
                 "xor nxor impl + - * ^ / < <= > >= = != if then else fi static true false define"),
            expected);
  EXPECT_EQ(scan("+inf ! <-> -> div 7"), (tokens{274, 277, 283, 284, 289, num(7)}));
  EXPECT_EQ(t_CONST, 310);
  // Keywords are case-sensitive whole matches.
  EXPECT_EQ(scan("DECLx Int true1 TRUE true abs _x9 y'"),
            (tokens{id("DECLx"), id("Int"), id("true1"), id("TRUE"), t_TRUE, id("abs"), id("_x9"), id("y'")}));
}

TEST(Scanner, TokenStreamsOfSmallInputs) {
  EXPECT_EQ(scan("DECL boole b; EXPR b;"), (tokens{t_DECL, t_BOOLE, id("b"), t_SEMICOLON, t_EXPR, id("b"), t_SEMICOLON}));
  EXPECT_EQ(scan("x' = x + 1"), (tokens{id("x'"), t_EQU, id("x"), t_ADD, num(1)}));
  EXPECT_EQ(scan("x /2"), (tokens{id("x"), t_DIV, num(2)}));
  EXPECT_EQ(scan("1.5 .5 0.5e-3 1e5 2e+3 007"), (tokens{num(1.5), num(0.5), num(0.5e-3), num(1e5), num(2e3), num(7)}));
}

TEST(Scanner, LongestMatchDecidesTrickySpellings) {
  EXPECT_EQ(scan("a--b"), tokens{id("a")});  // the rest of the line is a comment
  EXPECT_EQ(scan("a - -b"), (tokens{id("a"), t_SUB, t_SUB, id("b")}));
  EXPECT_EQ(scan("x-inf b+inf"), (tokens{id("x"), t_MINF, id("b"), t_PINF}));
  EXPECT_EQ(scan("a-info"), (tokens{id("a"), t_MINF, id("o")}));
  EXPECT_EQ(scan("12abc 1E5 1.5e"), (tokens{num(12), id("abc"), num(1), id("E5"), num(1.5), id("e")}));
  EXPECT_EQ(scan("p<->q->r<-s"), (tokens{id("p"), t_NXOR, id("q"), t_IMP, id("r"), t_LES, t_SUB, id("s")}));
  EXPECT_EQ(scan("a<=b>=c!=!d"), (tokens{id("a"), t_LEQ, id("b"), t_GEQ, id("c"), t_NEQ, t_NOT, id("d")}));
}

TEST(Scanner, UnmatchedCharactersAreReportedAndSkipped) {
  captured_run run = scan_captured("a $ b");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "Unmatched character: $\n" + describe({id("a"), id("b")}));
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(scan_captured("1.").out, "Unmatched character: .\n" + describe({num(1)}));
  EXPECT_EQ(scan_captured("x'' y").out, "Unmatched character: '\n" + describe({id("x'"), id("y")}));
}

TEST(Scanner, CommentsAndLineCounting) {
  std::vector<int> lines;
  EXPECT_EQ(scan("a -- b - -- c\nc", &lines), (tokens{id("a"), id("c")}));
  EXPECT_EQ(lines, (std::vector{1, 2}));
  // A comment on the last line without newline ends with the input; the next input starts
  // outside a comment.
  EXPECT_EQ(scan("a -- no newline"), tokens{id("a")});
  EXPECT_EQ(scan("b"), tokens{id("b")});
  // Whitespace, lone newlines and comment ends all count; carriage returns are skipped.
  lines.clear();
  EXPECT_EQ(scan("a\n\n \t\nb -- note\n\nc\r\nd\r\r\n\ne", &lines), (tokens{id("a"), id("b"), id("c"), id("d"), id("e")}));
  EXPECT_EQ(lines, (std::vector{1, 4, 6, 7, 9}));
}

TEST(Scanner, FilesAreReadWholeWhateverTheTokenLength) {
  const std::string name(3 * hexpr_scanner_buffer_size, 'n');
  std::FILE* file = std::tmpfile();
  std::fprintf(file, "a %s ;", name.c_str());
  std::rewind(file);
  EXPECT_EQ(scan_buffer(krait_hexpr__create_buffer(file, hexpr_scanner_buffer_size)),
            (tokens{id("a"), id(name), t_SEMICOLON}));
  std::fclose(file);
}

TEST(Scanner, FailuresEndTheRun) {
  captured_run run = scan_captured("x = 1e999");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "\nError: Cannot convert 1e999 to type double.\n");

  // A stream opened for writing only cannot be read: a read error of the input.
  run = run_captured([] {
    krait_hexpr_restart(std::fopen("/dev/null", "w"));
    krait_hexpr_lex();
  });
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "input in flex scanner failed\n");

  // The generated messages are reworded to carry the prefix of our functions.
  run = run_captured([] { krait_hexpr_fatal("out of dynamic memory in yy_create_buffer()"); });
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "out of dynamic memory in krait_hexpr__create_buffer()\n");
}
