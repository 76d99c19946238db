// The SMT-LIB front: reading, elaboration, problems in the input language, and the commands
// (with a stand-in for the search, which the end-to-end cases run for real).
#include <gtest/gtest.h>

#include <random>
#include <sstream>

#include "smt2/problem.hpp"
#include "smt2/script.hpp"
#include "smt2/sexpr.hpp"
#include "smt2/terms.hpp"

namespace smt2 {
namespace {

std::vector<sexpr> read_all(const std::string& text, std::vector<std::string>* errors = nullptr) {
  std::istringstream in(text);
  reader r(in);
  std::vector<sexpr> out;
  for (;;) {
    try {
      sexpr e;
      if (!r.next(e)) return out;
      out.push_back(e);
    } catch (const script_error& e) {
      if (errors == nullptr) throw;
      errors->push_back(std::to_string(e.line) + ": " + e.what());
    }
  }
}

TEST(Reader, TokensLinesAndRecovery) {
  std::vector<std::string> errors;
  const auto all = read_all("; comment\n(declare-const |a b| Real) ( f  :key 0.50 #x1F #b01 \"say \"\"hi\"\"\" |x|)\n(- 007)", &errors);
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(errors, std::vector<std::string>{"3: a numeral may not begin with 0"});
  EXPECT_EQ(to_text(all[0]), "(declare-const |a b| Real)");
  EXPECT_EQ(all[0].items[1].text, "a b");
  const sexpr& f = all[1];
  EXPECT_EQ(f.line, 2);
  EXPECT_TRUE(f.items[1].kind == sexpr::keyword && f.items[2].kind == sexpr::decimal && f.items[2].text == "0.50");
  EXPECT_TRUE(f.items[3].kind == sexpr::hexadecimal && f.items[4].kind == sexpr::binary);
  EXPECT_EQ(f.items[5].text, "say \"hi\"");
  EXPECT_EQ(to_text(f.items[5]), "\"say \"\"hi\"\"\"");

  // Each fault names its line; the reader goes on after the command it occurred in.
  errors.clear();
  const auto rest = read_all("(a {)\n(b) )\n(c 1.)\n(d |x)\n(e", &errors);
  ASSERT_EQ(rest.size(), 1u);
  EXPECT_EQ(to_text(rest[0]), "(b)");
  EXPECT_EQ(errors, (std::vector<std::string>{"1: unexpected character '{'", "2: unexpected ')'",
                                              "3: a decimal needs digits after '.'", "4: unterminated quoted symbol"}));
  // Deep nesting is refused, not followed down the stack.
  errors.clear();
  EXPECT_TRUE(read_all(std::string(200000, '(') + std::string(200000, ')') + "(ok)", &errors).size() == 1 && errors.size() == 1);
}

// The message of the error_type that f throws; "" if it throws none.
template <class error_type, class function>
std::string message_of(function f) {
  try {
    f();
  } catch (const error_type& e) {
    return e.what();
  }
  return "";
}

struct fixture {
  symbols table;
  fixture() {
    for (const auto& [name, s] : std::vector<std::pair<std::string, sort>>{{"x", sort::real}, {"y", sort::real},
                                                                          {"n", sort::integer}, {"b", sort::boolean}}) {
      table.constants[name] = static_cast<int>(table.declared.size());
      table.declared.push_back({name, s});
    }
  }
  term_ref term(const std::string& text) { return elaborate(read_all(text).at(0), table); }
  std::string error(const std::string& text) {
    return message_of<script_error>([&] { term(text); });
  }
  problem build(const std::vector<std::string>& assertions) {
    std::vector<term_ref> terms;
    for (const std::string& a : assertions) terms.push_back(term(a));
    return build_problem(terms, table, std::nullopt, "test");
  }
  std::string body(const std::vector<std::string>& assertions) {
    const std::string text = build(assertions).text;
    return text.substr(text.find("DECL\n") + 5);
  }
};

TEST(Elaboration, TermsBecomeTheLanguagesFormulae) {
  fixture f;
  // Bounds alone give exact ranges and drop out; chains, equality on Bool, distinct, let,
  // annotations and n-ary minus are spelt out.
  EXPECT_EQ(f.body({"(<= (- 1.5) x 2)", "(and (<= 0 y) (<= y 3))", "(<= (- 3) n 7)",
                    "(=> b (< x y n))", "(= b (> x 0) (! (distinct x y n) :named d))",
                    "(let ((x y) (y x)) (= (- x y 1) (- x)))"}),
            "  float [-1.5, 2] x;\n  float [0, 3] y;\n  int [-3, 7] n;\n  boole b;\n  boole let_1;\nEXPR\n"
            "  (let_1 <-> (x > 0));\n"  // shared by two links of the chain: written once
            "  (b -> ((x < y) and (y < n)));\n"
            "  ((b <-> let_1) and (let_1 <-> (((x != y) and (x != n)) and (y != n))));\n"
            "  (((y - x) - 1) = (-y));\n");
  // Numbers a double cannot hold become pinned variables, quotients by such numbers too, and an
  // arithmetic ite a variable with both branches as its definition.
  EXPECT_EQ(f.body({"(<= 0 x 1)", "(<= 0 y 1)", "(<= 0 n 1)", "b",
                    "(= (+ x 0.1 (/ 1 3) 0.1 0.25) (/ y 3) (ite b x 2.5) (/ y 4))"}),
            "  float [0, 1] x;\n  float [0, 1] y;\n  int [0, 1] n;\n  boole b;\n"
            "  float [0.09999999999999998, 0.10000000000000002] c_1;\n"
            "  float [0.33333333333333326, 0.3333333333333334] c_2;\n"
            "  float [0, 0.3333333333333334] q_3;\n"
            "  float [0, 2.5] ite_4;\nEXPR\n"
            "  (10 * c_1) = 1;\n  (3 * c_2) = 1;\n  (3 * q_3) = (1 * y);\n"
            "  (b -> (ite_4 = x)) and ((not b) -> (ite_4 = 2.5));\n"
            "  b;\n"
            "  (((((((x + c_1) + c_2) + c_1) + 0.25) = q_3) and (q_3 = ite_4)) and (ite_4 = (y * 0.25)));\n");
  // Values and names written back: decimals carried to their last place (1/1024 was once cut).
  EXPECT_EQ(rational_term(mpq_class(1, 1024), false) + rational_term(mpq_class(-5, 2), false) +
                rational_term(mpq_class(1, 3), false) + rational_term(7, true) + rational_term(7, false),
            "0.0009765625(- 2.5)(/ 1 3)77.0");
  EXPECT_EQ(symbol_term("x@2") + symbol_term("a b") + symbol_term("2x"), "x@2|a b||2x|");
  // Sorts and arities are checked.
  for (const auto& [text, message] : std::vector<std::pair<std::string, std::string>>{
           {"(+ x b)", "+ takes arithmetic arguments"}, {"(and x b)", "and takes Bool arguments"},
           {"(/ x (- 2 2))", "division is supported by constants only"}, {"(/ x 0)", "division by zero"},
           {"(^ x 2.5)", "^ needs a constant natural exponent"}, {"(ite b x b)", "the branches of ite differ in sort"},
           {"(= x b)", "the arguments of = differ in sort"}, {"(f x)", "unsupported function f"},
           {"z", "unknown constant z"}, {"(forall ((z Real)) (> z 0))", "quantifiers are not supported"}})
    EXPECT_EQ(f.error(text), message) << text;
}

TEST(Ranges, WrittenImpliedOrMissing) {
  fixture f;
  // Ends that bounds leave open come from chains and sums of squares; integers get integral ends.
  EXPECT_EQ(f.body({"(<= 0 x)", "(<= (+ (* x x) (* y y)) 4)", "(< n (* 2 x))", "(> n (- 5))", "b"}),
            "  float [0, 2] x;\n  float [-2, 2] y;\n  int [-5, 4] n;\n  boole b;\nEXPR\n"
            "  (((x * x) + (y * y)) <= 4);\n  (n < (2 * x));\n  (n > (-5));\n  b;\n");
  // Bounds that a double holds only inexactly are kept beside the outward-rounded range.
  EXPECT_EQ(f.body({"(<= 0.1 x 1)"}),
            "  float [0.09999999999999998, 1] x;\n  float [0, 0] y;\n  int [0, 0] n;\n  boole b;\n"
            "  float [0.09999999999999998, 0.10000000000000002] c_1;\nEXPR\n"
            "  (10 * c_1) = 1;\n  ((c_1 <= x) and (x <= 1));\n");
  EXPECT_EQ(message_of<missing_range>([&] { f.build({"(<= 0 x 1)", "(<= y x)"}); }),
            "no finite range for y: add a lower bound, such as (assert (<= -100 y 100)), or give --default-range LO HI");
  // A declared end beyond the doubles is refused (it once reached GMP as an infinite double).
  EXPECT_EQ(message_of<std::runtime_error>([&] { f.build({"(<= 0 x 1" + std::string(400, '0') + ")"}); }),
            "the number 1" + std::string(400, '0') + " lies beyond the doubles");
  // Soundness: every point that satisfies random linear chains and circles lies in the ranges.
  std::mt19937_64 rng(7);
  for (int round = 0; round < 200; ++round) {
    const int a = static_cast<int>(rng() % 5) + 1, r = static_cast<int>(rng() % 9) + 1;
    const std::vector<term_ref> assertions = {f.term("(<= (+ (* x x) (* y y)) " + std::to_string(r) + ")"),
                                              f.term("(<= (* " + std::to_string(a) + " n) (+ x 3))"),
                                              f.term("(<= (- y 4) n)")};
    const std::vector<interval> ranges = implied_ranges(assertions, f.table);
    for (int k = 0; k < 100; ++k) {
      const double x = std::uniform_real_distribution<double>(-3, 3)(rng), y = std::uniform_real_distribution<double>(-3, 3)(rng);
      const long n = static_cast<long>(rng() % 21) - 10;
      if (x * x + y * y > r || a * n > x + 3 || y - 4 > n) continue;
      const mpq_class values[3] = {mpq_class(x), mpq_class(y), mpq_class(n)};
      for (int v = 0; v < 3; ++v) {
        const interval& i = ranges[static_cast<std::size_t>(v)];
        EXPECT_TRUE((!i.lo || *i.lo <= values[v]) && (!i.hi || values[v] <= *i.hi)) << round << " " << v;
      }
    }
  }
}

TEST(Script, CommandsAndResponses) {
  std::vector<std::string> searched;
  auto fake = [&](const std::string& text, const check_settings& settings) {
    searched.push_back(text);
    outcome o;
    o.answer = text.find("x > 1") != std::string::npos ? outcome::unsat : outcome::sat;
    if (settings.min_split_width) o.answer = outcome::unknown, o.message = "candidate box; not settled";
    o.values["x"] = {mpq_class(1, 3), mpq_class(1, 3)};
    o.values["x_y"] = {mpq_class(-5, 2), mpq_class(-5, 2)};
    return o;
  };
  std::ostringstream out;
  script s(out, "test", fake);
  std::istringstream in(
      "(set-option :print-success true)(set-logic QF_NRA)(set-logic QF_NRA)(declare-const x Real)(declare-fun |x y| () Real)"
      "(define-fun sq ((a Real)) Real (* a a))(assert (<= 0 x 1))(assert (<= (- 5) |x y| 5))(get-model)(check-sat)(get-model)"
      "(get-value (x (sq x) (> x 0) (+ |x y| 1)))(push 1)(declare-const z Real)(assert (> x 1))(check-sat)(pop)"
      "(assert (> z 0))(pop)(set-option :precision 0.5)(check-sat)(get-info :reason-unknown)(get-model)(get-value (x))"
      "(get-info :name)(set-option :verbosity 3)(get-unsat-core)(echo \"bye\")(exit)(check-sat)");
  s.run(in);
  EXPECT_EQ(out.str(),
            "success\nsuccess\n(error \"line 1: the logic is already set\")\nsuccess\nsuccess\nsuccess\nsuccess\nsuccess\n"
            "(error \"line 1: no model: the last check-sat found none, or assertions changed since\")\n"
            "sat\n(\n  (define-fun x () Real (/ 1 3))\n  (define-fun |x y| () Real (- 2.5))\n)\n"
            "((x (/ 1 3)) ((sq x) (/ 1 9)) ((> x 0) true) ((+ |x y| 1) (- 1.5)))\n"
            "success\nsuccess\nsuccess\nunsat\nsuccess\n(error \"line 1: unknown constant z\")\n"
            "(error \"line 1: pop of more levels than were pushed\")\nsuccess\n"
            "unknown\n(:reason-unknown \"candidate box; not settled\")\n"
            "(\n  ; unknown: candidate box; not settled\n  ; x in [0.33333333333333333, 0.33333333333333334]\n"
            "  ; x y in [-2.5, -2.5]\n)\n"
            "(error \"line 1: no model: the last check-sat did not answer sat, or assertions changed since\")\n"
            "(:name \"krait-smt2\")\nunsupported\nunsupported\n\"bye\"\nsuccess\n");
  ASSERT_EQ(searched.size(), 3u);
  EXPECT_NE(searched[0].find("DECL\n  float [0, 1] x;\n  float [-5, 5] x_y;\nEXPR\n  true;\n"), std::string::npos) << searched[0];
}

TEST(Script, ModelOfConstantsLeftOutOfTheFormula) {
  // Bounds that the declared range implies drop out of the formula, and the witness does not
  // name their constant: the model takes its range's lower end, not 0.
  std::ostringstream out;
  script quiet(out, "test", [](const std::string&, const check_settings&) { return outcome{outcome::sat, "", {}}; });
  std::istringstream in("(declare-const x Int)(declare-const y Real)(declare-const z Real)(assert (<= 5 x 10))"
                        "(assert (and (>= y 1.5) (<= y 2)))(check-sat)(get-model)(get-value ((* x y)))");
  quiet.run(in);
  EXPECT_EQ(out.str(), "sat\n(\n  (define-fun x () Int 5)\n  (define-fun y () Real 1.5)\n  (define-fun z () Real 0.0)\n)\n"
                       "(((* x y) 7.5))\n");
}

// Stands in for the search process: records what each check-sat sends.
struct recording_search : context_search {
  std::vector<std::string> log;
  std::vector<std::optional<outcome>> answers;  // in turn; unsat once they run out
  std::optional<outcome> check(const std::vector<context_operation>& sync, const check_settings&) override {
    for (const context_operation& op : sync)
      log.push_back(op.kind == context_operation::pop    ? "pop " + std::to_string(op.count)
                    : op.kind == context_operation::push ? "push"
                                                         : op.text.substr(op.text.find('\n') + 1));
    log.push_back("check");
    if (answers.empty()) return outcome{outcome::unsat, "", {}};
    std::optional<outcome> a = answers.front();
    answers.erase(answers.begin());
    return a;
  }
  void reset() override { log.push_back("reset"); }
  std::size_t started() const override { return 0; }
};

TEST(ScriptContexts, EachFrameItsContextAndRangesFromTheFramesBelow) {
  std::ostringstream out;
  std::vector<std::string> scratch;
  script s(out, "test", [&](const std::string& text, const check_settings&) {
    scratch.push_back(text);
    return outcome{outcome::unsat, "", {}};
  });
  auto owned = std::make_unique<recording_search>();
  recording_search& search = *owned;
  s.use_contexts(std::move(owned));
  // x has no upper end in the base frame: its assertion waits for the frame that gives one.
  // The variable made there goes with that frame; the base then ranges x by its own frame.
  // y, ranged in the base, stays when a later frame bounds it further. Helpers are numbered
  // over the script's life, and a pinned constant of a popped context is made again.
  std::istringstream in(
      "(declare-const x Int)(declare-const y Int)(declare-const b Bool)(assert (>= x 0))(assert (<= 0 y 9))"
      "(assert (or b (> y 2.5)))(push 1)(assert (<= x 3))(assert (> (* x y) (/ 1 3)))(assert (<= y 5))(check-sat)"
      "(pop 1)(assert (<= x 100))(assert (= (* x x) 49))(check-sat)(get-model)"
      "(push 1)(check-sat)(pop 1)(push 1)(assert (< (/ x 3) y (/ 1 3)))(check-sat)(get-info :all-statistics)"
      "(reset-assertions)(declare-const x Real)(assert (<= 0 x 1))(check-sat)");
  const outcome unsat{outcome::unsat, "", {}}, sat{outcome::sat, "", {{"x", {7, 7}}, {"c_9", {1, 1}}}};
  search.answers = {unsat, sat, std::nullopt};
  s.run(in);
  const std::string base = "DECL\n  int [0, 100] x;\n  int [0, 9] y;\n  boole b;\nEXPR\n  (b or (y > 2.5));\n  ((x * x) = 49);\n";
  EXPECT_EQ(search.log, (std::vector<std::string>{
                            "DECL\n  int [0, 9] y;\n  boole b;\nEXPR\n  (b or (y > 2.5));\n", "push",
                            "DECL\n  int [0, 3] x;\n  float [0.33333333333333326, 0.3333333333333334] c_1;\nEXPR\n"
                            "  (3 * c_1) = 1;\n  ((x * y) > c_1);\n  (y <= 5);\n",
                            "check", "pop 1", "DECL\n  int [0, 100] x;\nEXPR\n  ((x * x) = 49);\n", "check", "push", "check",
                            "reset",  // the process ended: that check went from scratch, the next starts afresh
                            base, "push",
                            "DECL\n  float [0, 33.33333333333334] q_2;\n  float [0.33333333333333326, 0.3333333333333334] c_3;\n"
                            "EXPR\n  (3 * q_2) = (1 * x);\n  (3 * c_3) = 1;\n  ((q_2 < y) and (y < c_3));\n",
                            "check", "reset", "DECL\n  float [0, 1] x;\nEXPR\n  true;\n", "check"}));
  EXPECT_EQ(scratch.size(), 1u);
  // The witness's names are the texts'; y and b appear in no formula of the contexts.
  EXPECT_EQ(out.str(), "unsat\nsat\n(\n  (define-fun x () Int 7)\n  (define-fun y () Int 0)\n  (define-fun b () Bool false)\n)\n"
                       "unsat\nunsat\n(:check-sat-in-contexts 3 :check-sat-from-scratch 1 :search-processes 0 :carried-clauses 0)\n"
                       "unsat\n");
}

}  // namespace
}  // namespace smt2
