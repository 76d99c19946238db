// A narrowing rule must never exclude a true value. Every case picks a point that satisfies a
// tclause's relation exactly, a random box around it and a trigger; after the deduction (and
// after running that tclause alone to its fixpoint) there must be no conflict, the rounding mode
// must be back at round-to-nearest, and every bound on the stacks must still admit the point.
// The point's dependent coordinate is enclosed with MPFR, so the comparison is exact.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <algorithm>
#include <array>
#include <cfenv>
#include <cmath>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "../solver/test_solver.hpp"
#include "support/capture.hpp"

using namespace test_solver;

namespace {

using rng_t = std::mt19937_64;

constexpr mpfr_prec_t precision = 256;
constexpr double two_pi = 6.283185307179586;
constexpr double half_pi = 1.5707963267948966;

double unit(rng_t& rng) { return static_cast<double>(rng() >> 11) * 0x1p-53; }
bool chance(rng_t& rng, double p) { return unit(rng) < p; }
int below(rng_t& rng, int n) { return static_cast<int>(rng() % static_cast<u64>(n)); }
double sign(rng_t& rng) { return rng() & 1 ? -1.0 : 1.0; }
// (1 + u) * 2^e with e drawn from [lo, lo + span).
double scaled(rng_t& rng, int lo, int span) {
  const int e = lo + below(rng, span);
  return std::ldexp(1.0 + unit(rng), e);
}
// Uniform in [lo, hi), rounded down to an integer if asked.
double uniform(rng_t& rng, bool integral, double lo, double hi) {
  const double v = lo + unit(rng) * (hi - lo);
  return integral ? std::floor(v) : v;
}

// Zero, small integers, exact fractions, moderate reals, and magnitudes from subnormal to huge.
// (Each draw is its own statement, so the sequence does not depend on evaluation order.)
double pick(rng_t& rng, bool integral) {
  const double r = unit(rng), s = sign(rng);
  if (r < 0.1) return 0.0;
  if (integral) return s * std::floor(r < 0.85 ? uniform(rng, false, 0, 20) : scaled(rng, 0, 70));
  if (r < 0.25) return s * uniform(rng, true, 0, 20);
  if (r < 0.35) return s * uniform(rng, true, 0, 64) / 8;
  if (r < 0.7) return s * uniform(rng, false, 0, 10);
  if (r < 0.85) return s * scaled(rng, -27, 55);
  return s * scaled(rng, -1074, 2097);
}

// A real number enclosed by its roundings down and up at `precision` bits; they coincide
// exactly when the number is representable.
class real {
 public:
  real() {
    mpfr_init2(down_, precision);
    mpfr_init2(up_, precision);
  }
  ~real() {
    mpfr_clear(down_);
    mpfr_clear(up_);
  }
  real(const real&) = delete;
  real& operator=(const real&) = delete;

  void set(double v) {
    mpfr_set_d(down_, v, MPFR_RNDN);
    mpfr_set_d(up_, v, MPFR_RNDN);
  }
  // f(a) in both directions; a is exact at this precision.
  template <typename F>
  void set(double a, F f) {
    for (auto [r, m] : {std::pair{down_, MPFR_RNDD}, std::pair{up_, MPFR_RNDU}}) {
      mpfr_set_d(r, a, m);
      f(r, m);
    }
  }
  bool exact() const { return mpfr_equal_p(down_, up_); }
  // An integer whose neighbours are doubles too: beyond 2^53 an integer variable's value need
  // not be representable.
  bool integral() const {
    return exact() && mpfr_integer_p(down_) && mpfr_cmp_d(down_, -0x1p53) >= 0 && mpfr_cmp_d(down_, 0x1p53) <= 0;
  }
  // Finite and far enough from the double range's edge for a box to fit around it.
  bool fits() const {
    return mpfr_number_p(down_) && mpfr_number_p(up_) && mpfr_cmp_d(down_, -0x1p1000) > 0 &&
           mpfr_cmp_d(up_, 0x1p1000) < 0;
  }
  double approx() const { return mpfr_get_d(down_, MPFR_RNDN); }

