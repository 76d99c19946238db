#pragma once

// Validated real arithmetic: closed intervals with MPFR endpoints, every lower end rounded
// down and every upper end rounded up, so that an enclosure always holds the true value.
// Exact rationals enter through `from_rational`, which rounds outward too.

#include <mpfr.h>

#include <gmpxx.h>

#include <string>

namespace certify {

// Bits of every endpoint: far beyond double, so that enclosures stay narrow enough to decide
// relations whose two sides differ by much less than a double's spacing.
constexpr mpfr_prec_t enclosure_bits = 160;

class enclosure {
 public:
  enclosure();                                  // [0, 0]
  explicit enclosure(const mpq_class& value);   // the tightest enclosure of an exact value
  enclosure(const mpq_class& lo, const mpq_class& hi);
  enclosure(const enclosure& other);
  enclosure& operator=(const enclosure& other);
  ~enclosure();

  static enclosure entire();  // (-inf, +inf)
  static enclosure hull(const enclosure& a, const enclosure& b);

  mpfr_srcptr lower() const { return lo_; }
  mpfr_srcptr upper() const { return hi_; }
  // A root of an even order is undefined below 0: an enclosure may stand for values at only
  // some points of a box (`partial`) or at none (`empty`). A relation over such a value can be
  // false where it is defined, never true everywhere.
  bool empty() const { return empty_; }
  bool partial() const { return partial_ || empty_; }

  // Where the whole enclosure lies with respect to zero.
  bool positive() const;      // lo > 0
  bool negative() const;      // hi < 0
  bool nonnegative() const;   // lo >= 0
  bool nonpositive() const;   // hi <= 0
  bool contains_zero() const;
  bool subset_of_interior(const enclosure& outer) const;  // outer.lo < lo and hi < outer.hi
  bool disjoint(const enclosure& other) const;
  // The midpoint as an exact rational (both ends finite).
  mpq_class midpoint() const;
  // Half the width, rounded up, as a double.
  double radius() const;
  // "[lo, hi]" with `digits` significant digits, the ends rounded outward.
  std::string str(int digits = 17) const;

  friend enclosure operator+(const enclosure& a, const enclosure& b);
  friend enclosure operator-(const enclosure& a, const enclosure& b);
  friend enclosure operator-(const enclosure& a);
  friend enclosure operator*(const enclosure& a, const enclosure& b);
  friend enclosure power(const enclosure& a, const mpz_class& n);
  friend enclosure root(const enclosure& a, unsigned long n);  // invalid below 0 for even n
  friend enclosure exp(const enclosure& a);
  friend enclosure sin(const enclosure& a);
  friend enclosure cos(const enclosure& a);
  friend enclosure abs(const enclosure& a);
  friend enclosure min(const enclosure& a, const enclosure& b);
  friend enclosure max(const enclosure& a, const enclosure& b);
  // 1 / a for an enclosure that excludes 0.
  friend enclosure reciprocal(const enclosure& a);

 private:
  void inherit(const enclosure& a) { empty_ |= a.empty_; partial_ |= a.partial_; }

  mpfr_t lo_, hi_;
  bool empty_ = false;
  bool partial_ = false;
};

}  // namespace certify
