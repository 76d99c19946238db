#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <functional>
#include <iostream>
#include <utility>

#include "base/error.hpp"
#include "base/fpenv.hpp"
#include "base/numbers.hpp"
#include "base/random.hpp"
#include "base/stopwatch.hpp"
#include "support/capture.hpp"

// Errors go to standard error once the report is flushed and end the run with 1; warnings and
// info go to the report in its order. Each message starts on a fresh line; its own newlines stay.
// A harness that runs many inputs in one process installs a handler that takes over the end.
TEST(Diagnostics, ExactMessagesStreamsAndStatuses) {
  const struct { void (*body)(); int status; const char *out, *err; } rows[] = {
      {[] { std::cout << "report line without end"; error("Could not open input file."); }, 1,
       "report line without end", "\nError: Could not open input file.\n"},
      {[] { error("Invalid option '%s'. Try %s --help.", "-x", "krait"); }, 1, "",
       "\nError: Invalid option '-x'. Try krait --help.\n"},
      {[] { error("Invalid value '%s' for a_init.\n", "0"); }, 1, "", "\nError: Invalid value '0' for a_init.\n\n"},
      {[] { double s; solver_timer().stop(s); }, 1, "", "\nError: Attempt to stop timer which is not running.\n"},
      {[] { solver_timer t; t.start(); t.start(); }, 1, "",
       "\nError: Attempt to start timer which is already running.\n"},
      {[] {
         std::cout << "SOLVING:", warning("Option '--reuse' without effect when not in BMC mode!");
         std::cout << "    input formula" << std::endl, info("%d and %s", 7, "more"), end_run(3);
       }, 3, "SOLVING:\nWarning: Option '--reuse' without effect when not in BMC mode!\n"
             "    input formula\n\nInfo: 7 and more\n", ""},
      {[] {
         set_fatal_handler([](int status) { throw status; });
         try { error("Syntax error."); } catch (int status) { std::cout << status; }
         set_fatal_handler(nullptr);
       }, 0, "1", "\nError: Syntax error.\n"}};
  for (const auto& r : rows) {
    const captured_run got = run_captured(r.body);
    EXPECT_EQ(std::to_string(got.status) + '|' + got.out + '|' + got.err,
              std::to_string(r.status) + '|' + r.out + '|' + r.err);
  }
}

// Worked out without Schrage's method: the stored 13 unmasks to 13 ^ 123459876 = 123459881, and
// 123459881 * 16807 mod (2^31 - 1) = 521016965, stored masked as 408276897; and so on.
TEST(Ran0, FirstDrawsFromTheInitialStateAreFixed) {
  ASSERT_EQ(random_seed, 13);
  const std::int32_t draws[][2] = {{521016965, 408276897}, {1441301936, 1387486356}, {346100192, 335202500},
                                   {1520210868, 1573341840}};  // the state drawn, and how it is stored
  for (const auto& d : draws) {
    EXPECT_EQ(ran0(), (1.0 / 2147483647) * d[0]) << d[0];
    EXPECT_EQ(random_seed, d[1]) << d[0];
  }
}

// lo + (hi - lo) * 0.5 (not (lo + hi) * 0.5), halves where that overflows; neighbours give an end.
TEST(Midpoint, OverflowSafeAndInThatForm) {
  const double rows[][3] = {{0, 10, 5}, {-3, 1, -1}, {0.1, 0.7, 0.4}, {DBL_MAX / 2, DBL_MAX, 0.75 * DBL_MAX},
                            {-DBL_MAX, DBL_MAX, 0}, {-DBL_MAX, DBL_MAX / 2, -DBL_MAX / 4}, {1e17, 1e17 + 16, 1e17}};
  for (const auto& r : rows) EXPECT_EQ(midpoint(r[0], r[1]), r[2]) << r[0] << " , " << r[1];
}

