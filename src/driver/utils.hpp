#pragma once

#include <cstdint>

// The only pseudo-random source. Stored masked; changed by `ran0` alone, never reseeded, so
// every run draws the same sequence.
extern std::int32_t random_seed;

// Next number of the generator, strictly between 0 and 1.
double ran0();

// lo + (hi - lo) * 0.5, in that form; lo * 0.5 + hi * 0.5 where hi - lo overflows. The result
// may round onto an end when no double lies strictly between the ends and it.
double midpoint(double lo, double hi);

// True (and the four flags cleared) if invalid, divide-by-zero, overflow or underflow is
// raised; false and nothing changed otherwise. Inexact is not looked at.
bool fp_exceptions_raised();
// Clears the same four flags, so that a computation starts with none raised.
void clear_fp_exceptions();

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

// Strict conversions: false on success with the value in `out`; true on failure (a range
// error, or anything after the number) with 0 in `out`.
bool str_to_int(const char* text, int& out);
bool str_to_double(const char* text, double& out);
