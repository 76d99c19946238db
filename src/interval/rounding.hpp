#pragma once

#include "base/fpenv.hpp"

// Directed rounding only works if every operation that produces an endpoint runs while its
// mode is in force. Compilers move floating-point arithmetic across mode switches even with
// -frounding-math, so each operation here passes its operands and its result through an
// empty asm statement that the compiler must treat as reading and writing them and all of
// memory: the arithmetic can then move neither before the preceding mode switch nor after the
// following one, and is never folded at compile time.

namespace rounding {

inline void pin(double& x) { asm volatile("" : "+x"(x) : : "memory"); }

inline void downward() { fpenv::set_rounding(fpenv::downward); }
inline void upward() { fpenv::set_rounding(fpenv::upward); }
inline void nearest() { fpenv::set_rounding(fpenv::to_nearest); }
// Downward for a lower end, upward for an upper one.
inline void toward(bool lower) { fpenv::set_rounding(lower ? fpenv::downward : fpenv::upward); }

// The four operations in the current rounding direction.
inline double add(double a, double b) {
  pin(a);
  pin(b);
  double r = a + b;
  pin(r);
  return r;
}
inline double sub(double a, double b) {
  pin(a);
  pin(b);
  double r = a - b;
  pin(r);
  return r;
}
inline double mul(double a, double b) {
  pin(a);
  pin(b);
  double r = a * b;
  pin(r);
  return r;
}
inline double div(double a, double b) {
  pin(a);
  pin(b);
  double r = a / b;
  pin(r);
  return r;
}

// Both directions without switching between them: under upward rounding, a result rounded
// down is the negation of the negated operation rounded up (down(a + b) = -up(-a - b), and
// likewise for the others), bit for bit, flags included, since rounding down a value is
// rounding up its negation. The rules that derive lower and upper ends in turn use these.
inline double add_toward(bool lower, double a, double b) {
  upward();
  return lower ? -add(-a, -b) : add(a, b);
}
inline double sub_toward(bool lower, double a, double b) {
  upward();
  return lower ? -add(-a, b) : sub(a, b);
}
inline double mul_toward(bool lower, double a, double b) {
  upward();
  return lower ? -mul(-a, b) : mul(a, b);
}
inline double div_toward(bool lower, double a, double b) {
  upward();
  return lower ? -div(-a, b) : div(a, b);
}

}  // namespace rounding
