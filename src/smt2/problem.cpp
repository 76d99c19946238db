// From assertions to a problem in the input language.
#include "smt2/problem.hpp"

#include <cfloat>
#include <charconv>
#include <cmath>
#include <map>
#include <set>

namespace smt2 {
namespace {

using bound = std::optional<mpq_class>;

// ---- Exact interval arithmetic with infinite ends ----

bound add(const bound& a, const bound& b) { return a && b ? bound(*a + *b) : std::nullopt; }

interval plus(const interval& a, const interval& b) { return {add(a.lo, b.lo), add(a.hi, b.hi)}; }
interval minus(const interval& a) {
  return {a.hi ? bound(-*a.hi) : std::nullopt, a.lo ? bound(-*a.lo) : std::nullopt};
}

// One end of a product of two ends, with the sign rules of infinity (0 times infinity is 0:
// the product of a zero end and an unbounded one is met only at 0).
struct end {
  bool infinite;
  int sign;  // of an infinite end
  mpq_class value;
};
end end_of(const bound& b, int infinite_sign) { return b ? end{false, 0, *b} : end{true, infinite_sign, 0}; }
end product(const end& a, const end& b) {
  const int sa = a.infinite ? a.sign : sgn(a.value), sb = b.infinite ? b.sign : sgn(b.value);
  if (!a.infinite && !b.infinite) return {false, 0, a.value * b.value};
  if (sa == 0 || sb == 0) return {false, 0, 0};
  return {true, sa * sb, 0};
}

interval times(const interval& a, const interval& b) {
  const end ends[4] = {product(end_of(a.lo, -1), end_of(b.lo, -1)), product(end_of(a.lo, -1), end_of(b.hi, 1)),
                       product(end_of(a.hi, 1), end_of(b.lo, -1)), product(end_of(a.hi, 1), end_of(b.hi, 1))};
  interval r;
  bool lo_infinite = false, hi_infinite = false;
  for (const end& e : ends) {
    if (e.infinite) {
      (e.sign < 0 ? lo_infinite : hi_infinite) = true;
      continue;
    }
    if (!r.lo || e.value < *r.lo) r.lo = e.value;
    if (!r.hi || e.value > *r.hi) r.hi = e.value;
  }
  if (lo_infinite) r.lo.reset();
  if (hi_infinite) r.hi.reset();
  return r;
}

interval scaled(const interval& a, const mpq_class& c) { return times(a, {c, c}); }

interval hull(const interval& a, const interval& b) {
  interval r;
  if (a.lo && b.lo) r.lo = std::min(*a.lo, *b.lo);
  if (a.hi && b.hi) r.hi = std::max(*a.hi, *b.hi);
  return r;
}

mpq_class power_of(const mpq_class& x, unsigned long n) {
  mpq_class p;
  mpz_pow_ui(p.get_num_mpz_t(), x.get_num_mpz_t(), n);
  mpz_pow_ui(p.get_den_mpz_t(), x.get_den_mpz_t(), n);
  return p;
}

// A rational not below (above, if `up` is false) the n-th root of q >= 0.
mpq_class root_bound(const mpq_class& q, unsigned long n, bool up) {
  double r = std::pow(q.get_d(), 1.0 / static_cast<double>(n));
  if (!std::isfinite(r)) return up ? mpq_class(std::max(q, mpq_class(1))) : mpq_class(0);
  const auto power = [n](const mpq_class& x) { return power_of(x, n); };
  for (int i = 0; i < 64; ++i) {
    const mpq_class candidate(r);
    if (up ? power(candidate) >= q : (candidate >= 0 && power(candidate) <= q)) return candidate;
    r = up ? std::nextafter(r, HUGE_VAL) * (1 + 0x1p-40) : std::nextafter(r, 0.0) * (1 - 0x1p-40);
  }
  return up ? q + 1 : mpq_class(0);
}

interval power(const interval& a, unsigned long n) {
  if (n == 0) return {mpq_class(1), mpq_class(1)};
  if (n > 64) return {};  // exact ends of such powers grow too long to be of use
  if (n % 2 == 1) return {a.lo ? bound(power_of(*a.lo, n)) : std::nullopt, a.hi ? bound(power_of(*a.hi, n)) : std::nullopt};
  // Even: the smallest magnitude to the largest.
  interval r;
  const bool straddles = !(a.lo && *a.lo > 0) && !(a.hi && *a.hi < 0);
  r.lo = straddles ? mpq_class(0) : power_of(a.lo && *a.lo > 0 ? *a.lo : -*a.hi, n);
  if (a.lo && a.hi) r.hi = std::max(power_of(*a.lo, n), power_of(*a.hi, n));
  return r;
}

bool is_square(const term& t) {
  return t.kind == op::multiply && t.args[0]->kind == op::variable && t.args[1]->kind == op::variable &&
         t.args[0]->var == t.args[1]->var;
}

// The double a rational is, if it is one.
std::optional<double> exact_double(const mpq_class& q) {
  const double d = q.get_d();
  if (!std::isfinite(d) || mpq_class(d) != q) return std::nullopt;
  return d;
}

// The finite double next to a rational on the side asked for; none beyond the largest double.
std::optional<double> double_beside(const mpq_class& q, bool down) {
  double d = q.get_d();  // truncated toward zero; infinite beyond the doubles
  if (!std::isfinite(d)) {
    if (down ? q > 0 : q < 0) return down ? DBL_MAX : -DBL_MAX;
    return std::nullopt;
  }
  if (down ? mpq_class(d) > q : mpq_class(d) < q) d = std::nextafter(d, down ? -HUGE_VAL : HUGE_VAL);
  if (!std::isfinite(d)) return std::nullopt;
  return d;
}

// The same as a rational, for ends that must exist.
mpq_class double_toward(const mpq_class& q, bool down) {
  const std::optional<double> d = double_beside(q, down);
  if (!d) throw std::runtime_error("the number " + q.get_str() + " lies beyond the doubles");
  return mpq_class(*d);
}

// ---- Ranges implied by the top-level assertions ----

class range_finder {
 public:
  range_finder(const symbols& table, std::vector<interval>& ranges) : table_(table), ranges_(ranges) {}

