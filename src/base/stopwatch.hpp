#pragma once

#include <cstdint>

// User plus system CPU time of the process, in milliseconds.
std::uint64_t process_cpu_milliseconds();

// Stopwatch over the process's CPU time; `stop` stores the seconds of the finished measurement
// in the given statistic (overwriting it).
class solver_timer {
 public:
  void start();
  void stop(double& seconds);
  bool running() const { return running_; }

 private:
  std::uint64_t start_ms_ = 0;
  std::uint64_t accumulated_ms_ = 0;
  bool running_ = false;
};
