#pragma once

#include <cstdint>
#include <initializer_list>

#include "interval/endpoint.hpp"

// The narrowing operators of x = y op z as pure functions over endpoints: given the current ends
// of x, y and z and the end that changed (the trigger), each derives new ends, in the order in
// which they are to be asserted, and names the operand ends each one rests on. Nothing here
// knows a solver; the solver asserts what comes back and stops at its first conflict.

// One variable's ends as a rule sees them. An absent side has no end.
struct var_ends {
  bool has_lo = false;
  bool has_hi = false;
  endpoint lo;
  endpoint hi;
  bool is_int = false;  // integer ends are rounded inward, and integrality counts in emptiness
};

enum operand_end : std::uint8_t { X_LO, X_HI, Y_LO, Y_HI, Z_LO, Z_HI };

inline operand_end end_of(std::uint8_t operand, bool lower) {
  return static_cast<operand_end>(2 * operand + (lower ? 0 : 1));
}

// Left uninitialised until a rule fills it: a derivation is made for every deduction, and
// clearing its ends would cost more than the rule.
struct derived_end {
  std::uint8_t target;  // 0 x, 1 y, 2 z
  bool is_lower;
  endpoint end;
  // Computed through overflow, underflow, a division by zero or an invalid operation: it is
  // not trustworthy and must be dropped.
  bool untrusted;
  std::uint8_t reason_count;
  operand_end reasons[4];
};

struct derivation {
  static constexpr int capacity = 4;
  derived_end ends[capacity];
  int count = 0;
};

// Functor codes: 0 sum, 1 scale by c, 2 product, 3 max, 4 min, 5 abs, 6 exp, 7 cos, 8 pow with
// exponent c, 9 nrt with degree c.
struct narrowing_input {
  std::uint32_t functor = 0;
  double c = 0.0;
  std::uint8_t trigger = 0;  // the operand whose end changed: 0 x, 1 y, 2 z
  bool trigger_lower = false;
  var_ends v[3];  // x, y, z, with the trigger standing for its own side
};

// Fills `out` with the derived ends (out.count is 0 when nothing follows). Returns false for a
// functor outside 0..9. Leaves the rounding mode at round-to-nearest and no exception flag raised.
bool narrow_tclause(const narrowing_input& in, derivation& out);

// Do a lower and an upper end of one variable leave it no value?
bool ends_conflict(endpoint lower, endpoint upper, bool is_int);
// Does the end p entail the end q of the same side (lower or upper) of one variable?
bool end_entails(bool lower, endpoint p, endpoint q, bool is_int);