  // Narrows the ranges by one relation; true when some range changed.
  bool relation(const term& r) {
    changed_ = false;
    const interval a = forward(*r.args[0]), b = forward(*r.args[1]);
    switch (r.kind) {
      case op::less_equal:
      case op::less:
        backward(*r.args[0], {std::nullopt, b.hi});
        backward(*r.args[1], {a.lo, std::nullopt});
        break;
      case op::greater_equal:
      case op::greater:
        backward(*r.args[0], {b.lo, std::nullopt});
        backward(*r.args[1], {std::nullopt, a.hi});
        break;
      case op::equal:
        backward(*r.args[0], b);
        backward(*r.args[1], a);
        break;
      default: break;
    }
    return changed_;
  }

  interval forward(const term& t) const {
    switch (t.kind) {
      case op::variable: return ranges_[static_cast<std::size_t>(t.var)];
      case op::number: return {t.value, t.value};
      case op::add: return plus(forward(*t.args[0]), forward(*t.args[1]));
      case op::subtract: return plus(forward(*t.args[0]), minus(forward(*t.args[1])));
      case op::negate: return minus(forward(*t.args[0]));
      case op::multiply: {
        const interval a = forward(*t.args[0]);
        if (is_square(t)) return power(a, 2);
        return times(a, forward(*t.args[1]));
      }
      case op::divide: return scaled(forward(*t.args[0]), 1 / t.args[1]->value);
      case op::power: return power(forward(*t.args[0]), t.exponent);
      case op::abs: {
        const interval a = forward(*t.args[0]);
        if (a.lo && *a.lo >= 0) return a;
        if (a.hi && *a.hi <= 0) return minus(a);
        return {mpq_class(0), hull(a, minus(a)).hi};
      }
      case op::sin:
      case op::cos: return {mpq_class(-1), mpq_class(1)};
      case op::exp: {
        const interval a = forward(*t.args[0]);
        interval r{mpq_class(0), std::nullopt};
        if (a.hi && a.hi->get_d() < 700) r.hi = mpq_class(std::nextafter(std::exp(a.hi->get_d() + 1e-9), HUGE_VAL) * (1 + 0x1p-30));
        return r;
      }
      case op::ite: return hull(forward(*t.args[1]), forward(*t.args[2]));
      default: return {};
    }
  }

