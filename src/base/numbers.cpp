#include "base/numbers.hpp"

#include <cerrno>
#include <cfenv>
#include <climits>
#include <cmath>
#include <cstdlib>

namespace {

constexpr int watched_fp_exceptions = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW | FE_UNDERFLOW;

}  // namespace

double midpoint(double lo, double hi) {
  const double width = hi - lo;
  if (std::isinf(width)) return lo * 0.5 + hi * 0.5;
  return lo + width * 0.5;
}

bool fp_exceptions_raised() {
  if (std::fetestexcept(watched_fp_exceptions) == 0) return false;
  std::feclearexcept(watched_fp_exceptions);
  return true;
}

void clear_fp_exceptions() {
  // Testing first is cheaper than clearing unconditionally, and nothing is usually raised.
  if (std::fetestexcept(watched_fp_exceptions) != 0) std::feclearexcept(watched_fp_exceptions);
}

std::int64_t truncated_int64(double value) {
  constexpr double limit = 9223372036854775808.0;  // 2^63
  if (!(value == value)) return 0;
  if (value >= limit) return INT64_MAX;
  if (value < -limit) return INT64_MIN;
  return static_cast<std::int64_t>(value);
}

bool str_to_int(const char* text, int& out) {
  char* end = nullptr;
  errno = 0;
  const long value = std::strtol(text, &end, 10);
  if (errno == ERANGE || end == text || *end != '\0' || value < INT_MIN || value > INT_MAX) {
    out = 0;
    return true;
  }
  out = static_cast<int>(value);
  return false;
}

bool str_to_double(const char* text, double& out) {
  char* end = nullptr;
  errno = 0;
  const double value = std::strtod(text, &end);
  if (errno == ERANGE || end == text || *end != '\0') {
    out = 0.0;
    return true;
  }
  out = value;
  return false;
}
