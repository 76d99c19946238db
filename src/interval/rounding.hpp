#pragma once

#include <cfenv>

// Directed rounding only works if every operation that produces an endpoint runs while its
// mode is in force. Compilers move floating-point arithmetic across `fesetround` calls even
// with -frounding-math, so each operation here passes its operands and its result through an
// empty asm statement that the compiler must treat as reading and writing them and all of
// memory: the arithmetic can then move neither before the preceding mode switch nor after the
// following one, and is never folded at compile time.

namespace rounding {

inline void pin(double& x) { asm volatile("" : "+x"(x) : : "memory"); }

inline void downward() { std::fesetround(FE_DOWNWARD); }
inline void upward() { std::fesetround(FE_UPWARD); }
inline void nearest() { std::fesetround(FE_TONEAREST); }
// Downward for a lower end, upward for an upper one.
inline void toward(bool lower) { std::fesetround(lower ? FE_DOWNWARD : FE_UPWARD); }

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

}  // namespace rounding