 private:
  // Narrows what `t` ranges over to `want`.
  void backward(const term& t, const interval& want) {
    switch (t.kind) {
      case op::variable: narrow(t.var, want); break;
      case op::add: {
        const interval a = forward(*t.args[0]), b = forward(*t.args[1]);
        backward(*t.args[0], plus(want, minus(b)));
        backward(*t.args[1], plus(want, minus(a)));
        break;
      }
      case op::subtract: {
        const interval a = forward(*t.args[0]), b = forward(*t.args[1]);
        backward(*t.args[0], plus(want, b));
        backward(*t.args[1], plus(a, minus(want)));
        break;
      }
      case op::negate: backward(*t.args[0], minus(want)); break;
      case op::divide: backward(*t.args[0], scaled(want, t.args[1]->value)); break;
      case op::multiply: {
        if (is_square(t)) {
          if (want.hi && *want.hi >= 0) {
            const mpq_class r = root_bound(*want.hi, 2, true);
            narrow(t.args[0]->var, {-r, r});
          }
          break;
        }
        // A constant factor divides out; other products are left alone.
        for (int k = 0; k < 2; ++k)
          if (t.args[k]->kind == op::number && t.args[k]->value != 0)
            backward(*t.args[1 - k], scaled(want, 1 / t.args[k]->value));
        break;
      }
      case op::power: {
        const unsigned long n = t.exponent;
        if (n == 1) backward(*t.args[0], want);
        if (n < 2 || n > 64) break;
        if (n % 2 == 0) {
          if (want.hi && *want.hi >= 0) {
            const mpq_class r = root_bound(*want.hi, n, true);
            backward(*t.args[0], {-r, r});
          }
        } else {
          interval r;
          if (want.hi) r.hi = *want.hi >= 0 ? root_bound(*want.hi, n, true) : -root_bound(-*want.hi, n, false);
          if (want.lo) r.lo = *want.lo >= 0 ? root_bound(*want.lo, n, false) : -root_bound(-*want.lo, n, true);
          backward(*t.args[0], r);
        }
        break;
      }
      case op::abs:
        if (want.hi && *want.hi >= 0) backward(*t.args[0], {-*want.hi, *want.hi});
        break;
      default: break;
    }
  }

  void narrow(int var, interval want) {
    interval& r = ranges_[static_cast<std::size_t>(var)];
    // Ends are kept as doubles, rounded outward, so that repeated narrowing stays cheap.
    // An end beyond the doubles bounds nothing the search can use.
    if (want.lo) want.lo = double_beside(*want.lo, true);
    if (want.hi) want.hi = double_beside(*want.hi, false);
    if (table_.declared[static_cast<std::size_t>(var)].type == sort::integer) {
      if (want.lo) want.lo = mpq_class(mpz_class(ceil_of(*want.lo)));
      if (want.hi) want.hi = mpq_class(mpz_class(-ceil_of(-*want.hi)));
    }
    if (want.lo && (!r.lo || *want.lo > *r.lo)) r.lo = want.lo, changed_ = true;
    if (want.hi && (!r.hi || *want.hi < *r.hi)) r.hi = want.hi, changed_ = true;
  }

  static mpz_class ceil_of(const mpq_class& q) {
    mpz_class c;
    mpz_cdiv_q(c.get_mpz_t(), q.get_num_mpz_t(), q.get_den_mpz_t());
    return c;
  }

