#include "certify/certify.hpp"

#include <iomanip>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <numeric>
#include <string>
#include <utility>

#include "certify/evaluate.hpp"
#include "lang/symtab.hpp"
#include "solver/solver.hpp"

namespace certify {

namespace {

using point = std::vector<mpq_class>;

double cpu_seconds() {
  timespec t{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

mpq_class ceil_q(const mpq_class& q) {
  mpz_class r;
  mpz_cdiv_q(r.get_mpz_t(), q.get_num_mpz_t(), q.get_den_mpz_t());
  return mpq_class(r);
}
mpq_class floor_q(const mpq_class& q) {
  mpz_class r;
  mpz_fdiv_q(r.get_mpz_t(), q.get_num_mpz_t(), q.get_den_mpz_t());
  return mpq_class(r);
}

// The rational with the smallest denominator in [lo, hi] (0 <= lo <= hi), by continued
// fractions.
mpq_class simplest_nonnegative(mpq_class lo, mpq_class hi) {
  const mpq_class whole = floor_q(lo);
  if (whole == lo) return lo;
  if (whole + 1 <= hi) return whole + 1;
  // Both share the integer part: recurse on the reciprocals of the fractional parts.
  const mpq_class inner = simplest_nonnegative(1 / (hi - whole), 1 / (lo - whole));
  mpq_class r = whole + 1 / inner;
  r.canonicalize();
  return r;
}

mpq_class simplest_between(const mpq_class& lo, const mpq_class& hi) {
  if (lo <= 0 && hi >= 0) return 0;
  if (hi < 0) return -simplest_nonnegative(-hi, -lo);
  return simplest_nonnegative(lo, hi);
}

// A fixed generator, so that certificates are reproducible.
struct sequence {
  unsigned long long state = 0x2545F4914F6CDD1DULL;
  mpq_class fraction() {  // in [0, 1), 30 bits
    state = state * 6364136223846793005ULL + 1442695040888963407ULL;
    return mpq_class(static_cast<unsigned long>(state >> 34), 1UL << 30);
  }
};

struct search_space {
  const formula& f;
  std::vector<range> box;      // the candidate box
  std::vector<range> allowed;  // its intersection with the declared ranges, integers rounded in
  bool empty = false;
};

search_space make_space(const formula& f, const std::vector<range>& box) {
  search_space s{f, box, box};
  for (std::size_t i = 0; i < box.size(); ++i) {
    const variable& v = f.vars[i];
    range& r = s.allowed[i];
    r.lower = std::max(r.lower, v.lower);
    r.upper = std::min(r.upper, v.upper);
    if (v.is_int) {
      r.lower = ceil_q(r.lower);
      r.upper = floor_q(r.upper);
    }
    if (r.lower > r.upper) s.empty = true;
  }
  return s;
}

mpq_class round_into(const mpq_class& q, const range& r, bool is_int) {
  mpq_class v = is_int ? floor_q(q + mpq_class(1, 2)) : q;
  return std::clamp(v, r.lower, r.upper);
}

// Points worth trying: the centre, the simplest rationals, the corners, then seeded points.
std::vector<point> candidate_points(const search_space& s) {
  const std::size_t n = s.allowed.size();
  std::vector<point> points(4, point(n));
  for (std::size_t i = 0; i < n; ++i) {
    const range& r = s.allowed[i];
    const bool is_int = s.f.vars[i].is_int;
    points[0][i] = round_into((r.lower + r.upper) / 2, r, is_int);
    points[1][i] = simplest_between(r.lower, r.upper);
    points[2][i] = r.lower;
    points[3][i] = r.upper;
  }
  sequence random;
  for (int k = 0; k < 4; ++k) {
    point p(n);
    for (std::size_t i = 0; i < n; ++i) {
      const range& r = s.allowed[i];
      p[i] = round_into(r.lower + (r.upper - r.lower) * random.fraction(), r, s.f.vars[i].is_int);
    }
    points.push_back(std::move(p));
  }
  std::vector<point> distinct;
  for (point& p : points)
    if (std::find(distinct.begin(), distinct.end(), p) == distinct.end()) distinct.push_back(std::move(p));
  return distinct;
}

std::vector<value> exact_values(const point& p) {
  std::vector<value> values;
  values.reserve(p.size());
  for (const mpq_class& q : p) values.push_back(value::of(q, 0));
  return values;
}

std::vector<value> box_values(const std::vector<range>& box) {
  std::vector<value> values;
  values.reserve(box.size());
  for (const range& r : box) values.push_back(value::over(enclosure(r.lower, r.upper), 0));
  return values;
}

// Variable order of the report: by name, then by step.
std::vector<std::size_t> report_order(const formula& f) {
  std::vector<std::size_t> order(f.vars.size());
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return std::tie(f.vars[a].name, f.vars[a].step) < std::tie(f.vars[b].name, f.vars[b].step);
  });
  return order;
}

void witness_point(const formula& f, const point& p, std::vector<std::string>& lines) {
  lines.push_back("    witness:");
  for (std::size_t i : report_order(f)) lines.push_back("        " + f.vars[i].label(f.with_steps) + " = " + exact_text(p[i]));
}

// ---- The existence proof for equations ----

// The variables a subtree reads.
void collect_variables(const formula& f, int n, std::vector<bool>& seen) {
  const node& e = f.nodes[static_cast<std::size_t>(n)];
  if (e.kind == op::variable) seen[static_cast<std::size_t>(e.var)] = true;
  for (int arg : e.args) collect_variables(f, arg, seen);
}

double mid_of(const enclosure& e) { return e.midpoint().get_d(); }

// Inverse of an m x m matrix (row-major), or false when it is numerically singular.
bool invert(std::vector<double> a, std::size_t m, std::vector<double>& inverse) {
  inverse.assign(m * m, 0.0);
  for (std::size_t i = 0; i < m; ++i) inverse[i * m + i] = 1.0;
  for (std::size_t col = 0; col < m; ++col) {
    std::size_t pivot = col;
    for (std::size_t r = col + 1; r < m; ++r)
      if (std::fabs(a[r * m + col]) > std::fabs(a[pivot * m + col])) pivot = r;
    if (!(std::fabs(a[pivot * m + col]) > 1e-300)) return false;
    for (std::size_t k = 0; k < m; ++k) {
      std::swap(a[col * m + k], a[pivot * m + k]);
      std::swap(inverse[col * m + k], inverse[pivot * m + k]);
    }
    const double d = a[col * m + col];
    for (std::size_t k = 0; k < m; ++k) {
      a[col * m + k] /= d;
      inverse[col * m + k] /= d;
    }
    for (std::size_t r = 0; r < m; ++r) {
      if (r == col) continue;
      const double factor = a[r * m + col];
      if (factor == 0.0) continue;
      for (std::size_t k = 0; k < m; ++k) {
        a[r * m + k] -= factor * a[col * m + k];
        inverse[r * m + k] -= factor * inverse[col * m + k];
      }
    }
  }
  return std::all_of(inverse.begin(), inverse.end(), [](double v) { return std::isfinite(v); });
}

// K(X) = c - Y g(c) + (I - Y J(X)) (X - c): every common zero of g in X lies in K(X).
std::vector<enclosure> krawczyk(const std::vector<enclosure>& ymat, const std::vector<mpq_class>& centre,
                                const std::vector<enclosure>& g, const std::vector<enclosure>& jx,
                                const std::vector<enclosure>& x) {
  const std::size_t m = centre.size();
  std::vector<enclosure> k(m);
  for (std::size_t r = 0; r < m; ++r) {
    enclosure sum = enclosure(centre[r]);
    for (std::size_t c = 0; c < m; ++c) sum = sum - ymat[r * m + c] * g[c];
    for (std::size_t c = 0; c < m; ++c) {
      enclosure entry = enclosure(mpq_class(r == c ? 1 : 0));
      for (std::size_t q = 0; q < m; ++q) entry = entry - ymat[r * m + q] * jx[q * m + c];
      sum = sum + entry * (x[c] - enclosure(centre[c]));
    }
    k[r] = sum;
  }
  return k;
}

class existence_proof {
 public:
  existence_proof(const search_space& s, const point& p, std::vector<int> equations)
      : s_(s), f_(s.f), p_(p), equations_(std::move(equations)), eval_(f_) {}

