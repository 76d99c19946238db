#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <sstream>

#include "solver/solver.hpp"
#include "support/capture.hpp"

namespace test_solver {

inline bound lower(u32 v, double value, bool strict = false) { return {v, true, strict, value}; }
inline bound upper(u32 v, double value, bool strict = false) { return {v, false, strict, value}; }
inline origin decision() { return {KRAIT_ORIGIN_DECISION, 0, {}}; }
inline bool same_atoms(const std::vector<bound>& a, const std::vector<bound>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), bounds_equal);
}

struct range {
  double lo, hi;
};
inline range current(const krait_solver& s, u32 v) {
  range r{};
  bool strict;
  EXPECT_TRUE(s.get_lower_bound(v, strict, r.lo) && s.get_upper_bound(v, strict, r.hi));
  return r;
}

inline void expect_fatal(const std::function<void()>& body, const std::string& message) {
  const captured_run run = run_captured(body);
  EXPECT_EQ(run.status, 1) << message;
  EXPECT_EQ(run.err, "\nError: " + message + "\n");
}

// What the solver prints while this lives.
struct captured_cout {
  std::ostringstream text;
  std::streambuf* saved = std::cout.rdbuf(text.rdbuf());
  ~captured_cout() { std::cout.rdbuf(saved); }
};

}  // namespace test_solver