  // Does the bound hold here? A value strictly inside the enclosure counts as a failure: at
  // this precision it does not happen.
  bool satisfies(bool is_lower, bool strict, double value) const {
    const int c = is_lower ? mpfr_cmp_d(down_, value) : -mpfr_cmp_d(up_, value);
    return c > 0 || (c == 0 && (!strict || !exact()));
  }
  // The double `distance` beyond the number on the given side, rounded outward.
  double outward(bool is_lower, double distance) const {
    mpfr_t t;
    mpfr_init2(t, precision);
    if (is_lower) {
      mpfr_sub_d(t, down_, distance, MPFR_RNDD);
    } else {
      mpfr_add_d(t, up_, distance, MPFR_RNDU);
    }
    const double d = mpfr_get_d(t, is_lower ? MPFR_RNDD : MPFR_RNDU);
    mpfr_clear(t);
    return d;
  }
  std::string text() const {
    char* s = nullptr;
    mpfr_asprintf(&s, exact() ? "%.17Rg" : "%.25Rg (rounded)", down_);
    std::string r = s;
    mpfr_free_str(s);
    return r;
  }

 private:
  mpfr_t down_, up_;
};

// A point on a tclause: x, y and z (unused for unary functors) satisfy the relation.
struct truth {
  real v[3];
  double c = 0.0;
  real& x() { return v[0]; }
  real& y() { return v[1]; }
  real& z() { return v[2]; }
};

struct end_spec {
  bool present = false;
  bool strict = false;
  double value = 0.0;
};
struct box {
  end_spec lo, hi;
};

// An end at `value` if it admits the point, open at random where that still admits it.
end_spec end_at(rng_t& rng, const real& point, bool is_lower, double value) {
  if (!std::isfinite(value) || !point.satisfies(is_lower, false, value)) return {};
  return {true, chance(rng, 0.4) && point.satisfies(is_lower, true, value), value};
}

// Absent, on the point, touching 0, or at a distance from relatively tiny to huge.
end_spec random_end(rng_t& rng, const real& point, bool is_lower) {
  const double r = unit(rng), scale = std::fabs(point.approx());
  if (r < 0.08) return {};
  if (r < 0.15 && point.satisfies(is_lower, false, 0.0)) return end_at(rng, point, is_lower, 0.0);
  double distance = 0.0;
  if (r >= 0.35 && r < 0.65) distance = (scale > 0 ? scale : 1.0) * std::ldexp(1.0, -10 - below(rng, 45));
  if (r >= 0.65 && r < 0.92) distance = (scale + 1.0) * unit(rng) * 4;
  if (r >= 0.92) distance = scaled(rng, -1074, 2000);
  return end_at(rng, point, is_lower, point.outward(is_lower, distance));
}

const char* const role_names[3] = {"x", "y", "z"};

struct property {
  u32 functor;
  bool binary;
  int cases;
  u64 seed;
  // Picks the point, with integral free coordinates if asked; false to draw again.
  std::function<bool(rng_t&, bool integral, truth&)> draw;
  // Reshapes the boxes further (cos: widths near a period, ends near multiples of pi/2).
  std::function<void(rng_t&, truth&, box*)> reshape = nullptr;
  // Trigger kinds (role * 2 + upper) that narrow nothing by design.
  std::vector<int> silent = {};
  // Whether variables whose value is an integer may be integer variables.
  bool integer_variables = true;
};

struct scenario {
  krait_solver s;
  u32 vars[3] = {0, 0, 0};
  u32 t = 0;
};

void build(scenario& sc, const property& p, const bool* ints, const box* boxes, double c) {
  sc.s.min_bound_delta = 0.0;
  sc.s.vars.reserve(4);  // thousands of solvers are built: spare the sanitizer the regrowth
  for (int r = 0; r < (p.binary ? 3 : 2); ++r) {
    sc.vars[r] = add_var(sc.s, ints[r]);
    if (boxes[r].lo.present) push(sc.s, sc.vars[r], true, boxes[r].lo.strict, boxes[r].lo.value);
    if (boxes[r].hi.present) push(sc.s, sc.vars[r], false, boxes[r].hi.strict, boxes[r].hi.value);
  }
  sc.t = add_tclause(sc.s, p.functor, sc.vars[0], sc.vars[1], sc.vars[2], c);
}

// Calls f(bound) for every bound on the stacks of one variable, lower ones first, each side
// from the bottom; stops at the first call that returns true.
template <typename F>
bool any_bound(const scenario& sc, int role, F f) {
  const bm& b = sc.s.vars[sc.vars[role]].bounds;
  bound e{sc.vars[role], true, false, 0.0};
  u32 id;
  for (u32 i = 0; b.lower_at(i, e.strict, e.value, id); ++i) {
    if (f(e)) return true;
  }
  e.is_lower = false;
  for (u32 i = 0; b.upper_at(i, e.strict, e.value, id); ++i) {
    if (f(e)) return true;
  }
  return false;
}

std::string bound_text(const scenario& sc, const bound& b) {
  const int role = b.var == sc.vars[0] ? 0 : b.var == sc.vars[1] ? 1 : 2;
  char buf[96];
  std::snprintf(buf, sizeof buf, "%s %s %.17g", role_names[role],
                b.is_lower ? (b.strict ? ">" : ">=") : (b.strict ? "<" : "<="), b.value);
  return buf;
}

std::string stacks_text(const scenario& sc, int role) {
  std::string text;
  any_bound(sc, role, [&](const bound& b) {
    text += (text.empty() ? "" : ", ") + bound_text(sc, b);
    return false;
  });
  return text.empty() ? std::string(role_names[role]) + " unbounded" : text;
}

// What is wrong after a deduction: a conflict, a rounding mode left behind, or a bound that
// excludes the point. Empty if nothing.
std::string fault(const scenario& sc, int roles, bool conflict, const truth& tr) {
  if (conflict) return "conflict reported on " + bound_text(sc, sc.s.conflict_bound);
  if (std::fegetround() != FE_TONEAREST) return "rounding mode not restored";
  std::string excluding;
  for (int r = 0; r < roles && excluding.empty(); ++r) {
    any_bound(sc, r, [&](const bound& b) {
      if (tr.v[r].satisfies(b.is_lower, b.strict, b.value)) return false;
      excluding = "bound " + bound_text(sc, b);
      return true;
    });
  }
  return excluding;
}

// The tclause alone to its fixpoint, as propagation would run it, newest bound first.
bool propagate_alone(scenario& sc) {
  for (int steps = 0; steps < 50 && !sc.s.implication_queue.empty(); ++steps) {
    const queued_stack q = sc.s.implication_queue.front();
    sc.s.implication_queue.pop_front();
    variable& v = sc.s.vars[q.var];
    (q.is_lower ? v.queued_lower : v.queued_upper) = false;
    std::feclearexcept(FE_ALL_EXCEPT);
    if (sc.s.deduce({q.var, q.is_lower ? v.bounds.top_lower_id() : v.bounds.top_upper_id()}, sc.t)) return true;
  }
  return false;
}

u32 bound_count(const scenario& sc) {
  u32 n = 0;
  for (u32 v : sc.vars) n += v ? sc.s.vars[v].bounds.lower_size() + sc.s.vars[v].bounds.upper_size() : 0;
  return n;
}

// One random case: the point, which variables are integer ones, and the box.
struct test_case {
  truth tr;
  bool ints[3] = {false, false, false};
  box boxes[3];
};

// Trigger kind k (role * 2 + upper) on a fresh solver holding the case. Returns what went
// wrong, empty if nothing; `ran` and `narrowed` count the trigger and whether it narrowed.
std::string run_trigger(const property& p, const test_case& tc, int k, int& ran, int& narrowed) {
  const int roles = p.binary ? 3 : 2;
  scenario sc;
  build(sc, p, tc.ints, tc.boxes, tc.tr.c);
  const bool lower = k % 2 == 0;
  const u32 var = sc.vars[k / 2];
  const u32 id = lower ? sc.s.vars[var].bounds.top_lower_id() : sc.s.vars[var].bounds.top_upper_id();
  if (id == 0) return {};
  ++ran;
  const u32 before = bound_count(sc);
  std::feclearexcept(FE_ALL_EXCEPT);
  std::string what = fault(sc, roles, sc.s.deduce({var, id}, sc.t), tc.tr);
  if (what.empty()) {
    narrowed += bound_count(sc) > before;
    what = fault(sc, roles, propagate_alone(sc), tc.tr);
    if (what.empty()) return {};
    what = "after running the tclause to its fixpoint: " + what;
  }
  scenario start;
  build(start, p, tc.ints, tc.boxes, tc.tr.c);
  std::string box_text, point, stacks;
  for (int r = 0; r < roles; ++r) {
    box_text += "\n  " + stacks_text(start, r) + (tc.ints[r] ? " (integer)" : "");
    point += std::string(" ") + role_names[r] + " = " + tc.tr.v[r].text();
    stacks += "\n  " + stacks_text(sc, r);
  }
  char head[96];
  std::snprintf(head, sizeof head, "functor %u, c = %.17g, trigger %s %s", p.functor, tc.tr.c, role_names[k / 2],
                lower ? "lower" : "upper");
  return head + ("\nbox:" + box_text) + "\ntrue point:" + point + "\n" + what + "\nstacks after:" + stacks;
}

void check_property(const property& p) {
  rng_t rng(p.seed);
  const int roles = p.binary ? 3 : 2;
  std::array<int, 6> ran{}, narrowed{};
  int failures = 0;
  for (int n = 0; n < p.cases && failures < 5; ++n) {
    test_case tc;
    const bool integral = chance(rng, 0.25);
    while (!p.draw(rng, integral, tc.tr)) {
    }
    for (int r = 0; r < roles; ++r) {
      tc.ints[r] = p.integer_variables && integral && tc.tr.v[r].integral();
      tc.boxes[r] = {random_end(rng, tc.tr.v[r], true), random_end(rng, tc.tr.v[r], false)};
    }
    if (p.reshape) p.reshape(rng, tc.tr, tc.boxes);
    for (int k = 0; k < 2 * roles; ++k) {
      const std::string what = run_trigger(p, tc, k, ran[k], narrowed[k]);
      if (!what.empty()) {
        ++failures;
        ADD_FAILURE() << what;
      }
    }
  }
  std::printf("functor %u, %d cases; trigger runs / narrowing runs:", p.functor, p.cases);
  for (int k = 0; k < 2 * roles; ++k) {
    std::printf(" %s%s %d/%d", role_names[k / 2], k % 2 ? "<=" : ">=", ran[k], narrowed[k]);
  }
  std::printf("\n");
  // A property that never narrows proves nothing.
  for (int k = 0; k < 2 * roles; ++k) {
    if (std::find(p.silent.begin(), p.silent.end(), k) == p.silent.end()) {
      EXPECT_GT(narrowed[k], ran[k] / 50) << "trigger kind " << k << " hardly ever narrows";
    }
  }
}

// x is the dependent coordinate: f(y, z) with y and z picked; false when it leaves the range.
bool dependent_x(truth& tr, double y, double z, auto f) {
  tr.y().set(y);
  tr.z().set(z);
  tr.x().set(y, f);
  return tr.x().fits();
}

}  // namespace

