#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "hexpr.tab.hpp"
#include "lang/scanner.hpp"
#include "support/capture.hpp"

namespace {

// The tokens of a scan, one word each: an identifier's name, a number as #value, any other
// token as its code. `lines` receives the line count after each token.
std::string scan(const std::string& text, std::vector<int>* lines = nullptr) {
  YY_BUFFER_STATE buffer = krait_hexpr__scan_string(text.c_str());
  const int first_line = krait_hexpr_lineno;
  std::ostringstream words;
  for (int code; (code = krait_hexpr_lex()) != 0;) {
    if (code == t_ID) words << *krait_hexpr_lval.str << ' ';
    else if (code == t_CONST) words << '#' << krait_hexpr_lval.literal.value << ' ';
    else words << code << ' ';
    if (code == t_ID) delete krait_hexpr_lval.str;
    if (code == t_CONST) delete krait_hexpr_lval.literal.text;
    if (lines != nullptr) lines->push_back(krait_hexpr_lineno - first_line + 1);
  }
  krait_hexpr__delete_buffer(buffer);
  return words.str();
}

}  // namespace

TEST(Scanner, EverySpellingGivesItsToken) {
  // One spelling per token in the order of the numbers 258 to 304; 290 (t_MOD) never occurs.
  std::string codes;
  for (int code = 258; code <= 304; ++code)
    if (code != t_MOD) codes += (code == t_ID ? std::string("x") : std::to_string(code)) + " ";
  EXPECT_EQ(scan("DECL EXPR INIT TRANS TARGET boole float int , ; ( ) [ ] { } inf -inf x not and nand or nor "
                 "xor nxor impl + - * ^ / < <= > >= = != if then else fi static true false define"),
            codes);
  EXPECT_EQ(scan("+inf ! <-> -> div"), "274 277 283 284 289 ");
  // Keywords are case-sensitive whole matches; the longest match decides the rest.
  EXPECT_EQ(scan("DECLx Int true1 TRUE abs _x9 y'"), "DECLx Int true1 TRUE abs _x9 y' ");
  EXPECT_EQ(scan("1.5 .5 0.5e-3 2e+3 007 12abc 1E5 1.5e"), "#1.5 #0.5 #0.0005 #2000 #7 #12 abc #1 E5 #1.5 e ");
  EXPECT_EQ(scan("a - -b x-inf a-info p<->q->r<-s a<=b>=c!=!d"),
            "a 286 286 b x 275 a 275 o p 283 q 284 r 291 286 s a 292 b 294 c 296 277 d ");
}

TEST(Scanner, CommentsLinesAndUnmatchedCharacters) {
  std::vector<int> lines;
  // Whitespace, lone newlines and comment ends count; carriage returns are skipped.
  EXPECT_EQ(scan("a--b\n\n \t\nb -- note - -- c\n\nc\r\nd\r\r\n\ne", &lines), "a b c d e ");
  EXPECT_EQ(lines, (std::vector{1, 4, 6, 7, 9}));
  // A comment that ends the input leaves the next input outside a comment.
  EXPECT_EQ(scan("a -- no newline") + scan("b"), "a b ");
  const captured_run run = run_captured([] { std::printf("%s", scan("a $ b 1. x'' y").c_str()); });
  EXPECT_EQ(run.out, "Unmatched character: $\nUnmatched character: .\nUnmatched character: '\na b #1 x' y ");
  EXPECT_EQ(run.err, "");
}