  const symbols& table_;
  std::vector<interval>& ranges_;
  bool changed_ = false;
};

void conjuncts(const term_ref& t, std::vector<const term*>& out) {
  if (t->kind == op::conjunction) {
    for (const term_ref& a : t->args) conjuncts(a, out);
  } else {
    out.push_back(t.get());
  }
}

bool is_relation(op kind) { return kind >= op::equal && kind <= op::greater; }

// ---- Bounds written as such ----

// One end a relation between a constant and a number puts on the constant.
struct simple_bound {
  int var;
  bool lower, strict;
  mpq_class value;
};

std::optional<mpq_class> constant_value(const term& t) {
  if (t.kind == op::number) return t.value;
  if (t.kind == op::negate && t.args[0]->kind == op::number) return -t.args[0]->value;
  return std::nullopt;
}

// The ends a relation x ~ c or c ~ x puts on x; false for any other relation.
bool bounds_of(const term& r, std::vector<simple_bound>& out) {
  if (!is_relation(r.kind)) return false;
  const bool var_left = r.args[0]->kind == op::variable;
  const term& v = *r.args[var_left ? 0 : 1];
  const std::optional<mpq_class> c = constant_value(*r.args[var_left ? 1 : 0]);
  if (v.kind != op::variable || !c) return false;
  // Read as x ~ c.
  op kind = r.kind;
  if (!var_left) kind = kind == op::less ? op::greater : kind == op::less_equal ? op::greater_equal
                      : kind == op::greater ? op::less : kind == op::greater_equal ? op::less_equal : kind;
  const bool strict = kind == op::less || kind == op::greater;
  if (kind != op::less && kind != op::less_equal) out.push_back({v.var, true, strict, *c});
  if (kind != op::greater && kind != op::greater_equal) out.push_back({v.var, false, strict, *c});
  return true;
}

// Whether an assertion is made of bounds alone (a conjunction of them), and which.
bool bounds_only(const term& t, std::vector<simple_bound>& out) {
  if (t.kind == op::conjunction) return bounds_only(*t.args[0], out) && bounds_only(*t.args[1], out);
  return bounds_of(t, out);
}

// ---- Writing the problem ----

const std::set<std::string> reserved = {
    "DECL", "EXPR", "INIT", "TRANS", "TARGET", "boole", "float", "int", "inf", "not", "and", "nand", "or",
    "nor", "xor", "nxor", "impl", "div", "if", "then", "else", "fi", "static", "true", "false", "define",
    "abs", "exp", "sin", "cos", "min", "max", "pow", "nrt"};

bool plain_name(const std::string& s) {
  if (s.empty() || !(std::isalpha(static_cast<unsigned char>(s[0])) || s[0] == '_')) return false;
  for (char c : s)
    if (!(std::isalnum(static_cast<unsigned char>(c)) || c == '_')) return false;
  return reserved.count(s) == 0;
}

// A rational a double holds exactly, as an exact decimal; nothing otherwise. Exact, not the
// shortest text that reads back as the double: the certifier takes a decimal as written.
std::optional<std::string> exact_double_text(const mpq_class& q) {
  const std::optional<double> d = exact_double(q);
  if (!d) return std::nullopt;
  return exact_decimal(*d);
}

// A declared end: on the outer side of `q` both as written and as the double it reads as.
std::string range_end(const mpq_class& q, bool lower) {
  if (const std::optional<std::string> exact = exact_double_text(q)) return *exact;
  // One double beyond the outward rounding: its shortest text lies within half a step of it.
  char buffer[64];
  const double beyond = std::nextafter(double_toward(q, lower).get_d(), lower ? -HUGE_VAL : HUGE_VAL);
  return std::string(buffer, std::to_chars(buffer, buffer + sizeof buffer, beyond).ptr);
}

std::string integer_end(const mpq_class& q, bool lower) {
  if (abs(q) < mpq_class(0x1p53)) return q.get_str();
  return exact_decimal(double_toward(q, lower).get_d());
}

bool same_term(const term& a, const term& b) {
  if (&a == &b) return true;
  if (a.kind != b.kind || a.type != b.type || a.var != b.var || a.exponent != b.exponent || a.value != b.value ||
      a.args.size() != b.args.size())
    return false;
  for (std::size_t i = 0; i < a.args.size(); ++i)
    if (!same_term(*a.args[i], *b.args[i])) return false;
  return true;
}

class writer {
 public:
  writer(const symbols& table, const std::vector<interval>& ranges, const std::vector<std::string>& names,
         helper_names& helpers)
      : names_(names), ranges_(ranges), finder_(table, ranges_), constants_(helpers.pinned), counter_(helpers.counter) {
    for (const std::string& n : names) used_.insert(n);
  }

  // Counts the uses of every subterm: `let` and defined functions share them, and a shared
  // subterm written out at every use could grow the text exponentially.
  void count(const term& t) {
    if (++uses_[&t] > 1) return;
    for (const term_ref& a : t.args) count(*a);
  }

  std::string formula(const term& t) {
    if (shared(t)) {
      return name_of(t, "boole ", [&](const std::string& v) { return "(" + v + " <-> " + formula_text(t) + ")"; });
    }
    return formula_text(t);
  }

  std::string arith(const term& t) {
    if (shared(t)) {
      const interval r = finder_.forward(t);
      if (r.lo && r.hi) {
        return name_of(t, "", [&](const std::string& v) {
          declare_range(v, r);
          return "(" + v + " = " + arith_text(t) + ")";
        });
      }
    }
    return arith_text(t);
  }

  std::vector<std::string> declarations, definitions;