// Each of the four flags is reported once and cleared, whether double arithmetic or the maths
// library raised it (both use the unit whose flags are read); inexact is neither a reason nor
// cleared. A direction set here governs double arithmetic.
TEST(FpExceptions, FourFlagsAreReportedAndCleared) {
  volatile double big = DBL_MAX, tiny = DBL_MIN, zero = 0.0, one = 1.0, third;
  const std::pair<const char*, std::function<void()>> raisers[] = {
      {"overflow", [&] { third = big * 2.0; }},       {"exp overflow", [&] { third = std::exp(big); }},
      {"nextafter", [&] { third = std::nextafter(big, INFINITY); }},
      {"underflow", [&] { third = tiny * tiny; }},    {"exp underflow", [&] { third = std::exp(-1000.0 * one); }},
      {"divbyzero", [&] { third = one / zero; }},     {"pow divbyzero", [&] { third = std::pow(zero, -one); }},
      {"invalid", [&] { third = zero / zero; }},      {"fmod invalid", [&] { third = std::fmod(one, zero); }},
      {"cos invalid", [&] { third = std::cos(big * 2.0 * 0.0 + INFINITY); }}};
  for (const auto& [name, raise] : raisers) {
    fpenv::clear(fpenv::all_flags);
    raise();
    third = one / 3.0;
    EXPECT_TRUE(fp_exceptions_raised() && !fp_exceptions_raised() && fpenv::raised(fpenv::inexact)) << name;
    raise();
    clear_fp_exceptions();
    EXPECT_TRUE(!fp_exceptions_raised() && fpenv::raised(fpenv::inexact)) << name;
  }
  const unsigned saved = fpenv::raised(fpenv::all_flags);
  fpenv::set_rounding(fpenv::upward);
  EXPECT_TRUE(one + tiny > 1.0 && fpenv::rounding() == fpenv::upward);
  fpenv::set_rounding(fpenv::downward);
  EXPECT_TRUE(-one - tiny < -1.0 && one + tiny == 1.0);
  fpenv::set_rounding(fpenv::to_nearest);
  EXPECT_TRUE(one + tiny == 1.0 && -one - tiny == -1.0 && fpenv::rounding() == fpenv::to_nearest);
  fpenv::clear(fpenv::all_flags);
  fpenv::restore(saved);
  EXPECT_EQ(fpenv::raised(fpenv::all_flags), saved);
}

TEST(SolverTimer, MeasuresCpuTimeInWholeMilliseconds) {
  solver_timer timer;
  double seconds = -1.0;
  timer.start();
  for (const auto begin = process_cpu_milliseconds(); process_cpu_milliseconds() - begin < 35;) {}
  timer.stop(seconds);
  EXPECT_TRUE(!timer.running() && seconds >= 0.035 && seconds * 1000 == std::floor(seconds * 1000 + 0.5)) << seconds;
}

// Strict conversions: false and the value on success; true and 0 on a range error or anything
// after the number. Doubles truncate to 64 bits, saturating beyond; NaN gives 0.
TEST(Conversions, StrictParsingAndSaturation) {
  const struct { const char* text; bool int_fails; int i; bool double_fails; double d; } rows[] = {
      {"42", false, 42, false, 42},           {"+3", false, 3, false, 3},        {"  -12", false, -12, false, -12},
      {"2147483647", false, INT_MAX, false, INT_MAX},    {"2147483648", true, 0, false, 0x1p31},
      {"-2147483649", true, 0, false, -2147483649.0},    {"99999999999999999999", true, 0, false, 1e20},
      {"1.5", true, 0, false, 1.5},           {"0.5e-3", true, 0, false, 0.5e-3}, {"1e999", true, 0, true, 0},
      {"1e-400", true, 0, true, 0},           {"3x", true, 0, true, 0},           {"2.5 ", true, 0, true, 0},
      {"", true, 0, true, 0}};
  for (const auto& r : rows) {
    int i = 5;
    double d = 5;
    EXPECT_TRUE(str_to_int(r.text, i) == r.int_fails && i == r.i) << r.text;
    EXPECT_TRUE(str_to_double(r.text, d) == r.double_fails && d == r.d) << r.text;
  }
  const struct { double in; std::int64_t out; } truncated[] = {
      {-1.9, -1},           {0x1p63 - 1024, INT64_MAX - 1023}, {0x1p63, INT64_MAX}, {INFINITY, INT64_MAX},
      {-0x1p63, INT64_MIN}, {-1e300, INT64_MIN},               {NAN, 0}};
  for (const auto& r : truncated) EXPECT_EQ(truncated_int64(r.in), r.out) << r.in;
}
