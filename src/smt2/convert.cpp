// Writing the program's inputs as SMT-LIB scripts.
#include "smt2/convert.hpp"

#include <map>
#include <stdexcept>

#include "certify/formula.hpp"
#include "hexpr/hexpr_nodes.hpp"
#include "lang/symtab.hpp"
#include "smt2/terms.hpp"

namespace smt2 {
namespace {

using kind = certify::op;  // the certifier's node kinds, beside this front's own

class writer {
 public:
  explicit writer(const certify::formula& f) : f_(f), formula_only_(f.vars.size(), true) {
    for (const certify::node& n : f.nodes)
      for (int a : n.args)
        if (f.nodes[static_cast<std::size_t>(a)].kind == kind::variable && n.kind != kind::truth)
          formula_only_[static_cast<std::size_t>(f.nodes[static_cast<std::size_t>(a)].var)] = false;
  }

  // Integer variables of range 0..1 that only ever stand as formulas are Boolean.
  bool boolean(std::size_t v) const {
    const certify::variable& x = f_.vars[v];
    return x.is_int && x.lower == 0 && x.upper == 1 && formula_only_[v];
  }

  std::string name(std::size_t v) const { return symbol_term(f_.vars[v].label(f_.with_steps)); }

  std::string term(int i) {
    const certify::node& n = f_.nodes[static_cast<std::size_t>(i)];
    auto arg = [&](std::size_t k) { return term(n.args[k]); };
    switch (n.kind) {
      case kind::variable: return name(static_cast<std::size_t>(n.var));
      case kind::number: return number(n);
      case kind::negate: return "(- " + arg(0) + ")";
      case kind::add: return "(+ " + arg(0) + " " + arg(1) + ")";
      case kind::subtract: return "(- " + arg(0) + " " + arg(1) + ")";
      case kind::multiply: return "(* " + arg(0) + " " + arg(1) + ")";
      case kind::power: return "(^ " + arg(0) + " " + n.exponent.get_str() + ")";
      case kind::exp: return "(exp " + arg(0) + ")";
      case kind::sin: return "(sin " + arg(0) + ")";
      case kind::cos: return "(cos " + arg(0) + ")";
      case kind::abs: return "(abs " + arg(0) + ")";
      case kind::min:
      case kind::max: {
        const std::string a = arg(0), b = arg(1);
        return "(ite (" + std::string(n.kind == kind::min ? "<=" : ">=") + " " + a + " " + b + ") " + a + " " + b + ")";
      }
      case kind::root: {
        // The root is a new constant r: r^n equals the radicand, r >= 0 for an even order; a
        // relation over an even root holds only where the radicand is not negative.
        const std::string radicand = arg(0);
        const std::string r = "root_" + std::to_string(roots_.size() + 1);
        const bool even = mpz_even_p(n.exponent.get_mpz_t());
        roots_.push_back(r);
        // Below 0 an even root is pinned to 0, where the guards make its relations false.
        definitions_.push_back(even ? "(and (>= " + r + " 0) (= (^ " + r + " " + n.exponent.get_str() + ") (ite (>= " +
                                          radicand + " 0) " + radicand + " 0)))"
                                    : "(= (^ " + r + " " + n.exponent.get_str() + ") " + radicand + ")");
        if (even) guards_.push_back("(>= " + radicand + " 0)");
        return r;
      }
      default: return formula(i);
    }
  }

  std::string formula(int i) {
    const certify::node& n = f_.nodes[static_cast<std::size_t>(i)];
    auto arg = [&](std::size_t k) { return formula(n.args[k]); };
    switch (n.kind) {
      case kind::truth: {
        const certify::node& t = f_.nodes[static_cast<std::size_t>(n.args[0])];
        if (t.kind == kind::variable && boolean(static_cast<std::size_t>(t.var))) return name(static_cast<std::size_t>(t.var));
        return relation("(>= " + term(n.args[0]) + " 1)", 0);
      }
      case kind::negation: return "(not " + arg(0) + ")";
      case kind::conjunction:
      case kind::disjunction: {
        std::string s = n.kind == kind::conjunction ? "(and" : "(or";
        for (std::size_t k = 0; k < n.args.size(); ++k) s += " " + arg(k);
        return s + ")";
      }
      case kind::exclusive_or: return "(xor " + arg(0) + " " + arg(1) + ")";
      case kind::implication: return "(=> " + arg(0) + " " + arg(1) + ")";
      case kind::equal:
      case kind::not_equal:
      case kind::less_equal:
      case kind::less:
      case kind::greater_equal:
      case kind::greater: {
        const std::size_t guards = guards_.size();
        const char* name = n.kind == kind::equal ? "=" : n.kind == kind::not_equal ? "distinct" : n.kind == kind::less_equal ? "<="
                         : n.kind == kind::less ? "<" : n.kind == kind::greater_equal ? ">=" : ">";
        const std::string a = term(n.args[0]), b = term(n.args[1]);
        return relation("(" + std::string(name) + " " + a + " " + b + ")", guards);
      }
      default: throw std::invalid_argument("a term where a formula belongs");
    }
  }

