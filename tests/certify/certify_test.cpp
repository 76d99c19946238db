#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "certify/certify.hpp"
#include "certify/evaluate.hpp"
#include "certify/formula.hpp"
#include "hexpr/hexpr.hpp"
#include "lang/parser.hpp"
#include "lang/symtab.hpp"

namespace {

using certify::range;
using certify::verdict;

// Parses an input text in this process; each parse starts with an empty symbol table.
class Certify : public ::testing::Test {
 protected:
  void SetUp() override { symtab.new_frame(); }
  void TearDown() override {
    symtab.delete_last_frame();
    symtab.constants.clear();
  }

  certify::formula parse(const std::string& text, int depth = -1) {
    TearDown();
    SetUp();
    std::FILE* file = fmemopen(const_cast<char*>(text.data()), text.size(), "r");
    root_.reset(parse_hexpr_file(file));
    std::fclose(file);
    return depth < 0 ? certify::formula::plain(*root_) : certify::formula::unwound(*root_, static_cast<unsigned>(depth));
  }

  // A box from decimal ends, one "lo hi" pair per formula variable in their order.
  static std::vector<range> box(const std::vector<std::pair<const char*, const char*>>& ends) {
    std::vector<range> b;
    for (const auto& [lo, hi] : ends) b.push_back({certify::literal_value(lo), certify::literal_value(hi)});
    return b;
  }

  static std::string text(const certify::certificate& c) {
    std::string all;
    for (const std::string& line : c.lines) all += line + "\n";
    return all;
  }

  // Each input's box holds a solution, which the certificate shows after "witness:" and `how`.
  struct solved { const char* input; std::vector<std::pair<const char*, const char*>> ends; const char* witness; };
  void expect_verified(const std::vector<solved>& rows, const std::string& how) {
    for (const solved& r : rows) {
      SCOPED_TRACE(r.input);
      const auto c = certify::certify(parse(r.input), box(r.ends));
      EXPECT_EQ(c.kind, verdict::verified) << text(c);
      EXPECT_EQ(text(c), "    verified: the box holds a solution\n    witness:" + how + "\n" + r.witness);
    }
  }