TEST(NarrowingSoundness, Sum) {
  check_property({KRAIT_SUM, true, 2500, 1, [](rng_t& rng, bool integral, truth& tr) {
                    const double z = pick(rng, integral);
                    return dependent_x(tr, pick(rng, integral), z,
                                       [z](mpfr_ptr r, mpfr_rnd_t m) { mpfr_add_d(r, r, z, m); });
                  }});
}

TEST(NarrowingSoundness, Scale) {
  // Factors of every sign and size, 0 included: dividing by it must drop the bound.
  check_property({KRAIT_SCALE, false, 3000, 2, [](rng_t& rng, bool integral, truth& tr) {
                    tr.c = pick(rng, integral);
                    const double c = tr.c;
                    return dependent_x(tr, pick(rng, integral), 0.0,
                                       [c](mpfr_ptr r, mpfr_rnd_t m) { mpfr_mul_d(r, r, c, m); });
                  }});
}

TEST(NarrowingSoundness, Product) {
  check_property({KRAIT_PRODUCT, true, 3000, 3, [](rng_t& rng, bool integral, truth& tr) {
                    const double z = pick(rng, integral);
                    return dependent_x(tr, pick(rng, integral), z,
                                       [z](mpfr_ptr r, mpfr_rnd_t m) { mpfr_mul_d(r, r, z, m); });
                  }});
}