  std::vector<std::string> roots_, definitions_;
  std::map<std::string, std::string> rounded_;  // a number as written, as the program reads it

 private:
  // The double the program reads, exactly: the problem written is the one the search decides,
  // so that another solver's answer can be set beside the program's, and the way back gives
  // the same search.
  std::string number(const certify::node& n) {
    const mpq_class read(n.read);
    const std::string text = rational_term(read, read.get_den() == 1);
    if (read != n.value) rounded_.emplace(n.written, text);
    return text;
  }

  // A relation with the guards of the even roots met inside it since `from`.
  std::string relation(const std::string& text, std::size_t from) {
    if (guards_.size() == from) return text;
    std::string s = "(and";
    for (std::size_t k = from; k < guards_.size(); ++k) s += " " + guards_[k];
    guards_.resize(from);
    return s + " " + text + ")";
  }

  const certify::formula& f_;
  std::vector<bool> formula_only_;
  std::vector<std::string> guards_;
};

}  // namespace

std::string krait_to_smt2(const hexpr& parsed, int depth, const std::string& source) {
  const bool system = parsed.get_opname() == HEXPR_PROOF_SPEC;
  if (!system && depth >= 0) throw std::invalid_argument("--depth applies to transition systems only");
  if (system && depth < 0) throw std::invalid_argument("a transition system needs --depth K");
  const certify::formula f =
      system ? certify::formula::unwound(parsed, static_cast<unsigned>(depth)) : certify::formula::plain(parsed);
  writer w(f);
  const std::string body = w.formula(f.root);

  bool integers = false, reals = false, transcendental = false, nonlinear = false;
  for (const certify::variable& v : f.vars) (v.is_int ? integers : reals) = true;
  for (const certify::node& n : f.nodes) {
    if (n.kind == kind::exp || n.kind == kind::sin || n.kind == kind::cos) transcendental = true;
    if (n.kind == kind::multiply || n.kind == kind::power || n.kind == kind::root) nonlinear = true;
  }
  const std::string logic = transcendental ? "QF_NRAT" : std::string("QF_") + (nonlinear ? "N" : "L") +
                                                             (integers && reals ? "IRA" : integers ? "IA" : "RA");
  std::string s = "; " + source + (system ? ", unwound to depth " + std::to_string(depth) : "") + ", written by krait-smt2\n";
  for (const auto& [written, read] : w.rounded_) s += "; " + written + " is written as the double the program reads: " + read + "\n";
  s += "(set-logic " + logic + ")\n";

  // Declared order for a plain formula (it fixes the order of the search's variables), every
  // declared variable included; instances by first use in an unwinding.
  std::vector<std::size_t> order;
  if (!system && !symtab.frames.empty()) {
    for (const symbol_ref& r : symtab.frames[0])
      for (std::size_t i = 0; i < f.vars.size(); ++i)
        if (f.vars[i].name == (*r)->name) order.push_back(i);
  }
  if (order.size() != f.vars.size()) {
    order.clear();
    for (std::size_t i = 0; i < f.vars.size(); ++i) order.push_back(i);
  }
  for (std::size_t i : order) {
    const certify::variable& v = f.vars[i];
    const std::string n = w.name(i);
    s += "(declare-const " + n + " " + (w.boolean(i) ? "Bool" : v.is_int ? "Int" : "Real") + ")\n";
  }
  for (const std::string& r : w.roots_) s += "(declare-const " + r + " Real)\n";
  for (std::size_t i : order) {
    if (w.boolean(i)) continue;
    const bool integral = f.vars[i].is_int;
    const mpq_class lower(f.vars[i].lower_read), upper(f.vars[i].upper_read);
    s += "(assert (<= " + rational_term(lower, integral) + " " + w.name(i) + " " + rational_term(upper, integral) + "))\n";
  }
  for (const std::string& d : w.definitions_) s += "(assert " + d + ")\n";
  s += "(assert " + body + ")\n(check-sat)\n(exit)\n";
  return s;
}

}  // namespace smt2
