#include "base/stopwatch.hpp"

#include <sys/resource.h>

#include "base/error.hpp"

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