 private:
  // Quotients and ite become variables of their own anyway.
  bool shared(const term& t) const {
    if (t.args.empty() || t.kind == op::divide || (t.kind == op::ite && t.type != sort::boolean)) return false;
    const auto u = uses_.find(&t);
    return u != uses_.end() && u->second > 1;
  }

  // The variable that stands for a shared subterm, made at its first use.
  template <typename Define>
  std::string name_of(const term& t, const char* boolean_type, const Define& define) {
    if (const auto known = shared_names_.find(&t); known != shared_names_.end()) return known->second;
    const std::string v = fresh("let_");
    shared_names_.emplace(&t, v);
    if (*boolean_type != '\0') declarations.push_back(std::string(boolean_type) + v);
    definitions.push_back(define(v));
    return v;
  }

  std::string formula_text(const term& t) {
    switch (t.kind) {
      case op::variable: return names_[static_cast<std::size_t>(t.var)];
      case op::truth: return t.value != 0 ? "true" : "false";
      case op::negation: return "(not " + formula(*t.args[0]) + ")";
      case op::conjunction: return binary(t, " and ", true);
      case op::disjunction: return binary(t, " or ", true);
      case op::exclusive_or: return binary(t, " xor ", true);
      case op::implication: return binary(t, " -> ", true);
      case op::equivalence: return binary(t, " <-> ", true);
      case op::ite: {
        const std::string c = formula(*t.args[0]);
        return "((" + c + " and " + formula(*t.args[1]) + ") or ((not " + c + ") and " + formula(*t.args[2]) + "))";
      }
      case op::equal: return binary(t, " = ", false);
      case op::less_equal: return binary(t, " <= ", false);
      case op::less: return binary(t, " < ", false);
      case op::greater_equal: return binary(t, " >= ", false);
      case op::greater: return binary(t, " > ", false);
      case op::not_equal: return binary(t, " != ", false);
      default: throw std::runtime_error("a term where a formula belongs");
    }
  }

  std::string arith_text(const term& t) {
    switch (t.kind) {
      case op::variable: return names_[static_cast<std::size_t>(t.var)];
      case op::number: return number(t.value);
      case op::add: return "(" + arith(*t.args[0]) + " + " + arith(*t.args[1]) + ")";
      case op::subtract: return "(" + arith(*t.args[0]) + " - " + arith(*t.args[1]) + ")";
      case op::negate: return "(-" + arith(*t.args[0]) + ")";
      case op::multiply: return "(" + arith(*t.args[0]) + " * " + arith(*t.args[1]) + ")";
      case op::abs: return "abs(" + arith(*t.args[0]) + ")";
      case op::exp: return "exp(" + arith(*t.args[0]) + ")";
      case op::sin: return "sin(" + arith(*t.args[0]) + ")";
      case op::cos: return "cos(" + arith(*t.args[0]) + ")";
      case op::power:
        if (t.exponent == 0) return "1";
        if (t.exponent == 1) return arith(*t.args[0]);
        return "(" + arith(*t.args[0]) + " ^ " + std::to_string(t.exponent) + ")";
      case op::divide: return quotient(t);
      case op::ite: return choice(t);
      default: throw std::runtime_error("a formula where a term belongs");
    }
  }

  std::string binary(const term& t, const char* connective, bool boolean) {
    const std::string a = boolean ? formula(*t.args[0]) : arith(*t.args[0]);
    const std::string b = boolean ? formula(*t.args[1]) : arith(*t.args[1]);
    return "(" + a + connective + b + ")";
  }

  std::string fresh(const char* stem) {
    for (;;) {
      const std::string name = std::string(stem) + std::to_string(++counter_);
      if (used_.insert(name).second) return name;
    }
  }

  void declare_range(const std::string& name, const interval& range) {
    if (!range.lo || !range.hi) throw std::runtime_error("no finite range for the helper variable " + name);
    declarations.push_back("float [" + range_end(*range.lo, true) + ", " + range_end(*range.hi, false) + "] " + name);
  }