// max and min, with ties between the operands now and then.
property extremum(u32 functor, u64 seed, double (*f)(double, double), int silent_kind) {
  return {functor, true, 2500, seed, [f](rng_t& rng, bool integral, truth& tr) {
            const double y = pick(rng, integral), z = chance(rng, 0.2) ? y : pick(rng, integral);
            const double x = f(y, z);
            return dependent_x(tr, y, z, [x](mpfr_ptr r, mpfr_rnd_t m) { mpfr_set_d(r, x, m); });
          }, nullptr, {silent_kind}};
}

// x >= a says nothing about the operands of a max, x <= b nothing about those of a min.
TEST(NarrowingSoundness, Max) {
  check_property(extremum(KRAIT_MAX, 4, [](double a, double b) { return std::fmax(a, b); }, 0));
}

TEST(NarrowingSoundness, Min) {
  check_property(extremum(KRAIT_MIN, 5, [](double a, double b) { return std::fmin(a, b); }, 1));
}

// Unary functors: x = f(y) with y picked by `draw_y`.
property unary(u32 functor, u64 seed, double (*draw_y)(rng_t&, bool), int (*f)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t)) {
  return {functor, false, 3000, seed, [draw_y, f](rng_t& rng, bool integral, truth& tr) {
            return dependent_x(tr, draw_y(rng, integral), 0.0, [f](mpfr_ptr r, mpfr_rnd_t m) { f(r, r, m); });
          }};
}