  std::unique_ptr<hexpr> root_;
};

TEST_F(Certify, NumbersAreTheDecimalsAsWritten) {
  EXPECT_EQ(certify::literal_value("0.1"), mpq_class(1, 10));
  EXPECT_EQ(certify::literal_value("--2.50e-1"), mpq_class(1, 4));
  EXPECT_EQ(certify::literal_value("-3e2"), mpq_class(-300));
  const auto f = parse("DECL float [-0.5, 1.5e1] x; define c = -0.25; EXPR x - c >= 0.1 * x ^ 2;");
  EXPECT_TRUE(f.vars[0].lower == mpq_class(-1, 2) && f.vars[0].upper == 15);
  EXPECT_EQ(f.text(f.root), "x - c >= 0.1 * x^2");
}

TEST_F(Certify, ExactPointsDecidePolynomialsAndIntegers) {
  expect_verified({
      {"DECL int [1, 29] a, b, c; EXPR a^2 + b^2 = c^2; a < b; a + b + c = 30;",
       {{"5", "5"}, {"12", "12"}, {"13", "13"}}, "        a = 5\n        b = 12\n        c = 13\n"},
      // Integer variables take integer points inside their ranges only.
      {"DECL int [0, 10] n; float [0, 10] x; EXPR n * x = 7.5; n >= 2.5; abs(x - 2.4) <= 0.2;",
       {{"2.5", "3.5"}, {"2", "3"}}, "        n = 3\n        x = 2.5\n"},
      {"DECL float [-4, 4] x, y; EXPR min(x, y) = -1 or max(x, y) > 3; x * y = -2;",
       {{"1.9", "2.1"}, {"-1.1", "-0.9"}}, "        x = 2\n        y = -1\n"},
  }, "");
}

TEST_F(Certify, EnclosuresDecideTranscendentalRelationsOrLeaveThemOpen) {
  // e = 2.71828182845904523536...: decided at the point 1 although the constant is close.
  auto f = parse("DECL float [0, 2] x; EXPR exp(x) > 2.718281828459045 and sin(x) < 0.8415 and cos(x) >= 0.5403;");
  EXPECT_EQ(certify::certify(f, box({{"1", "1"}})).kind, verdict::verified);
  // Over a box the enclosure of exp straddles 2.5: neither true nor false.
  f = parse("DECL float [0, 2] x; EXPR exp(x) > 2.5;");
  certify::evaluator eval(f);
  std::vector<certify::value> over{certify::value::over(certify::enclosure(mpq_class(1, 2), mpq_class(3, 2)), 0)};
  EXPECT_EQ(eval.run(over), certify::truth::unknown);
  EXPECT_EQ(eval.run({certify::value::of(mpq_class(1, 2), 0)}), certify::truth::no);
  // A double root: no rational point, no existence proof, not refutable either.
  f = parse("DECL float [0, 2] x; EXPR (x * x - 2) ^ 2 = 0;");
  const auto c = certify::certify(f, box({{"1.41", "1.42"}}));
  EXPECT_EQ(c.kind, verdict::undecided);
  EXPECT_EQ(c.lines[0].rfind("    not verified: (x * x - 2)^2 = 0 is not settled at the points tried", 0), 0u) << text(c);
}

TEST_F(Certify, KrawczykProvesEquationsNoRationalPointMeets) {
  expect_verified({
      // Circle and line meet at ((1 + sqrt 3) / 2, (sqrt 3 - 1) / 2).
      {"DECL float [-2, 2] x, y; EXPR x^2 + y^2 = 2; y = x - 1; x > 0;", {{"1.3", "1.4"}, {"0.3", "0.4"}},
       "        x in [1.3660254037844386467, 1.3660254037844386468]\n"
       "        y in [0.36602540378443864676, 0.36602540378443864677]\n"},
      {"DECL float [-2, 2] x, y, z; EXPR x^2 + y^2 + z^2 = 1; x + y + z = 1.5; x - y = 0.25; z >= 0;",
       {{"0.4", "0.5"}, {"0.15", "0.2"}, {"0.85", "0.9"}},
       "        x in [0.43405934604350666639, 0.4340593460435066664]\n"
       "        y in [0.18405934604350666639, 0.1840593460435066664]\n"
       "        z in [0.88188130791298666721, 0.88188130791298666722]\n"},
  }, " the equations have a solution in");
}

TEST_F(Certify, RefutedBoxesAndWhatTheyBlame) {
  auto f = parse("DECL float [0, 3] x, y; EXPR y >= 0; x * x >= 5 or y > 2;");
  const auto c = certify::certify(f, box({{"1", "2"}, {"0", "1"}}));
  EXPECT_EQ(c.kind, verdict::refuted);
  EXPECT_EQ(text(c), "    not verified: x * x >= 5 is false at every point of the box\n");
  // Near a root but holding none: the Krawczyk operator of the box misses the box.
  f = parse("DECL float [0, 4] x; EXPR x^3 - 6 * x^2 + 11 * x - 6 = 0;");
  EXPECT_EQ(text(certify::certify(f, box({{"2.897", "2.91"}}))),
            "    not verified: x^3 - 6 * x^2 + 11 * x - 6 = 0 has no solution in the box (Krawczyk test)\n");
  EXPECT_EQ(certify::certify(f, box({{"2.95", "3.05"}})).kind, verdict::verified);
  // A false implication is blamed on its consequence, a false negation on itself.
  f = parse("DECL float [0, 3] s; EXPR s < 5 -> s = 2; not (s != 0.5 * s);");
  EXPECT_EQ(text(certify::certify(f, box({{"0", "1"}}))), "    not verified: s = 2 is false at every point of the box\n");
  EXPECT_EQ(text(certify::certify(f, box({{"2", "2"}}))),
            "    not verified: not s != 0.5 * s is false at every point of the box\n");
  // An even root of a negative number is undefined: its relation is false, never true.
  f = parse("DECL float [-3, 3] x; EXPR nrt(x, 2) >= 0;");
  EXPECT_EQ(certify::certify(f, box({{"-2", "-1"}})).kind, verdict::refuted);
  EXPECT_EQ(certify::certify(f, box({{"-1", "1"}})).kind, verdict::verified);
}

TEST_F(Certify, TransitionSystemsUnwindWithStepsAndNameTheirParts) {
  const char* system = "DECL int [0, 20] x; float [0, 1] r; INIT x = 0; TRANS x' = x + 2; r' * r' = 0.5 * x; TARGET x = 4;";
  const auto f = parse(system, 2);
  ASSERT_EQ(f.parts.size(), 4u);
  EXPECT_EQ(f.parts[2], "TRANS at step 1");
  std::vector<std::string> labels;
  for (const auto& v : f.vars) labels.push_back(v.label(true));
  EXPECT_EQ(labels, (std::vector<std::string>{"x@0", "x@1", "r@1", "x@2", "r@2"}));
  const auto c = certify::certify(f, box({{"0", "0"}, {"2", "2"}, {"0", "0.1"}, {"4", "4"}, {"0.9", "1.1"}}));
  EXPECT_EQ(c.kind, verdict::verified) << text(c);
  // r@2 * r@2 = 0.5 * x@1 = 1 is met by r@2 = 1; r@1 * r@1 = 0 by r@1 = 0.
  EXPECT_EQ(text(c), "    verified: the box holds a solution\n    witness:\n        r@1 = 0\n        r@2 = 1\n"
                     "        x@0 = 0\n        x@1 = 2\n        x@2 = 4\n");
  const auto refuted = certify::certify(f, box({{"0", "0"}, {"3", "3"}, {"0", "1"}, {"4", "4"}, {"0", "1"}}));
  EXPECT_EQ(text(refuted), "    not verified: x@1 = x@0 + 2 (TRANS at step 0) is false at every point of the box\n");
}

}  // namespace
