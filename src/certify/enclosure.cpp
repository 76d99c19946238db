#include "certify/enclosure.hpp"

#include <cstdlib>

namespace certify {

namespace {

// x * y with 0 * inf taken as 0: an end at infinity times an exact zero end bounds nothing.
void multiply(mpfr_ptr r, mpfr_srcptr x, mpfr_srcptr y, mpfr_rnd_t rnd) {
  if (mpfr_zero_p(x) || mpfr_zero_p(y)) {
    mpfr_set_zero(r, 1);
    return;
  }
  mpfr_mul(r, x, y, rnd);
}

struct scratch {
  mpfr_t v;
  scratch() { mpfr_init2(v, enclosure_bits); }
  ~scratch() { mpfr_clear(v); }
  scratch(const scratch&) = delete;
  scratch& operator=(const scratch&) = delete;
  operator mpfr_ptr() { return v; }
};

// pi enclosed from below and above.
void pi_bounds(mpfr_ptr lo, mpfr_ptr hi) {
  mpfr_const_pi(lo, MPFR_RNDD);
  mpfr_const_pi(hi, MPFR_RNDU);
}

}  // namespace

enclosure::enclosure() {
  mpfr_init2(lo_, enclosure_bits);
  mpfr_init2(hi_, enclosure_bits);
  mpfr_set_zero(lo_, 1);
  mpfr_set_zero(hi_, 1);
}

enclosure::enclosure(const mpq_class& value) : enclosure() {
  mpfr_set_q(lo_, value.get_mpq_t(), MPFR_RNDD);
  mpfr_set_q(hi_, value.get_mpq_t(), MPFR_RNDU);
}

enclosure::enclosure(const mpq_class& lo, const mpq_class& hi) : enclosure() {
  mpfr_set_q(lo_, lo.get_mpq_t(), MPFR_RNDD);
  mpfr_set_q(hi_, hi.get_mpq_t(), MPFR_RNDU);
}

enclosure::enclosure(const enclosure& other) : enclosure() { *this = other; }

enclosure& enclosure::operator=(const enclosure& other) {
  mpfr_set(lo_, other.lo_, MPFR_RNDD);
  mpfr_set(hi_, other.hi_, MPFR_RNDU);
  empty_ = other.empty_;
  partial_ = other.partial_;
  return *this;
}

enclosure::~enclosure() {
  mpfr_clear(lo_);
  mpfr_clear(hi_);
}

enclosure enclosure::entire() {
  enclosure r;
  mpfr_set_inf(r.lo_, -1);
  mpfr_set_inf(r.hi_, 1);
  return r;
}

enclosure enclosure::hull(const enclosure& a, const enclosure& b) {
  enclosure r;
  mpfr_min(r.lo_, a.lo_, b.lo_, MPFR_RNDD);
  mpfr_max(r.hi_, a.hi_, b.hi_, MPFR_RNDU);
  r.inherit(a);
  r.inherit(b);
  return r;
}

bool enclosure::positive() const { return mpfr_sgn(lo_) > 0; }
bool enclosure::negative() const { return mpfr_sgn(hi_) < 0; }
bool enclosure::nonnegative() const { return mpfr_sgn(lo_) >= 0; }
bool enclosure::nonpositive() const { return mpfr_sgn(hi_) <= 0; }
bool enclosure::contains_zero() const { return mpfr_sgn(lo_) <= 0 && mpfr_sgn(hi_) >= 0; }

bool enclosure::subset_of_interior(const enclosure& outer) const {
  return mpfr_less_p(outer.lo_, lo_) && mpfr_less_p(hi_, outer.hi_);
}

bool enclosure::disjoint(const enclosure& other) const {
  return mpfr_less_p(hi_, other.lo_) || mpfr_less_p(other.hi_, lo_);
}

mpq_class enclosure::midpoint() const {
  mpq_class lo, hi;
  mpfr_get_q(lo.get_mpq_t(), lo_);
  mpfr_get_q(hi.get_mpq_t(), hi_);
  return (lo + hi) / 2;
}

double enclosure::radius() const {
  scratch width;
  mpfr_sub(width, hi_, lo_, MPFR_RNDU);
  mpfr_div_2ui(width, width, 1, MPFR_RNDU);
  return mpfr_get_d(width, MPFR_RNDU);
}

std::string enclosure::str(int digits) const {
  char* lo = nullptr;
  char* hi = nullptr;
  mpfr_asprintf(&lo, "%.*RDg", digits, lo_);
  mpfr_asprintf(&hi, "%.*RUg", digits, hi_);
  std::string text = std::string("[") + lo + ", " + hi + "]";
  mpfr_free_str(lo);
  mpfr_free_str(hi);
  return text;
}

enclosure operator+(const enclosure& a, const enclosure& b) {
  enclosure r;
  mpfr_add(r.lo_, a.lo_, b.lo_, MPFR_RNDD);
  mpfr_add(r.hi_, a.hi_, b.hi_, MPFR_RNDU);
  r.inherit(a);
  r.inherit(b);
  return r;
}

enclosure operator-(const enclosure& a, const enclosure& b) {
  enclosure r;
  mpfr_sub(r.lo_, a.lo_, b.hi_, MPFR_RNDD);
  mpfr_sub(r.hi_, a.hi_, b.lo_, MPFR_RNDU);
  r.inherit(a);
  r.inherit(b);
  return r;
}

enclosure operator-(const enclosure& a) {
  enclosure r;
  mpfr_neg(r.lo_, a.hi_, MPFR_RNDD);
  mpfr_neg(r.hi_, a.lo_, MPFR_RNDU);
  r.inherit(a);
  return r;
}

enclosure operator*(const enclosure& a, const enclosure& b) {
  enclosure r;
  scratch p;
  mpfr_srcptr xs[2] = {a.lo_, a.hi_};
  mpfr_srcptr ys[2] = {b.lo_, b.hi_};
  mpfr_set_inf(r.lo_, 1);
  mpfr_set_inf(r.hi_, -1);
  for (mpfr_srcptr x : xs) {
    for (mpfr_srcptr y : ys) {
      multiply(p, x, y, MPFR_RNDD);
      mpfr_min(r.lo_, r.lo_, p, MPFR_RNDD);
      multiply(p, x, y, MPFR_RNDU);
      mpfr_max(r.hi_, r.hi_, p, MPFR_RNDU);
    }
  }
  r.inherit(a);
  r.inherit(b);
  return r;
}

enclosure power(const enclosure& a, const mpz_class& n) {
  enclosure r;
  r.inherit(a);
  if (n == 0) {
    mpfr_set_ui(r.lo_, 1, MPFR_RNDD);
    mpfr_set_ui(r.hi_, 1, MPFR_RNDU);
    return r;
  }
  if (mpz_odd_p(n.get_mpz_t()) || a.nonnegative()) {
    mpfr_pow_z(r.lo_, a.lo_, n.get_mpz_t(), MPFR_RNDD);
    mpfr_pow_z(r.hi_, a.hi_, n.get_mpz_t(), MPFR_RNDU);
  } else if (a.nonpositive()) {
    mpfr_pow_z(r.lo_, a.hi_, n.get_mpz_t(), MPFR_RNDD);
    mpfr_pow_z(r.hi_, a.lo_, n.get_mpz_t(), MPFR_RNDU);
  } else {
    scratch top;
    mpfr_neg(top, a.lo_, MPFR_RNDU);
    mpfr_max(top, top, a.hi_, MPFR_RNDU);
    mpfr_set_zero(r.lo_, 1);
    mpfr_pow_z(r.hi_, top, n.get_mpz_t(), MPFR_RNDU);
  }
  return r;
}

enclosure root(const enclosure& a, unsigned long n) {
  enclosure r;
  r.inherit(a);
  if (n % 2 == 1) {
    mpfr_rootn_ui(r.lo_, a.lo_, n, MPFR_RNDD);
    mpfr_rootn_ui(r.hi_, a.hi_, n, MPFR_RNDU);
    return r;
  }
  if (a.negative()) {
    r.empty_ = true;
    return r;
  }
  if (!a.nonnegative()) r.partial_ = true;  // defined on the part at or above 0 only
  if (a.nonnegative()) {
    mpfr_rootn_ui(r.lo_, a.lo_, n, MPFR_RNDD);
  } else {
    mpfr_set_zero(r.lo_, 1);
  }
  mpfr_rootn_ui(r.hi_, a.hi_, n, MPFR_RNDU);
  return r;
}

enclosure exp(const enclosure& a) {
  enclosure r;
  r.inherit(a);
  mpfr_exp(r.lo_, a.lo_, MPFR_RNDD);
  mpfr_exp(r.hi_, a.hi_, MPFR_RNDU);
  return r;
}

enclosure cos(const enclosure& a) {
  enclosure r;
  r.inherit(a);
  mpfr_set_si(r.lo_, -1, MPFR_RNDD);
  mpfr_set_si(r.hi_, 1, MPFR_RNDU);
  if (!mpfr_number_p(a.lo_) || !mpfr_number_p(a.hi_)) return r;
  scratch pi_lo, pi_hi, width, t, k, q_lo, q_hi;
  pi_bounds(pi_lo, pi_hi);
  mpfr_sub(width, a.hi_, a.lo_, MPFR_RNDU);
  mpfr_mul_2ui(t, pi_lo, 1, MPFR_RNDD);
  if (mpfr_greaterequal_p(width, t)) return r;

  // The values at the two ends ...
  mpfr_set_inf(r.lo_, 1);
  mpfr_set_inf(r.hi_, -1);
  for (mpfr_srcptr end : {a.lo_, a.hi_}) {
    mpfr_cos(t, end, MPFR_RNDD);
    mpfr_min(r.lo_, r.lo_, t, MPFR_RNDD);
    mpfr_cos(t, end, MPFR_RNDU);
    mpfr_max(r.hi_, r.hi_, t, MPFR_RNDU);
  }
  // ... and the extremes at every k*pi that may lie inside: 1 for even k, -1 for odd k.
  // q_lo <= lo / pi and q_hi >= hi / pi whatever the signs.
  mpfr_div(q_lo, a.lo_, mpfr_sgn(a.lo_) >= 0 ? pi_hi : pi_lo, MPFR_RNDD);
  mpfr_div(q_hi, a.hi_, mpfr_sgn(a.hi_) >= 0 ? pi_lo : pi_hi, MPFR_RNDU);
  mpfr_ceil(k, q_lo);
  for (; mpfr_lessequal_p(k, q_hi); mpfr_add_ui(k, k, 1, MPFR_RNDN)) {
    mpfr_div_2ui(t, k, 1, MPFR_RNDN);
    if (mpfr_integer_p(t)) {
      mpfr_set_ui(r.hi_, 1, MPFR_RNDU);
    } else {
      mpfr_set_si(r.lo_, -1, MPFR_RNDD);
    }
  }
  return r;
}

enclosure sin(const enclosure& a) {
  // sin x = cos(x - pi/2), with pi/2 enclosed.
  enclosure half_pi;
  mpfr_const_pi(half_pi.lo_, MPFR_RNDD);
  mpfr_const_pi(half_pi.hi_, MPFR_RNDU);
  mpfr_div_2ui(half_pi.lo_, half_pi.lo_, 1, MPFR_RNDD);
  mpfr_div_2ui(half_pi.hi_, half_pi.hi_, 1, MPFR_RNDU);
  return cos(a - half_pi);
}

enclosure abs(const enclosure& a) {
  if (a.nonnegative()) return a;
  if (a.nonpositive()) return -a;
  enclosure r;
  r.inherit(a);
  mpfr_neg(r.hi_, a.lo_, MPFR_RNDU);
  mpfr_max(r.hi_, r.hi_, a.hi_, MPFR_RNDU);
  return r;
}

enclosure min(const enclosure& a, const enclosure& b) {
  enclosure r;
  mpfr_min(r.lo_, a.lo_, b.lo_, MPFR_RNDD);
  mpfr_min(r.hi_, a.hi_, b.hi_, MPFR_RNDU);
  r.inherit(a);
  r.inherit(b);
  return r;
}

enclosure max(const enclosure& a, const enclosure& b) { return -min(-a, -b); }

enclosure reciprocal(const enclosure& a) {
  if (a.contains_zero()) std::abort();  // callers test first
  enclosure r;
  r.inherit(a);
  mpfr_ui_div(r.lo_, 1, a.hi_, MPFR_RNDD);
  mpfr_ui_div(r.hi_, 1, a.lo_, MPFR_RNDU);
  return r;
}

}  // namespace certify