  // Integers up to 2^53 and dyadic rationals a double holds are written as they are; any
  // other number becomes a variable that an equation over such integers pins to it, so that
  // the search encloses it instead of rounding it.
  std::string number(const mpq_class& q) {
    const bool negative = q < 0;
    const mpq_class magnitude = abs(q);
    std::string text;
    if (const auto exact = exact_double_text(magnitude)) {
      text = *exact;
    } else {
      const auto known = constants_.find(magnitude);
      if (known != constants_.end()) {
        text = known->second;
      } else {
        const mpz_class& n = magnitude.get_num();
        const mpz_class& d = magnitude.get_den();
        if (!exact_double_text(n) || !exact_double_text(d)) throw std::runtime_error("the number " + q.get_str() + " is too large");
        text = fresh("c_");
        declare_range(text, {magnitude, magnitude});
        definitions.push_back("(" + *exact_double_text(d) + " * " + text + ") = " + *exact_double_text(n));
        constants_.emplace(magnitude, text);
      }
    }
    return negative ? "(-" + text + ")" : text;
  }

  std::string quotient(const term& t) {
    if (const auto known = helpers_.find(&t); known != helpers_.end()) return known->second;
    const mpq_class inverse = 1 / t.args[1]->value;
    if (exact_double_text(abs(inverse))) return "(" + arith(*t.args[0]) + " * " + number(inverse) + ")";
    // a / (n/d) = q exactly when n * q = d * a.
    const std::string q = fresh("q_");
    declare_range(q, finder_.forward(t));
    const mpq_class& c = t.args[1]->value;
    definitions.push_back("(" + number(c.get_num()) + " * " + q + ") = (" + number(c.get_den()) + " * " + arith(*t.args[0]) + ")");
    helpers_.emplace(&t, q);
    return q;
  }

  std::string choice(const term& t) {
    if (const auto known = helpers_.find(&t); known != helpers_.end()) return known->second;
    // (ite (<= a b) a b) is min(a, b), (ite (>= a b) a b) max(a, b), strict or not: written so,
    // they need no variable, and a Krait input written as SMT-LIB comes back as it was.
    const term& test = *t.args[0];
    if ((test.kind == op::less_equal || test.kind == op::less || test.kind == op::greater_equal || test.kind == op::greater) &&
        same_term(*test.args[0], *t.args[1]) && same_term(*test.args[1], *t.args[2])) {
      const bool min = test.kind == op::less_equal || test.kind == op::less;
      return std::string(min ? "min(" : "max(") + arith(*t.args[1]) + ", " + arith(*t.args[2]) + ")";
    }
    const std::string v = fresh("ite_");
    helpers_.emplace(&t, v);
    declare_range(v, finder_.forward(t));
    const std::string c = formula(*t.args[0]);
    definitions.push_back("(" + c + " -> (" + v + " = " + arith(*t.args[1]) + ")) and ((not " + c + ") -> (" + v + " = " +
                          arith(*t.args[2]) + "))");
    return v;
  }

