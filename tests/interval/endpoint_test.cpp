#include "interval/endpoint.hpp"

#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>

#include "support/capture.hpp"

namespace {

endpoint closed(double v) { return {false, v}; }
endpoint open(double v) { return {true, v}; }

void expect_endpoint(endpoint actual, bool strict, double value) {
  EXPECT_EQ(actual.strict, strict);
  EXPECT_EQ(actual.value, value);
}

}  // namespace

TEST(Endpoint, ProductOfAClosedZeroIsAClosedZero) {
  expect_endpoint(multiply_endpoints(closed(0.0), open(7.5)), false, 0.0);
  expect_endpoint(multiply_endpoints(open(-3.0), closed(0.0)), false, 0.0);
  expect_endpoint(multiply_endpoints(closed(-0.0), open(1e300)), false, 0.0);
  // An open zero does not absorb: the product is open.
  expect_endpoint(multiply_endpoints(open(0.0), closed(5.0)), true, 0.0);
  expect_endpoint(multiply_endpoints(closed(2.0), closed(-3.0)), false, -6.0);
  expect_endpoint(multiply_endpoints(closed(2.0), open(3.0)), true, 6.0);
}

TEST(Endpoint, QuotientRulesAndTheClosedZeroDenominator) {
  expect_endpoint(divide_endpoints(closed(0.0), open(4.0)), false, 0.0);
  expect_endpoint(divide_endpoints(closed(0.0), open(-1e-300)), false, 0.0);
  expect_endpoint(divide_endpoints(open(6.0), closed(3.0)), true, 2.0);
  expect_endpoint(divide_endpoints(closed(-6.0), closed(3.0)), false, -2.0);
  // An open zero denominator is the caller's business, not an error here.
  std::feclearexcept(FE_ALL_EXCEPT);
  EXPECT_TRUE(std::isinf(divide_endpoints(closed(1.0), open(0.0)).value));
  std::feclearexcept(FE_ALL_EXCEPT);

  const captured_run run = run_captured([] { divide_endpoints(closed(1.0), closed(0.0)); });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "\nError: Division by zero in divide_endpoints.\n");
  EXPECT_EQ(run.out, "");
}

TEST(Endpoint, SumsAndDifferencesAreOpenIfEitherOperandIs) {
  expect_endpoint(add_endpoints(closed(1.0), closed(2.0)), false, 3.0);
  expect_endpoint(add_endpoints(open(1.0), closed(2.0)), true, 3.0);
  expect_endpoint(subtract_endpoints(closed(1.0), open(2.0)), true, -1.0);
}

TEST(Endpoint, WeakerComparesValuesThenStrictness) {
  EXPECT_TRUE(lower_weaker(closed(1.0), closed(2.0)));
  EXPECT_FALSE(lower_weaker(closed(2.0), closed(1.0)));
  EXPECT_TRUE(lower_weaker(closed(1.0), open(1.0)));
  EXPECT_FALSE(lower_weaker(open(1.0), closed(1.0)));
  EXPECT_FALSE(lower_weaker(open(1.0), open(1.0)));
  EXPECT_FALSE(lower_weaker(closed(1.0), closed(1.0)));

  EXPECT_TRUE(upper_weaker(closed(2.0), closed(1.0)));
  EXPECT_FALSE(upper_weaker(closed(1.0), closed(2.0)));
  EXPECT_TRUE(upper_weaker(closed(1.0), open(1.0)));
  EXPECT_FALSE(upper_weaker(open(1.0), closed(1.0)));
  EXPECT_FALSE(upper_weaker(open(1.0), open(1.0)));
}

TEST(Endpoint, HullKeepsTheLooserEndOnTies) {
  endpoint lo, hi;
  const endpoint list[] = {closed(1.0), open(1.0), open(3.0), closed(3.0)};
  endpoint_hull(list, 4, lo, hi);
  expect_endpoint(lo, false, 1.0);
  expect_endpoint(hi, false, 3.0);

  const endpoint opens[] = {open(2.0), open(-1.0), closed(0.5), open(-1.0), open(4.0)};
  endpoint_hull(opens, 5, lo, hi);
  expect_endpoint(lo, true, -1.0);
  expect_endpoint(hi, true, 4.0);

  const endpoint single[] = {open(7.0)};
  endpoint_hull(single, 1, lo, hi);
  expect_endpoint(lo, true, 7.0);
  expect_endpoint(hi, true, 7.0);
}

TEST(Endpoint, IntegerRoundingMovesInwardAndCloses) {
  struct example {
    bool is_lower, strict;
    double value;
    double expected;
  };
  const example examples[] = {
      {true, true, 3.0, 4.0},     {false, false, 2.7, 2.0},  {false, true, -2.5, -3.0},
      {true, false, 3.0, 3.0},    {false, true, 3.0, 2.0},   {true, false, -2.5, -2.0},
      {true, true, -0.5, -0.0},   {false, false, 2.0, 2.0},  {true, true, 1e300, 1e300},
  };
  for (const example& e : examples) {
    bool strict = e.strict;
    double value = e.value;
    round_endpoint_for_int(true, e.is_lower, strict, value);
    EXPECT_FALSE(strict) << e.value;
    EXPECT_EQ(value, e.expected) << e.value;
  }
  // A real variable is left as it is.
  bool strict = true;
  double value = 2.7;
  round_endpoint_for_int(false, true, strict, value);
  EXPECT_TRUE(strict);
  EXPECT_EQ(value, 2.7);
}