  // Tries to prove that the equations have a common solution near p (the other variables
  // fixed there) on a box where every other relation the formula needs holds.
  bool run(std::string& failure);
  // True when the equations, as many as the variables they read, have no common solution in
  // the box: K(X) of the whole box misses it.
  bool excludes(const std::vector<range>& box);
  const std::vector<enclosure>& solution_box() const { return box_; }
  const std::vector<std::size_t>& free_variables() const { return free_; }

 private:
  // The equations' differences (left - right) and their slopes, free variables at `at`.
  void differences(const std::vector<value>& at, std::size_t slopes, std::vector<enclosure>& g,
                   std::vector<enclosure>& jacobian);
  std::vector<value> values_at(const std::vector<enclosure>& free_values, bool with_slopes) const;
  bool choose_free(std::string& failure);

  const search_space& s_;
  const formula& f_;
  point p_;
  std::vector<int> equations_;
  evaluator eval_;
  std::vector<std::size_t> free_;
  std::vector<enclosure> box_;
};

std::vector<value> existence_proof::values_at(const std::vector<enclosure>& free_values, bool with_slopes) const {
  const std::size_t m = with_slopes ? free_.size() : 0;
  std::vector<value> values;
  for (const mpq_class& q : p_) values.push_back(value::of(q, m));
  for (std::size_t k = 0; k < free_.size(); ++k) {
    value v = value::over(free_values[k], m);
    if (with_slopes) v.slopes[k] = enclosure(mpq_class(1));
    values[free_[k]] = std::move(v);
  }
  return values;
}

void existence_proof::differences(const std::vector<value>& at, std::size_t slopes, std::vector<enclosure>& g,
                                  std::vector<enclosure>& jacobian) {
  eval_.assumed.clear();
  eval_.run(at, slopes);
  g.clear();
  jacobian.clear();
  for (int eq : equations_) {
    const node& n = f_.nodes[static_cast<std::size_t>(eq)];
    const value& l = eval_.term(n.args[0]);
    const value& r = eval_.term(n.args[1]);
    g.push_back(l.e - r.e);
    for (std::size_t k = 0; k < slopes; ++k) jacobian.push_back(l.slopes[k] - r.slopes[k]);
  }
}

// As many real variables as there are equations, chosen by complete pivoting on the Jacobian
// at p so that the equations can be solved for them.
bool existence_proof::choose_free(std::string& failure) {
  std::vector<bool> seen(f_.vars.size(), false);
  for (int eq : equations_) collect_variables(f_, eq, seen);
  // A variable of an equation that already holds exactly at p stays where it is: moving it
  // would break that equation.
  std::vector<bool> pinned(f_.vars.size(), false);
  eval_.assumed.clear();
  eval_.run(exact_values(p_));
  for (std::size_t i = 0; i < f_.nodes.size(); ++i) {
    const int n = static_cast<int>(i);
    if (f_.nodes[i].kind == op::equal && eval_.result(n) == truth::yes &&
        std::find(equations_.begin(), equations_.end(), n) == equations_.end())
      collect_variables(f_, n, pinned);
  }
  std::vector<std::size_t> candidates;
  for (std::size_t i = 0; i < seen.size(); ++i)
    if (seen[i] && !f_.vars[i].is_int && !pinned[i]) candidates.push_back(i);
  const std::size_t m = equations_.size();
  if (candidates.size() < m) {
    failure = "fewer real variables than equations to solve";
    return false;
  }
  free_ = candidates;
  std::vector<enclosure> at;
  for (std::size_t i : free_) at.push_back(enclosure(p_[i]));
  std::vector<enclosure> g, jacobian;
  differences(values_at(at, true), free_.size(), g, jacobian);
  const std::size_t n = free_.size();
  std::vector<double> a(m * n);
  for (std::size_t k = 0; k < m * n; ++k) a[k] = mid_of(jacobian[k]);
  std::vector<bool> row_used(m, false), col_used(n, false);
  std::vector<std::size_t> chosen;
  for (std::size_t step = 0; step < m; ++step) {
    double best = 0.0;
    std::size_t br = 0, bc = 0;
    for (std::size_t r = 0; r < m; ++r)
      for (std::size_t c = 0; c < n; ++c)
        // Between equal pivots the later step wins: a trace is solved forward in time.
        if (!row_used[r] && !col_used[c] &&
            (std::fabs(a[r * n + c]) > best * (1 + 1e-9) ||
             (std::fabs(a[r * n + c]) >= best * (1 - 1e-9) && best > 0 &&
              f_.vars[free_[c]].step > f_.vars[free_[bc]].step))) {
          best = std::fabs(a[r * n + c]);
          br = r;
          bc = c;
        }
    if (!(best > 1e-300) || !std::isfinite(best)) {
      failure = "the equations do not determine their variables (singular Jacobian)";
      return false;
    }
    row_used[br] = col_used[bc] = true;
    chosen.push_back(free_[bc]);
    for (std::size_t r = 0; r < m; ++r) {
      if (row_used[r]) continue;
      const double factor = a[r * n + bc] / a[br * n + bc];
      for (std::size_t c = 0; c < n; ++c) a[r * n + c] -= factor * a[br * n + c];
    }
  }
  std::sort(chosen.begin(), chosen.end());
  free_ = chosen;
  return true;
}

bool existence_proof::run(std::string& failure) {
  if (!choose_free(failure)) return false;
  const std::size_t m = free_.size();
  std::vector<enclosure> g, jacobian;
  std::vector<double> y, delta(m);
  std::vector<mpq_class> centre;
  for (std::size_t i : free_) centre.push_back(p_[i]);
  auto point_enclosures = [&] {
    std::vector<enclosure> at;
    for (const mpq_class& q : centre) at.push_back(enclosure(q));
    return at;
  };
  // Newton steps in double precision bring the centre close to the solution.
  for (int step = 0; step < 6; ++step) {
    differences(values_at(point_enclosures(), true), m, g, jacobian);
    std::vector<double> j(m * m);
    for (std::size_t k = 0; k < m * m; ++k) j[k] = mid_of(jacobian[k]);
    if (!invert(j, m, y)) {
      failure = "singular Jacobian at the candidate point";
      return false;
    }
    bool moved = false;
    for (std::size_t r = 0; r < m; ++r) {
      delta[r] = 0.0;
      for (std::size_t k = 0; k < m; ++k) delta[r] += y[r * m + k] * mid_of(g[k]);
      const double next = centre[r].get_d() - delta[r];
      if (!std::isfinite(next)) {
        failure = "Newton's method left the range of doubles";
        return false;
      }
      if (mpq_class(next) != centre[r]) moved = true;
      centre[r] = next;
    }
    if (!moved) break;
  }
  differences(values_at(point_enclosures(), false), 0, g, jacobian);

  // Krawczyk: K(X) = c - Y g(c) + (I - Y J(X)) (X - c); K(X) inside the interior of X proves
  // a solution in X (and in K(X)).
  std::vector<enclosure> ymat;
  for (double v : y) ymat.push_back(enclosure(mpq_class(v)));
  std::vector<double> radius(m);
  for (std::size_t r = 0; r < m; ++r) {
    double residual = 0.0;
    for (std::size_t k = 0; k < m; ++k) residual += std::fabs(y[r * m + k]) * (std::fabs(mid_of(g[k])) + g[k].radius());
    radius[r] = std::max({4.0 * residual, std::fabs(centre[r].get_d()) * 0x1p-44, 0x1p-1000});
  }
  for (int attempt = 0; attempt < 12; ++attempt) {
    std::vector<enclosure> x;
    for (std::size_t r = 0; r < m; ++r)
      x.push_back(enclosure(centre[r] - mpq_class(radius[r]), centre[r] + mpq_class(radius[r])));
    std::vector<enclosure> gx, jx;
    differences(values_at(x, true), m, gx, jx);
    const std::vector<enclosure> k = krawczyk(ymat, centre, g, jx, x);
    bool inside = true;
    for (std::size_t r = 0; r < m; ++r)
      if (k[r].partial() || !k[r].subset_of_interior(x[r])) inside = false;
    if (inside) {
      box_ = k;
      return true;
    }
    for (double& r : radius) r *= 8.0;
  }
  failure = "no existence proof for the equations (Krawczyk test)";
  return false;
}

bool existence_proof::excludes(const std::vector<range>& box) {
  std::vector<bool> seen(f_.vars.size(), false);
  for (int eq : equations_) collect_variables(f_, eq, seen);
  free_.clear();
  for (std::size_t i = 0; i < seen.size(); ++i)
    if (seen[i]) free_.push_back(i);
  const std::size_t m = free_.size();
  if (m == 0 || m != equations_.size()) return false;
  std::vector<mpq_class> centre;
  std::vector<enclosure> x, at;
  for (std::size_t i : free_) {
    centre.push_back((box[i].lower + box[i].upper) / 2);
    at.push_back(enclosure(centre.back()));
    x.push_back(enclosure(box[i].lower, box[i].upper));
  }
  std::vector<enclosure> g, jc, gx, jx;
  differences(values_at(at, true), m, g, jc);
  std::vector<double> j(m * m), y;
  for (std::size_t k = 0; k < m * m; ++k) j[k] = mid_of(jc[k]);
  if (!invert(j, m, y)) return false;
  std::vector<enclosure> ymat;
  for (double v : y) ymat.push_back(enclosure(mpq_class(v)));
  differences(values_at(x, true), m, gx, jx);
  for (const enclosure& e : jx)
    if (e.partial()) return false;
  const std::vector<enclosure> k = krawczyk(ymat, centre, g, jx, x);
  for (std::size_t r = 0; r < m; ++r)
    if (!k[r].partial() && k[r].disjoint(x[r])) return true;
  return false;
}

// The equations every solution must meet: those joined to the formula by conjunctions only.
void conjoined_equations(const formula& f, int n, std::vector<int>& out) {
  const node& e = f.nodes[static_cast<std::size_t>(n)];
  if (e.kind == op::equal) out.push_back(n);
  if (e.kind == op::conjunction)
    for (int arg : e.args) conjoined_equations(f, arg, out);
}

// The equations a point misses that the formula needs, if assuming them true makes the formula
// true there: one under a false premise or beside a true disjunct would only over-determine.
std::vector<int> needed_equations(const formula& f, evaluator& eval, const point& p) {
  eval.assumed.clear();
  eval.run(exact_values(p));
  std::vector<int> equations;
  for (std::size_t i = 0; i < f.nodes.size(); ++i)
    if (f.nodes[i].kind == op::equal && eval.result(static_cast<int>(i)) != truth::yes)
      equations.push_back(static_cast<int>(i));
  eval.assumed = equations;
  if (equations.empty() || eval.run(exact_values(p)) != truth::yes) return {};
  for (std::size_t k = equations.size(); k-- > 0;) {
    eval.assumed = equations;
    eval.assumed.erase(eval.assumed.begin() + static_cast<std::ptrdiff_t>(k));
    if (eval.run(exact_values(p)) == truth::yes) equations = eval.assumed;
  }
  eval.assumed.clear();
  return equations;
}

// An equation `v = term` (or `term = v`) defines v: giving v the term's exact value, equation by
// equation in the formula's order (a trace forward in time), turns p into a point that meets
// them exactly. Each variable is defined once.
bool define_forward(const formula& f, evaluator& eval, const std::vector<int>& equations, point& p) {
  std::vector<bool> defined(f.vars.size(), false);
  bool changed = false;
  for (int eq : equations) {
    eval.run(exact_values(p));
    const node& n = f.nodes[static_cast<std::size_t>(eq)];
    for (int side = 0; side < 2; ++side) {
      const node& lone = f.nodes[static_cast<std::size_t>(n.args[static_cast<std::size_t>(side)])];
      const value& other = eval.term(n.args[static_cast<std::size_t>(1 - side)]);
      if (lone.kind != op::variable || defined[static_cast<std::size_t>(lone.var)] || !other.exact) continue;
      const variable& v = f.vars[static_cast<std::size_t>(lone.var)];
      if (v.is_int && other.q.get_den() != 1) continue;
      defined[static_cast<std::size_t>(lone.var)] = true;
      changed |= p[static_cast<std::size_t>(lone.var)] != other.q;
      p[static_cast<std::size_t>(lone.var)] = other.q;
      break;
    }
  }
  return changed;
}

// Where an exact witness lies: in the box, beside it (no farther than the rounding of its ends
// to doubles), or elsewhere; outside a declared range it is no witness at all.
enum class placement { in_box, beside, elsewhere };

mpq_class slack_of(const range& b) {
  return std::max(abs(b.lower), abs(b.upper)) * mpq_class(1, 1UL << 40) + mpq_class(1, 1UL << 62);
}

placement place(const formula& f, const std::vector<range>& box, const point& p) {
  placement where = placement::in_box;
  for (std::size_t i = 0; i < p.size(); ++i) {
    if (p[i] < f.vars[i].lower || p[i] > f.vars[i].upper) return placement::elsewhere;
    if (p[i] >= box[i].lower && p[i] <= box[i].upper) continue;
    const mpq_class slack = slack_of(box[i]);
    if (p[i] < box[i].lower - slack || p[i] > box[i].upper + slack) return placement::elsewhere;
    where = placement::beside;
  }
  return where;
}

const char* const beside_line = "    verified: a solution lies just outside the box, within the rounding of its ends";

}  // namespace

std::string exact_text(const mpq_class& q) {
  if (q.get_den() == 1) return q.get_str();
  // A finite decimal when the denominator has no prime factor but 2 and 5.
  mpz_class den = q.get_den();
  unsigned long twos = mpz_remove(den.get_mpz_t(), den.get_mpz_t(), mpz_class(2).get_mpz_t());
  unsigned long fives = mpz_remove(den.get_mpz_t(), den.get_mpz_t(), mpz_class(5).get_mpz_t());
  const unsigned long places = std::max(twos, fives);
  if (den == 1 && places <= 30) {
    mpz_class scale;
    mpz_ui_pow_ui(scale.get_mpz_t(), 10, places);
    const mpz_class scaled = abs(q.get_num()) * scale / q.get_den();
    std::string digits = scaled.get_str();
    if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
    digits.insert(digits.size() - places, ".");
    return (q < 0 ? "-" : "") + digits;
  }
  char approx[40];
  std::snprintf(approx, sizeof approx, "%.17g", q.get_d());
  return q.get_str() + " (about " + approx + ")";
}

std::vector<range> read_box(const formula& f, const krait_solver& solver) {
  std::vector<range> box;
  for (const variable& v : f.vars) {
    range r{v.lower, v.upper};
    const symbol_ref entry = symtab.lookup(v.name);
    if (entry != no_symbol() && v.step < (*entry)->instances.size()) {
      const u32 var = static_cast<u32>((*entry)->instances[v.step]);
      bool strict;
      double end;
      if (solver.get_lower_bound(var, strict, end) && std::isfinite(end)) r.lower = end;
      if (solver.get_upper_bound(var, strict, end) && std::isfinite(end)) r.upper = end;
    }
    box.push_back(r);
  }
  return box;
}

certificate certify(const formula& f, const std::vector<range>& box) {
  const double started = cpu_seconds();
  certificate out;
  auto finish = [&](verdict kind) {
    out.kind = kind;
    out.seconds = cpu_seconds() - started;
    return out;
  };
  const search_space s = make_space(f, box);
  evaluator eval(f);

  // 1. Points of the box at which the formula holds exactly or by enclosures.
  std::vector<point> points = s.empty ? std::vector<point>() : candidate_points(s);
  int undecided_at_centre = -1;
  for (const point& p : points) {
    if (eval.run(exact_values(p)) == truth::yes) {
      out.lines.push_back("    verified: the box holds a solution");
      witness_point(f, p, out.lines);
      for (const mpq_class& v : p) out.witness.push_back({v, v});
      return finish(verdict::verified);
    }
    if (undecided_at_centre < 0) undecided_at_centre = eval.culprit(f.root);
  }

  // 2. Equations that define a variable by the others: exact values computed forward.
  for (const point& start : points) {
    point p = start;
    const std::vector<int> equations = needed_equations(f, eval, p);
    if (equations.empty() || !define_forward(f, eval, equations, p)) continue;
    if (eval.run(exact_values(p)) != truth::yes) continue;
    const placement where = place(f, box, p);
    if (where == placement::elsewhere) continue;
    out.lines.push_back(where == placement::in_box ? "    verified: the box holds a solution" : beside_line);
    witness_point(f, p, out.lines);
    for (const mpq_class& v : p) out.witness.push_back({v, v});
    return finish(where == placement::in_box ? verdict::verified : verdict::verified_beside);
  }

  // 3. Equations that the points miss: an existence proof near each point in turn.
  std::string failure;
  for (const point& p : points) {
    const std::vector<int> equations = needed_equations(f, eval, p);
    if (equations.empty()) continue;
    existence_proof proof(s, p, equations);
    if (!proof.run(failure)) continue;
    // Every other relation the formula needs must hold on the whole proof box.
    std::vector<value> values = exact_values(p);
    const auto& free = proof.free_variables();
    for (std::size_t k = 0; k < free.size(); ++k) values[free[k]] = value::over(proof.solution_box()[k], 0);
    eval.assumed = equations;
    if (eval.run(values) != truth::yes) {
      failure = "near the solution of the equations, " + f.describe(eval.culprit(f.root)) + " is not settled";
      continue;
    }
    bool within_declared = true, within_box = true, near_box = true;
    for (std::size_t k = 0; k < free.size(); ++k) {
      const enclosure& x = proof.solution_box()[k];
      const variable& v = f.vars[free[k]];
      const range& b = box[free[k]];
      if (!(x - enclosure(v.lower)).nonnegative() || !(x - enclosure(v.upper)).nonpositive()) within_declared = false;
      if (!(x - enclosure(b.lower)).nonnegative() || !(x - enclosure(b.upper)).nonpositive()) within_box = false;
      // Beside the box means no farther than the rounding of a decimal constant to a double.
      const mpq_class slack = slack_of(b);
      if (!(x - enclosure(b.lower - slack)).nonnegative() || !(x - enclosure(b.upper + slack)).nonpositive())
        near_box = false;
    }
    if (!within_declared) {
      failure = "the solution of the equations may lie outside a declared range";
      continue;
    }
    if (!near_box) {
      failure = "the solution of the equations lies outside the box";
      continue;
    }
    out.lines.push_back(within_box ? "    verified: the box holds a solution" : beside_line);
    out.lines.push_back("    witness: the equations have a solution in");
    for (std::size_t i : report_order(f)) {
      const auto at = std::find(free.begin(), free.end(), i);
      out.lines.push_back("        " + f.vars[i].label(f.with_steps) +
                          (at == free.end() ? " = " + exact_text(p[i])
                                            : " in " + proof.solution_box()[static_cast<std::size_t>(at - free.begin())].str(20)));
    }
    for (const mpq_class& v : p) out.witness.push_back({v, v});
    for (std::size_t k = 0; k < free.size(); ++k) {
      const enclosure& x = proof.solution_box()[k];
      mpfr_get_q(out.witness[free[k]].lower.get_mpq_t(), x.lower());
      mpfr_get_q(out.witness[free[k]].upper.get_mpq_t(), x.upper());
    }
    return finish(within_box ? verdict::verified : verdict::verified_beside);
  }

  // 4. No solution in the box: equations no point of it meets, or a relation false everywhere.
  std::vector<int> conjoined;
  conjoined_equations(f, f.root, conjoined);
  if (!conjoined.empty() && existence_proof(s, point(f.vars.size()), conjoined).excludes(box)) {
    const std::size_t others = conjoined.size() - 1;
    out.lines.push_back("    not verified: " + f.describe(conjoined.front()) +
                        (others == 0 ? " has no solution"
                                     : " and " + std::to_string(others) + " more equation" + (others > 1 ? "s" : "") +
                                           " have no common solution") +
                        " in the box (Krawczyk test)");
    return finish(verdict::refuted);
  }
  eval.assumed.clear();
  if (eval.run(box_values(box)) == truth::no) {
    out.lines.push_back("    not verified: " + f.describe(eval.culprit(f.root)) + " is false at every point of the box");
    return finish(verdict::refuted);
  }
  if (s.empty) {
    out.lines.push_back("    not verified: the box lies outside the declared ranges as written");
    return finish(verdict::undecided);
  }
  const std::string culprit = undecided_at_centre >= 0 ? f.describe(undecided_at_centre) : f.describe(f.root);
  out.lines.push_back("    not verified: " + culprit + " is not settled at the points tried" +
                      (failure.empty() ? "" : "; " + failure));
  return finish(verdict::undecided);
}

void print_section(const hexpr& original, const krait_solver& solver, int depth, std::ostream& out) {
  out << "CERTIFICATE:" << std::endl;
  try {
    const formula f = depth < 0 ? formula::plain(original) : formula::unwound(original, static_cast<unsigned>(depth));
    const certificate c = certify(f, read_box(f, solver));
    for (const std::string& line : c.lines) out << line << std::endl;
    out << "    time certifier: " << std::fixed << std::setprecision(4) << c.seconds << std::defaultfloat
        << std::setprecision(20) << std::endl;
  } catch (const std::invalid_argument& unsupported) {
    out << "    not verified: the certifier does not handle " << unsupported.what() << std::endl;
  }
  out << std::endl;
}

}  // namespace certify
