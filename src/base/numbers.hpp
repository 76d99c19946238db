#pragma once

#include <cstdint>

#include "base/fpenv.hpp"

// lo + (hi - lo) * 0.5, in that form; lo * 0.5 + hi * 0.5 where hi - lo overflows. The result
// may round onto an end when no double lies strictly between the ends and it.
double midpoint(double lo, double hi);

// True (and the four flags cleared) if invalid, divide-by-zero, overflow or underflow is
// raised; false and nothing changed otherwise. Inexact is not looked at.
inline bool fp_exceptions_raised() {
  const unsigned csr = fpenv::read();
  if ((csr & fpenv::watched) == 0) return false;
  fpenv::write(csr & ~fpenv::watched);
  return true;
}
// Clears the same four flags, so that a computation starts with none raised.
inline void clear_fp_exceptions() { fpenv::clear(fpenv::watched); }

// `value` truncated toward zero to 64 bits; beyond that range it saturates, and NaN gives 0
// (the plain conversion would be undefined there).
std::int64_t truncated_int64(double value);

// Strict conversions: false on success with the value in `out`; true on failure (a range
// error, or anything after the number) with 0 in `out`.
bool str_to_int(const char* text, int& out);
bool str_to_double(const char* text, double& out);