TEST(NarrowingSoundness, Abs) { check_property(unary(KRAIT_ABS, 6, pick, mpfr_abs)); }

TEST(NarrowingSoundness, Exp) {
  // Mostly where exp stays a normal double, and beyond, where the point is drawn again.
  auto draw = [](rng_t& rng, bool integral) {
    return chance(rng, 0.5) ? pick(rng, integral) : uniform(rng, integral, -750, 750);
  };
  check_property(unary(KRAIT_EXP, 7, draw, mpfr_exp));
}

TEST(NarrowingSoundness, Cos) {
  auto draw = [](rng_t& rng, bool integral) {
    return chance(rng, 0.5) ? pick(rng, integral) : uniform(rng, integral, -50, 50);
  };
  property p = unary(KRAIT_COS, 8, draw, mpfr_cos);
  p.cases = 5000;
  // Widths near one period and ends within a few ulps of multiples of pi/2, where the rule's
  // case split and period shift are most delicate.
  p.reshape = [](rng_t& rng, truth& tr, box* boxes) {
    const real& y = tr.y();
    const double y0 = y.approx();
    box& b = boxes[1];
    auto keep = [](end_spec& e, end_spec candidate) {
      if (candidate.present) e = candidate;
    };
    if (chance(rng, 0.3)) {
      const double widths[] = {two_pi, std::nextafter(two_pi, 0.0), std::nextafter(two_pi, 7.0),
                               two_pi - 1e-9, two_pi + 1e-9, two_pi - 1e-3, 2 * half_pi, 3 * half_pi, 6 * half_pi};
      const double w = widths[below(rng, 9)], lo = y0 - unit(rng) * w;
      keep(b.lo, end_at(rng, y, true, lo));
      keep(b.hi, end_at(rng, y, false, lo + w));
    }
    if (chance(rng, 0.3)) {
      auto near_multiple = [&](double m) {
        double v = m * half_pi;
        for (int j = below(rng, 7) - 3; j != 0; j -= j > 0 ? 1 : -1) {
          v = std::nextafter(v, j > 0 ? INFINITY : -INFINITY);
        }
        return v;
      };
      keep(b.lo, end_at(rng, y, true, near_multiple(std::floor(y0 / half_pi) - below(rng, 2))));
      keep(b.hi, end_at(rng, y, false, near_multiple(std::ceil(y0 / half_pi) + below(rng, 2))));
    }
  };
  check_property(p);
}

