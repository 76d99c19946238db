#include "base/numbers.hpp"
#include "base/random.hpp"
#include "base/stopwatch.hpp"

#include <gtest/gtest.h>

#include <cfenv>
#include <cfloat>
#include <climits>
#include <cmath>
#include <string>

#include "support/capture.hpp"

// The generator's first draws, worked out without Schrage's method: the stored 13 unmasks to
// 13 ^ 123459876 = 123459881; 123459881 * 16807 mod (2^31 - 1) = 521016965, stored masked as
// 408276897; the next state is 1441301936 * ..., and so on.
TEST(Ran0, FirstDrawsFromTheInitialStateAreFixed) {
  ASSERT_EQ(random_seed, 13);
  const std::int32_t states[] = {521016965, 1441301936, 346100192, 1520210868};
  const std::int32_t stored[] = {408276897, 1387486356, 335202500, 1573341840};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(ran0(), (1.0 / 2147483647) * states[i]) << "draw " << i;
    EXPECT_EQ(random_seed, stored[i]) << "draw " << i;
  }
}

TEST(Ran0, StaysStrictlyInsideTheUnitInterval) {
  const std::int32_t saved = random_seed;
  for (int i = 0; i < 100000; ++i) {
    const double r = ran0();
    ASSERT_GT(r, 0.0);
    ASSERT_LT(r, 1.0);
  }
  random_seed = saved;
}

TEST(Midpoint, UsesTheOverflowSafeForm) {
  EXPECT_EQ(midpoint(0.0, 10.0), 5.0);
  EXPECT_EQ(midpoint(-3.0, 1.0), -1.0);
  // (lo + hi) / 2 would overflow here.
  EXPECT_EQ(midpoint(DBL_MAX / 2, DBL_MAX), 0.75 * DBL_MAX);
  // lo + (hi - lo) * 0.5 differs from (lo + hi) * 0.5 in the last bit for these.
  const double lo = 0.1, hi = 0.7;
  EXPECT_EQ(midpoint(lo, hi), lo + (hi - lo) * 0.5);
  // A width beyond the doubles falls back on the halves, and stays finite.
  EXPECT_EQ(midpoint(-DBL_MAX, DBL_MAX), 0.0);
  EXPECT_EQ(midpoint(-DBL_MAX, DBL_MAX / 2), -DBL_MAX / 4);
  // Two neighbouring doubles have no midpoint between them: it rounds onto an end.
  const double a = 1e17, b = std::nextafter(a, 2e17);
  const double m = midpoint(a, b);
  EXPECT_TRUE(m == a || m == b);
}

TEST(FpExceptions, ReportsAndClearsTheFourWatchedFlags) {
  std::feclearexcept(FE_ALL_EXCEPT);
  EXPECT_FALSE(fp_exceptions_raised());
  volatile double big = DBL_MAX, zero = 0.0, tiny = DBL_MIN, minus = -1.0;
  volatile double r = big * 2.0;  // overflow
  EXPECT_TRUE(fp_exceptions_raised());
  EXPECT_FALSE(fp_exceptions_raised());
  r = 1.0 / zero;  // divide-by-zero
  EXPECT_TRUE(fp_exceptions_raised());
  r = std::sqrt(minus);  // invalid
  EXPECT_TRUE(fp_exceptions_raised());
  r = tiny * tiny;  // underflow
  EXPECT_TRUE(fp_exceptions_raised());
  EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW | FE_UNDERFLOW), 0);
  // Inexact alone is not a reason to drop a bound, and is left alone.
  r = 1.0 / 3.0 + big * 0.0 + r;
  std::feclearexcept(FE_ALL_EXCEPT);
  std::feraiseexcept(FE_INEXACT);
  EXPECT_FALSE(fp_exceptions_raised());
  EXPECT_NE(std::fetestexcept(FE_INEXACT), 0);
  // clear_fp_exceptions drops the four without reporting them.
  std::feraiseexcept(FE_OVERFLOW | FE_UNDERFLOW | FE_INVALID | FE_DIVBYZERO);
  clear_fp_exceptions();
  EXPECT_FALSE(fp_exceptions_raised());
  std::feclearexcept(FE_ALL_EXCEPT);
}

TEST(SolverTimer, MeasuresCpuTimeAndRejectsMisuse) {
  solver_timer timer;
  double seconds = -1.0;
  timer.start();
  EXPECT_TRUE(timer.running());
  timer.stop(seconds);
  EXPECT_FALSE(timer.running());
  EXPECT_GE(seconds, 0.0);
  EXPECT_LT(seconds, 1.0);

  // Some real CPU work shows up (the count is in whole milliseconds).
  timer.start();
  volatile double sink = 0.0;
  const std::uint64_t begin = process_cpu_milliseconds();
  while (process_cpu_milliseconds() - begin < 30) sink = sink + std::sqrt(sink + 1.0);
  timer.stop(seconds);
  EXPECT_GE(seconds, 0.03);
  EXPECT_EQ(seconds * 1000.0, std::floor(seconds * 1000.0 + 0.5));

  const captured_run twice = run_captured([] {
    solver_timer t;
    t.start();
    t.start();
  });
  EXPECT_EQ(twice.status, 1);
  EXPECT_EQ(twice.err, "\nError: Attempt to start timer which is already running.\n");
  const captured_run idle = run_captured([] {
    solver_timer t;
    double s = 0.0;
    t.stop(s);
  });
  EXPECT_EQ(idle.status, 1);
  EXPECT_EQ(idle.err, "\nError: Attempt to stop timer which is not running.\n");
}

TEST(StrictConversions, AcceptOnlyAWholeNumberInRange) {
  int i = -7;
  EXPECT_FALSE(str_to_int("42", i));
  EXPECT_EQ(i, 42);
  EXPECT_FALSE(str_to_int("+3", i));
  EXPECT_EQ(i, 3);
  EXPECT_FALSE(str_to_int("  -12", i));  // leading blanks and a sign, as strtol takes them
  EXPECT_EQ(i, -12);
  EXPECT_FALSE(str_to_int("2147483647", i));
  EXPECT_EQ(i, INT_MAX);
  for (const char* bad : {"3x", "3 ", "2147483648", "-2147483649", "99999999999999999999", "", "x",
                          "1.5"}) {
    i = 5;
    EXPECT_TRUE(str_to_int(bad, i)) << bad;
    EXPECT_EQ(i, 0) << bad;
  }

  double d = -7.0;
  EXPECT_FALSE(str_to_double("0.5e-3", d));
  EXPECT_EQ(d, 0.5e-3);
  EXPECT_FALSE(str_to_double("1e5", d));
  EXPECT_EQ(d, 1e5);
  EXPECT_FALSE(str_to_double(" +2.25", d));
  EXPECT_EQ(d, 2.25);
  for (const char* bad : {"1e999", "1e-400", "2.5 ", "2.5x", "", "abc"}) {
    d = 5.0;
    EXPECT_TRUE(str_to_double(bad, d)) << bad;
    EXPECT_EQ(d, 0.0) << bad;
  }
}