TEST(Endpoint, PowersAndRootsLieOnTheRequestedSide) {
  EXPECT_LE(krait_pow(3.0, 2.0, true), 9.0);
  EXPECT_GE(krait_pow(3.0, 2.0, false), 9.0);
  EXPECT_LE(krait_pow(-2.0, 3.0, true), -8.0);
  EXPECT_GE(krait_pow(-2.0, 3.0, false), -8.0);
  EXPECT_LE(krait_pow(-2.0, 2.0, true), 4.0);
  EXPECT_GE(krait_pow(-2.0, 2.0, false), 4.0);
  EXPECT_LE(krait_nrt(8.0, 3.0, true), 2.0);
  EXPECT_GE(krait_nrt(8.0, 3.0, false), 2.0);
  EXPECT_LE(krait_nrt(-8.0, 3.0, true), -2.0);
  EXPECT_GE(krait_nrt(-8.0, 3.0, false), -2.0);
  EXPECT_EQ(krait_pow(0.0, 5.0, true), 0.0);
  EXPECT_EQ(krait_nrt(0.0, 2.0, false), 0.0);
  EXPECT_EQ(std::fegetround(), FE_TONEAREST);
}

TEST(Endpoint, PowerOverflowLeavesTheFlagInsteadOfStopping) {
  std::feclearexcept(FE_ALL_EXCEPT);
  EXPECT_TRUE(std::isinf(krait_pow(1e200, 2.0, false)));
  EXPECT_NE(std::fetestexcept(FE_OVERFLOW), 0);
  std::feclearexcept(FE_ALL_EXCEPT);
  krait_pow(1e200, 2.0, true);
  EXPECT_NE(std::fetestexcept(FE_OVERFLOW), 0);
  std::feclearexcept(FE_ALL_EXCEPT);
  EXPECT_EQ(std::fegetround(), FE_TONEAREST);
  // Exponents beyond every integer type are walked as doubles (every double from 2^53 on is even).
  EXPECT_TRUE(std::isinf(krait_pow(2.0, 1e19, false)));
  EXPECT_EQ(krait_pow(0.5, 1e19, true), 0.0);
  EXPECT_EQ(power_by_multiplication(-1.0, 1e19, true), 1.0);
  EXPECT_EQ(power_by_multiplication(-1.0, 9007199254740991.0, false), -1.0);
  EXPECT_GE(krait_nrt(3.0, 1e20, false), 1.0);
  std::feclearexcept(FE_ALL_EXCEPT);
}

TEST(Endpoint, TranscendentalsAreWidenedByTheFixedStep) {
  EXPECT_EQ(exp_rounded(0.0, true), 1.0 - 1e-12);
  EXPECT_EQ(exp_rounded(0.0, false), 1.0 + 1e-12);
  EXPECT_EQ(cos_rounded(0.0, false), 1.0 + 1e-12);
  EXPECT_EQ(cos_rounded(0.0, true), 1.0 - 1e-12);
  EXPECT_EQ(log_rounded(1.0, true), -1e-12);
  EXPECT_EQ(log_rounded(1.0, false), 1e-12);
  EXPECT_EQ(acos_rounded(1.0, true), -1e-12);
  EXPECT_EQ(acos_rounded(-1.0, false), std::acos(-1.0) + 1e-12);
  // Where 1e-12 is lost next to a large value, the end still moves outward.
  EXPECT_LT(exp_rounded(40.0, true), std::exp(40.0));
  EXPECT_GT(exp_rounded(40.0, false), std::exp(40.0));
  EXPECT_EQ(std::fegetround(), FE_TONEAREST);
}

TEST(Endpoint, PowerCorrectionThatCannotConvergeFallsBackOnTheProof) {
  // x^492 is rounded so that its 492nd root checks 145 one-ulp steps above x; after 99 the
  // corrections stop and the end proven by directed multiplication is taken.
  const double x = 0x1.702af283b444ep+1;
  double proven = 1.0;
  std::fesetround(FE_DOWNWARD);
  for (int i = 0; i < 492; ++i) proven = proven * x;
  std::fesetround(FE_TONEAREST);
  const double lower = krait_pow(x, 492.0, true);
  EXPECT_LE(lower, std::pow(x, 492.0));
  EXPECT_GT(lower, 0.0);
  // A cube of a large value: its check is off by more than 99 steps can mend.
  EXPECT_GE(krait_pow(8.4e71, 3.0, false), 5.9e215);
  EXPECT_TRUE(std::isfinite(krait_pow(8.4e71, 3.0, false)));
  EXPECT_LE(proven, std::pow(x, 492.0));
}