  const std::vector<std::string>& names_;
  std::vector<interval> ranges_;
  range_finder finder_;
  std::set<std::string> used_;
  std::map<mpq_class, std::string>& constants_;
  std::map<const term*, std::string> helpers_;  // a shared subterm gets one variable
  std::map<const term*, int> uses_;
  std::map<const term*, std::string> shared_names_;
  int& counter_;
};

}  // namespace

std::string exact_decimal(double d) {
  mpq_class q(d);
  const bool negative = q < 0;
  q = abs(q);
  // A dyadic denominator 2^k: times 5^k it becomes 10^k.
  const std::size_t k = mpz_sizeinbase(q.get_den_mpz_t(), 2) - 1;
  mpz_class five, ten;
  mpz_ui_pow_ui(five.get_mpz_t(), 5, k);
  mpz_ui_pow_ui(ten.get_mpz_t(), 10, k);
  const mpz_class scaled = q.get_num() * five;
  std::string digits = scaled.get_str();
  if (k > 0) {
    if (digits.size() <= k) digits.insert(0, k + 1 - digits.size(), '0');
    digits.insert(digits.size() - k, ".");
    while (digits.back() == '0') digits.pop_back();
    if (digits.back() == '.') digits.pop_back();
  }
  return (negative ? "-" : "") + digits;
}

std::vector<interval> implied_ranges(const std::vector<term_ref>& assertions, const symbols& table) {
  std::vector<interval> ranges(table.declared.size());
  std::vector<const term*> relations;
  for (const term_ref& a : assertions) conjuncts(a, relations);
  std::erase_if(relations, [](const term* t) { return !is_relation(t->kind); });
  range_finder finder(table, ranges);
  // Chains settle within a few rounds; the limit keeps a slowly converging cycle short.
  for (int round = 0; round < 32; ++round) {
    bool changed = false;
    for (const term* r : relations) changed = finder.relation(*r) || changed;
    if (!changed) break;
  }
  return ranges;
}

std::string language_name(const std::string& name) {
  std::string base = name;
  for (char& c : base)
    if (!(std::isalnum(static_cast<unsigned char>(c)) || c == '_')) c = '_';
  if (!plain_name(base) || base.starts_with("c_") || base.starts_with("q_") || base.starts_with("ite_")) base = "s_" + base;
  return base;
}

// Names: the script's own where the language allows them, otherwise a readable variant.
void name_constants(const symbols& table, problem& out) {
  std::set<std::string> taken;
  for (int i : out.declared) {
    const std::string base = language_name(table.declared[static_cast<std::size_t>(i)].name);
    std::string unique = base;
    for (int k = 2; !taken.insert(unique).second; ++k) unique = base + "_" + std::to_string(k);
    out.names[static_cast<std::size_t>(i)] = unique;
  }
}

std::vector<interval> assertion_ranges(const std::vector<term_ref>& assertions, const symbols& table,
                                       const std::optional<interval>& default_range, const std::vector<int>& wanted) {
  std::vector<interval> ranges(table.declared.size());
  for (const term_ref& a : assertions) {
    std::vector<simple_bound> written;
    if (!bounds_only(*a, written)) continue;
    for (const simple_bound& b : written) {
      std::optional<mpq_class>& end = b.lower ? ranges[static_cast<std::size_t>(b.var)].lo : ranges[static_cast<std::size_t>(b.var)].hi;
      if (!end) end = b.value;
    }
  }
  // Narrowing through every relation is the costly part: only for ends the bounds leave open.
  std::vector<interval> implied;
  for (int i : wanted)
    if (implied.empty() && (!ranges[static_cast<std::size_t>(i)].lo || !ranges[static_cast<std::size_t>(i)].hi))
      implied = implied_ranges(assertions, table);
  std::vector<interval> out(table.declared.size());
  for (int i : wanted) {
    interval& r = out[static_cast<std::size_t>(i)] = ranges[static_cast<std::size_t>(i)];
    if (!r.lo) r.lo = implied[static_cast<std::size_t>(i)].lo;
    if (!r.hi) r.hi = implied[static_cast<std::size_t>(i)].hi;
    if (default_range) {
      if (!r.lo) r.lo = default_range->lo;
      if (!r.hi) r.hi = default_range->hi;
    }
  }
  return out;
}

std::string missing_range_message(const std::string& name, const interval& r) {
  const std::string side = !r.lo && !r.hi ? "a lower and an upper" : !r.lo ? "a lower" : "an upper";
  return "no finite range for " + name + ": add " + side + " bound, such as (assert (<= -100 " + name +
         " 100)), or give --default-range LO HI";
}

declared_range declare_range(interval r, sort type) {
  if (type == sort::integer) {
    mpz_class lo, hi;
    mpz_cdiv_q(lo.get_mpz_t(), r.lo->get_num_mpz_t(), r.lo->get_den_mpz_t());
    mpz_fdiv_q(hi.get_mpz_t(), r.hi->get_num_mpz_t(), r.hi->get_den_mpz_t());
    r = {mpq_class(lo), mpq_class(hi)};
  }
  if (*r.lo > *r.hi) r.hi = r.lo;  // contradictory bounds: any range will do, the search finds them
  auto written = [&](const mpq_class& q, bool lower) -> declared_end {
    if (type == sort::integer) return {integer_end(q, lower), abs(q) < mpq_class(0x1p53)};
    // A double is written exactly (`range_end`): the end reads back as it is.
    return {range_end(q, lower), exact_double(q).has_value()};
  };
  return {r, written(*r.lo, true), written(*r.hi, false)};
}

bool implied_by_ranges(const term& assertion, const std::vector<std::optional<declared_range>>& ranges) {
  std::vector<simple_bound> written;
  if (!bounds_only(assertion, written)) return false;
  return std::all_of(written.begin(), written.end(), [&](const simple_bound& b) {
    const std::optional<declared_range>& r = ranges[static_cast<std::size_t>(b.var)];
    if (!r) return false;
    const declared_end& e = b.lower ? r->low : r->high;
    const mpq_class& end = b.lower ? *r->range.lo : *r->range.hi;
    if (!e.exact) return false;
    return b.lower ? (b.strict ? end > b.value : end >= b.value) : (b.strict ? end < b.value : end <= b.value);
  });
}

written_formulas write_formulas(const std::vector<const term*>& assertions, const symbols& table,
                                const std::vector<interval>& ranges, const std::vector<std::string>& names,
                                helper_names& helpers) {
  writer w(table, ranges, names, helpers);
  for (const term* a : assertions) w.count(*a);
  std::vector<std::string> body;
  for (const term* a : assertions) body.push_back(w.formula(*a));
  written_formulas out;
  out.declarations = std::move(w.declarations);
  out.formulas = std::move(w.definitions);
  out.formulas.insert(out.formulas.end(), body.begin(), body.end());
  return out;
}

std::string krait_text(const std::string& comment, const std::vector<std::string>& declarations,
                       const std::vector<std::string>& formulas, const std::string& placeholder) {
  std::string text = "-- " + comment + "\nDECL\n";
  for (const std::string& d : declarations) text += "  " + d + ";\n";
  if (declarations.empty()) text += "  boole " + placeholder + ";\n";
  text += "EXPR\n";
  for (const std::string& f : formulas) text += "  " + f + ";\n";
  if (formulas.empty()) text += "  true;\n";
  return text;
}

problem named_constants(const symbols& table) {
  problem out;
  for (const auto& [name, index] : table.constants) out.declared.push_back(index);
  std::sort(out.declared.begin(), out.declared.end());
  out.names.assign(table.declared.size(), "");
  name_constants(table, out);
  out.lows.assign(table.declared.size(), 0);
  return out;
}

problem build_problem(const std::vector<term_ref>& assertions, const symbols& table,
                      const std::optional<interval>& default_range, const std::string& source) {
  problem out = named_constants(table);

  std::vector<bool> mentioned(table.declared.size(), false);
  auto mark = [&](auto&& self, const term& t) -> void {
    if (t.kind == op::variable) mentioned[static_cast<std::size_t>(t.var)] = true;
    for (const term_ref& a : t.args) self(self, *a);
  };
  for (const term_ref& a : assertions) mark(mark, *a);
  std::vector<int> wanted;
  for (int i : out.declared)
    if (table.declared[static_cast<std::size_t>(i)].type != sort::boolean && mentioned[static_cast<std::size_t>(i)]) wanted.push_back(i);
  const std::vector<interval> found = assertion_ranges(assertions, table, default_range, wanted);

  std::vector<std::optional<declared_range>> declared(table.declared.size());
  std::vector<interval> ranges(table.declared.size());
  for (int i : out.declared) {
    const declaration& d = table.declared[static_cast<std::size_t>(i)];
    if (d.type == sort::boolean) continue;
    // A constant no assertion mentions takes any value: 0.
    const interval r = mentioned[static_cast<std::size_t>(i)] ? found[static_cast<std::size_t>(i)] : interval{mpq_class(0), mpq_class(0)};
    if (!r.lo || !r.hi) throw missing_range(missing_range_message(d.name, r));
    declared[static_cast<std::size_t>(i)] = declare_range(r, d.type);
    ranges[static_cast<std::size_t>(i)] = declared[static_cast<std::size_t>(i)]->range;
    out.lows[static_cast<std::size_t>(i)] = *ranges[static_cast<std::size_t>(i)].lo;
  }

  // An assertion of bounds that the declared ranges imply exactly says nothing more.
  std::vector<const term*> kept;
  for (const term_ref& a : assertions)
    if (!implied_by_ranges(*a, declared)) kept.push_back(a.get());
  helper_names helpers;
  const written_formulas written = write_formulas(kept, table, ranges, out.names, helpers);

  std::vector<std::string> declarations;
  for (int i : out.declared) {
    const declaration& d = table.declared[static_cast<std::size_t>(i)];
    const std::string& name = out.names[static_cast<std::size_t>(i)];
    if (d.type == sort::boolean) {
      declarations.push_back("boole " + name);
    } else {
      const declared_range& r = *declared[static_cast<std::size_t>(i)];
      declarations.push_back(std::string(d.type == sort::integer ? "int" : "float") + " [" + r.low.text + ", " + r.high.text + "] " + name);
    }
  }
  declarations.insert(declarations.end(), written.declarations.begin(), written.declarations.end());
  out.text = krait_text(source + ", as krait-smt2 reads it", declarations, written.formulas, "unused_");
  return out;
}

}  // namespace smt2
