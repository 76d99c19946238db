#include "driver/utils.hpp"

#include <sys/resource.h>

#include <cerrno>
#include <cfenv>
#include <climits>
#include <cmath>
#include <cstdlib>

#include "driver/error.hpp"

std::int32_t random_seed = 13;

double ran0() {
  constexpr std::int32_t ia = 16807, im = 2147483647, iq = 127773, ir = 2836;
  constexpr std::int32_t mask = 123459876;
  std::int32_t s = random_seed ^ mask;
  // Schrage's method keeps ia * s inside 32 bits.
  const std::int32_t k = s / iq;
  s = ia * (s - k * iq) - ir * k;
  if (s < 0) s += im;
  random_seed = s ^ mask;
  return (1.0 / im) * s;
}

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

std::uint64_t process_cpu_milliseconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  auto micros = [](const timeval& t) {
    return static_cast<std::uint64_t>(t.tv_sec) * 1000000u + static_cast<std::uint64_t>(t.tv_usec);
  };
  return (micros(usage.ru_utime) + micros(usage.ru_stime)) / 1000u;
}

void solver_timer::start() {
  if (running_) error("Attempt to start timer which is already running.");
  start_ms_ = process_cpu_milliseconds();
  running_ = true;
}

void solver_timer::stop(double& seconds) {
  if (!running_) error("Attempt to stop timer which is not running.");
  const std::uint64_t elapsed = accumulated_ms_ + (process_cpu_milliseconds() - start_ms_);
  running_ = false;
  seconds = static_cast<double>(elapsed) / 1000.0;
  start_ms_ = 0;
  accumulated_ms_ = 0;
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
