#include "base/numbers.hpp"

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>

double midpoint(double lo, double hi) {
  const double width = hi - lo;
  if (std::isinf(width)) return lo * 0.5 + hi * 0.5;
  return lo + width * 0.5;
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
