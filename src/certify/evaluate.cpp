#include "certify/evaluate.hpp"

#include <algorithm>

namespace certify {

value value::of(const mpq_class& q, std::size_t free_count) {
  value v;
  v.exact = true;
  v.q = q;
  v.e = enclosure(q);
  v.slopes.assign(free_count, enclosure());
  return v;
}

value value::over(const enclosure& e, std::size_t free_count) {
  value v;
  v.e = e;
  v.slopes.assign(free_count, enclosure());
  return v;
}

namespace {

enclosure number(long n) { return enclosure(mpq_class(n)); }

// The exact n-th root of q, if q has one.
bool exact_root(const mpq_class& q, unsigned long n, mpq_class& out) {
  if (q < 0 && n % 2 == 0) return false;
  mpz_class num, den;
  const bool a = mpz_root(num.get_mpz_t(), mpz_class(abs(q.get_num())).get_mpz_t(), n) != 0;
  const bool b = mpz_root(den.get_mpz_t(), q.get_den().get_mpz_t(), n) != 0;
  if (!a || !b) return false;
  out = mpq_class(num, den);
  out.canonicalize();
  if (q < 0) out = -out;
  return true;
}

// Powers of exact values stay exact up to this exponent; beyond it only enclosures are kept,
// so that a huge exponent cannot exhaust memory.
const mpz_class exact_power_limit = 4096;

truth both(truth a, truth b) {
  if (a == truth::no || b == truth::no) return truth::no;
  return a == truth::yes && b == truth::yes ? truth::yes : truth::unknown;
}
truth either(truth a, truth b) {
  if (a == truth::yes || b == truth::yes) return truth::yes;
  return a == truth::no && b == truth::no ? truth::no : truth::unknown;
}
truth negated(truth a) { return a == truth::yes ? truth::no : a == truth::no ? truth::yes : truth::unknown; }

// The relation "d compared with 0", d = left - right, over an enclosure of d.
truth compare(op kind, const enclosure& d) {
  if (d.empty()) return truth::no;  // undefined at every point: the relation is false
  const bool above = d.positive(), below = d.negative();
  const bool at_most = d.nonpositive(), at_least = d.nonnegative();
  const bool zero = at_most && at_least;
  truth t;
  switch (kind) {
    case op::equal: t = zero ? truth::yes : (above || below) ? truth::no : truth::unknown; break;
    case op::not_equal: t = (above || below) ? truth::yes : zero ? truth::no : truth::unknown; break;
    case op::less_equal: t = at_most ? truth::yes : above ? truth::no : truth::unknown; break;
    case op::less: t = below ? truth::yes : at_least ? truth::no : truth::unknown; break;
    case op::greater_equal: t = at_least ? truth::yes : below ? truth::no : truth::unknown; break;
    default: t = above ? truth::yes : at_most ? truth::no : truth::unknown; break;
  }
  // Where the value is undefined at some points, the relation is false there.
  return t == truth::yes && d.partial() ? truth::unknown : t;
}

truth compare_exact(op kind, const mpq_class& l, const mpq_class& r) {
  const int c = cmp(l, r);
  bool holds;
  switch (kind) {
    case op::equal: holds = c == 0; break;
    case op::not_equal: holds = c != 0; break;
    case op::less_equal: holds = c <= 0; break;
    case op::less: holds = c < 0; break;
    case op::greater_equal: holds = c >= 0; break;
    default: holds = c > 0; break;
  }
  return holds ? truth::yes : truth::no;
}

}  // namespace

value evaluator::apply(const node& n) {
  const std::size_t m = free_;
  if (n.kind == op::variable) return (*vars_)[static_cast<std::size_t>(n.var)];
  if (n.kind == op::number) return value::of(n.value, m);
  const value& a = values_[static_cast<std::size_t>(n.args[0])];
  const value* b = n.args.size() > 1 ? &values_[static_cast<std::size_t>(n.args[1])] : nullptr;
  value r;
  r.slopes.resize(m);
  const bool exact = a.exact && (b == nullptr || b->exact);
  switch (n.kind) {
    case op::negate:
      if (exact) return value::of(-a.q, m);
      r.e = -a.e;
      for (std::size_t i = 0; i < m; ++i) r.slopes[i] = -a.slopes[i];
      return r;
    case op::add:
    case op::subtract: {
      const bool plus = n.kind == op::add;
      if (exact) return value::of(plus ? mpq_class(a.q + b->q) : mpq_class(a.q - b->q), m);
      r.e = plus ? a.e + b->e : a.e - b->e;
      for (std::size_t i = 0; i < m; ++i) r.slopes[i] = plus ? a.slopes[i] + b->slopes[i] : a.slopes[i] - b->slopes[i];
      return r;
    }
    case op::multiply:
      if (exact) return value::of(a.q * b->q, m);
      r.e = a.e * b->e;
      for (std::size_t i = 0; i < m; ++i) r.slopes[i] = a.slopes[i] * b->e + a.e * b->slopes[i];
      return r;
    case op::power:
      if (exact && n.exponent <= exact_power_limit) {
        mpz_class num, den;
        const unsigned long k = n.exponent.get_ui();
        mpz_pow_ui(num.get_mpz_t(), a.q.get_num_mpz_t(), k);
        mpz_pow_ui(den.get_mpz_t(), a.q.get_den_mpz_t(), k);
        return value::of(mpq_class(num, den), m);
      }
      r.e = power(a.e, n.exponent);
      if (m > 0) {
        const enclosure factor =
            n.exponent == 0 ? number(0) : enclosure(mpq_class(n.exponent)) * power(a.e, n.exponent - 1);
        for (std::size_t i = 0; i < m; ++i) r.slopes[i] = factor * a.slopes[i];
      }
      return r;
    case op::root: {
      const unsigned long k = n.exponent.get_ui();
      mpq_class q;
      if (exact && exact_root(a.q, k, q)) return value::of(q, m);
      r.e = root(a.e, k);
      if (m > 0) {
        // d/dx x^(1/k) = r / (k x), unbounded where x may be 0.
        const enclosure denominator = enclosure(mpq_class(k)) * a.e;
        const enclosure factor = denominator.contains_zero() ? enclosure::entire() : r.e * reciprocal(denominator);
        for (std::size_t i = 0; i < m; ++i) r.slopes[i] = factor * a.slopes[i];
      }
      return r;
    }
    case op::exp:
    case op::sin:
    case op::cos: {
      if (exact && a.q == 0) return value::of(n.kind == op::sin ? 0 : 1, m);
      r.e = n.kind == op::exp ? exp(a.e) : n.kind == op::sin ? sin(a.e) : cos(a.e);
      if (m > 0) {
        const enclosure factor = n.kind == op::exp ? r.e : n.kind == op::sin ? cos(a.e) : -sin(a.e);
        for (std::size_t i = 0; i < m; ++i) r.slopes[i] = factor * a.slopes[i];
      }
      return r;
    }
    case op::abs:
      if (exact) return value::of(abs(a.q), m);
      r.e = abs(a.e);
      for (std::size_t i = 0; i < m; ++i) {
        const enclosure& s = a.slopes[i];
        r.slopes[i] = a.e.positive() ? s : a.e.negative() ? -s : enclosure::hull(s, -s);
      }
      return r;
    case op::min:
    case op::max: {
      const bool lower = n.kind == op::min;
      if (exact) return value::of(lower ? std::min(a.q, b->q) : std::max(a.q, b->q), m);
      r.e = lower ? min(a.e, b->e) : max(a.e, b->e);
      // Which operand is taken, where the enclosures tell.
      const bool a_below = (a.e - b->e).negative(), b_below = (b->e - a.e).negative();
      for (std::size_t i = 0; i < m; ++i) {
        const bool take_a = lower ? a_below : b_below;
        const bool take_b = lower ? b_below : a_below;
        r.slopes[i] = take_a ? a.slopes[i] : take_b ? b->slopes[i] : enclosure::hull(a.slopes[i], b->slopes[i]);
      }
      return r;
    }
    default: return r;
  }
}

truth evaluator::decide(const node& n) {
  auto t = [&](std::size_t i) { return truths_[static_cast<std::size_t>(n.args[i])]; };
  switch (n.kind) {
    case op::truth: {
      const value& v = values_[static_cast<std::size_t>(n.args[0])];
      if (v.exact) return v.q >= 1 ? truth::yes : truth::no;
      return compare(op::greater_equal, v.e - enclosure(mpq_class(1)));
    }
    case op::negation: return negated(t(0));
    case op::conjunction: {
      truth r = truth::yes;
      for (std::size_t i = 0; i < n.args.size(); ++i) r = both(r, t(i));
      return r;
    }
    case op::disjunction: {
      truth r = truth::no;
      for (std::size_t i = 0; i < n.args.size(); ++i) r = either(r, t(i));
      return r;
    }
    case op::implication: return either(negated(t(0)), t(1));
    case op::exclusive_or:
      if (t(0) == truth::unknown || t(1) == truth::unknown) return truth::unknown;
      return t(0) != t(1) ? truth::yes : truth::no;
    default: break;
  }
  const value& l = values_[static_cast<std::size_t>(n.args[0])];
  const value& r = values_[static_cast<std::size_t>(n.args[1])];
  if (l.exact && r.exact) return compare_exact(n.kind, l.q, r.q);
  return compare(n.kind, l.e - r.e);
}

truth evaluator::run(const std::vector<value>& vars, std::size_t free_count) {
  free_ = free_count;
  vars_ = &vars;
  values_.assign(f_.nodes.size(), value());
  truths_.assign(f_.nodes.size(), truth::unknown);
  for (std::size_t i = 0; i < f_.nodes.size(); ++i) {
    const node& n = f_.nodes[i];
    if (is_term(n.kind)) {
      values_[i] = apply(n);
    } else if (std::find(assumed.begin(), assumed.end(), static_cast<int>(i)) != assumed.end()) {
      truths_[i] = truth::yes;
    } else {
      truths_[i] = decide(n);
    }
  }
  return truths_[static_cast<std::size_t>(f_.root)];
}

int evaluator::culprit(int index) const {
  const node& n = f_.nodes[static_cast<std::size_t>(index)];
  const truth own = result(index);
  // A relation, a negated one or an exclusive or speaks for itself.
  if (n.kind != op::conjunction && n.kind != op::disjunction && n.kind != op::implication) return index;
  if (n.kind == op::implication) {
    // False: the premise holds and the consequence fails. Open: whichever part is open.
    if (own == truth::no || result(n.args[1]) == truth::unknown) return culprit(n.args[1]);
    return culprit(n.args[0]);
  }
  // The first operand that carries the verdict (in a false disjunction, every operand does).
  for (int arg : n.args)
    if (result(arg) == own) return culprit(arg);
  return culprit(n.args[0]);
}

}  // namespace certify