// The power and root routines stop the program when their correction does not converge, which
// happens for powers beyond about 1e98 and for roots of arguments below about 1e-29 (the
// disabled cases below); points and box ends stay where powers are 0 or in [1e-20, 1e80].
bool tame_power(double v) {
  const double a = std::fabs(v);
  return a == 0 || (a >= 1e-20 && a <= 1e80);
}

// power = base^n with the base picked: pow reads it as x = y^n, nrt as y = x^n.
property power_relation(u32 functor, u64 seed) {
  const int base = functor == KRAIT_POW ? 1 : 0, power = 1 - base;
  property p{functor, false, 3000, seed, [base, power](rng_t& rng, bool integral, truth& tr) {
               const unsigned long exponents[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 15, 16, 21, 32};
               const unsigned long n = exponents[below(rng, 16)];
               tr.c = static_cast<double>(n);
               const double b = pick(rng, integral);
               tr.v[base].set(b);
               tr.v[power].set(b, [n](mpfr_ptr r, mpfr_rnd_t m) { mpfr_pow_ui(r, r, n, m); });
               return tr.v[power].fits() && tame_power(tr.v[power].approx());
             }};
  p.reshape = [base, power](rng_t&, truth& tr, box* boxes) {
    for (end_spec* e : {&boxes[base].lo, &boxes[base].hi}) {
      if (!tame_power(std::pow(e->value, tr.c))) *e = {};
    }
    for (end_spec* e : {&boxes[power].lo, &boxes[power].hi}) {
      if (!tame_power(e->value)) *e = {};
    }
  };
  return p;
}

TEST(NarrowingSoundness, Pow) { check_property(power_relation(KRAIT_POW, 9)); }

TEST(NarrowingSoundness, Nrt) { check_property(power_relation(KRAIT_NRT, 10)); }

// The backward cos rule compares pieces of y shifted by whole periods, where the integrality of
// y means nothing: y = 7 shifts to 7 - 2*pi = 0.7168, inside the piece [acos 0.76, acos 0.75] =
// [0.7076, 0.7227], which integer rounding of the ends (ceil 0.7168 = 1, floor 0.7227 = 0) would
// skip, concluding y >= 11.84 although y = 7, x = cos 7 = 0.7539 lies in the box.
TEST(NarrowingSoundness, CosBackwardKeepsAnIntegerPoint) {
  for (const bool from_below : {true, false}) {
    krait_solver s;
    s.min_bound_delta = 0.0;
    const u32 x = add_range(s, 0.75, 0.76), y = from_below ? add_range(s, 7, 8, true) : add_range(s, 6, 7, true);
    const u32 t = add_tclause(s, KRAIT_COS, x, y, 0);
    EXPECT_FALSE(s.deduce({x, s.vars[x].bounds.top_upper_id()}, t)) << "y in " << (from_below ? "[7, 8]" : "[6, 7]");
    bool strict = false;
    double lower = 0.0, upper = 0.0;
    ASSERT_TRUE(s.get_lower_bound(y, strict, lower) && s.get_upper_bound(y, strict, upper));
    EXPECT_TRUE(lower <= 7.0 && 7.0 <= upper) << "y in [" << lower << ", " << upper << "]";
  }
}

// x = pow(y, 2) with x in [1e-50, 1] and y in [-1, 1], trigger x >= 1e-50: the root 1e-25 of
// 1e-50 checks above it and is stepped down by 1e-12; below 0 its square would only grow and the
// correction would run out of steps, so the lower end stops at 0.
TEST(NarrowingSoundness, RootOfATinyBoundDoesNotStopTheProgram) {
  const captured_run run = run_captured([] {
    krait_solver s;
    const u32 x = add_range(s, 1e-50, 1.0), y = add_range(s, -1.0, 1.0);
    s.deduce({x, s.vars[x].bounds.top_lower_id()}, add_tclause(s, KRAIT_POW, x, y, 0, 2.0));
  });
  EXPECT_EQ(run.status, 0) << run.err;
}
