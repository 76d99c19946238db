// The commands of a script.
#include "smt2/script.hpp"

#include <cmath>
#include <set>

#include "certify/enclosure.hpp"
#include "version.hpp"

namespace smt2 {
namespace {

const std::set<std::string> logics = {"QF_NRA", "QF_NIA", "QF_LRA", "QF_LIA", "QF_NIRA", "QF_LIRA",
                                      "QF_RDL", "QF_IDL", "QF_NRAT", "QF_UFNRA_T", "ALL"};

// q rounded to `digits` significant decimal digits toward minus infinity (or plus), written
// with a leading '-' when negative.
std::string plain_toward(const mpq_class& q, int digits, bool down) {
  if (q == 0) return "0.0";
  const bool negative = q < 0;
  mpq_class a = abs(q);
  // a = m * 10^e with 10^(digits-1) <= m < 10^digits; the digit counts give e within one.
  long e = static_cast<long>(mpz_sizeinbase(a.get_num_mpz_t(), 10)) - static_cast<long>(mpz_sizeinbase(a.get_den_mpz_t(), 10)) -
           (digits - 1);
  auto scaled = [&](long exponent) {
    mpz_class scale;
    mpz_ui_pow_ui(scale.get_mpz_t(), 10, static_cast<unsigned long>(std::labs(exponent)));
    return exponent >= 0 ? mpq_class(a / scale) : mpq_class(a * scale);
  };
  mpz_class low, high;
  mpz_ui_pow_ui(low.get_mpz_t(), 10, static_cast<unsigned long>(digits - 1));
  high = low * 10;
  mpq_class m = scaled(e);
  while (m >= high) m = scaled(++e);
  while (m < low) m = scaled(--e);
  mpz_class whole;
  // Toward minus infinity for the signed value: away from zero for a negative one.
  if (down != negative) {
    mpz_fdiv_q(whole.get_mpz_t(), m.get_num_mpz_t(), m.get_den_mpz_t());
  } else {
    mpz_cdiv_q(whole.get_mpz_t(), m.get_num_mpz_t(), m.get_den_mpz_t());
  }
  std::string s = whole.get_str();
  if (e >= 0) {
    s.append(static_cast<std::size_t>(e), '0');
    s += ".0";
  } else {
    const std::size_t point = static_cast<std::size_t>(-e);
    if (s.size() <= point) s.insert(0, point + 1 - s.size(), '0');
    s.insert(s.size() - point, ".");
    while (s.back() == '0') s.pop_back();
    if (s.back() == '.') s += '0';
  }
  return negative ? "-" + s : s;
}

// The same as an SMT-LIB term.
std::string decimal_toward(const mpq_class& q, int digits, bool down) {
  const std::string s = plain_toward(q, digits, down);
  return s[0] == '-' ? "(- " + s.substr(1) + ")" : s;
}

std::string quoted(const std::string& s) {
  std::string r = "\"";
  for (char c : s) r += c == '"' ? std::string("\"\"") : std::string(1, c);
  return r + "\"";
}

// Exact values of terms at a model; `approximate` is set where an irrational coordinate (or a
// transcendental function) forces a rounded value.
struct evaluator {
  const std::vector<std::optional<value_range>>& model;
  bool approximate = false;

  mpq_class operator()(const term& t) {
    auto at = [&](std::size_t i) { return (*this)(*t.args[i]); };
    switch (t.kind) {
      case op::variable: {
        const std::optional<value_range>& v = model[static_cast<std::size_t>(t.var)];
        if (!v) return 0;
        if (v->lower != v->upper) approximate = true;
        return (v->lower + v->upper) / 2;
      }
      case op::number:
      case op::truth: return t.value;
      case op::negation: return at(0) == 0 ? 1 : 0;
      case op::conjunction: return at(0) != 0 && at(1) != 0 ? 1 : 0;
      case op::disjunction: return at(0) != 0 || at(1) != 0 ? 1 : 0;
      case op::exclusive_or: return (at(0) != 0) != (at(1) != 0) ? 1 : 0;
      case op::implication: return at(0) == 0 || at(1) != 0 ? 1 : 0;
      case op::equivalence: return (at(0) != 0) == (at(1) != 0) ? 1 : 0;
      case op::ite: return at(0) != 0 ? at(1) : at(2);
      case op::equal: return at(0) == at(1) ? 1 : 0;
      case op::less_equal: return at(0) <= at(1) ? 1 : 0;
      case op::less: return at(0) < at(1) ? 1 : 0;
      case op::greater_equal: return at(0) >= at(1) ? 1 : 0;
      case op::greater: return at(0) > at(1) ? 1 : 0;
      case op::not_equal: return at(0) != at(1) ? 1 : 0;
      case op::add: return at(0) + at(1);
      case op::subtract: return at(0) - at(1);
      case op::negate: return -at(0);
      case op::multiply: return at(0) * at(1);
      case op::divide: return at(0) / at(1);
      case op::abs: return abs(at(0));
      case op::power: {
        const mpq_class b = at(0);
        mpq_class p;
        mpz_pow_ui(p.get_num_mpz_t(), b.get_num_mpz_t(), t.exponent);
        mpz_pow_ui(p.get_den_mpz_t(), b.get_den_mpz_t(), t.exponent);
        return p;
      }
      case op::exp:
      case op::sin:
      case op::cos: {
        approximate = true;
        const double x = at(0).get_d();
        const double v = t.kind == op::exp ? std::exp(x) : t.kind == op::sin ? std::sin(x) : std::cos(x);
        return std::isfinite(v) ? mpq_class(v) : mpq_class(0);  // a rough value; printed ones are enclosed
      }
    }
    return 0;
  }
};

// Validated values of arithmetic terms where exact ones are not to be had: the witness's
// enclosures of irrational coordinates, transcendental functions at 160 bits.
certify::enclosure enclose(const term& t, const std::vector<std::optional<value_range>>& model) {
  using certify::enclosure;
  auto at = [&](std::size_t i) { return enclose(*t.args[i], model); };
  switch (t.kind) {
    case op::variable: {
      const std::optional<value_range>& v = model[static_cast<std::size_t>(t.var)];
      return v ? enclosure(v->lower, v->upper) : enclosure();
    }
    case op::number: return enclosure(t.value);
    case op::add: return at(0) + at(1);
    case op::subtract: return at(0) - at(1);
    case op::negate: return -at(0);
    case op::multiply: return at(0) * at(1);
    case op::divide: return at(0) * reciprocal(at(1));
    case op::abs: return abs(at(0));
    case op::power: return power(at(0), mpz_class(t.exponent));
    case op::exp: return exp(at(0));
    case op::sin: return sin(at(0));
    case op::cos: return cos(at(0));
    case op::ite: {
      evaluator choose{model};
      return choose(*t.args[0]) != 0 ? at(1) : at(2);
    }
    default: return enclosure::entire();
  }
}

// The witness speaks of the constants of the formula searched. The others: those the
// assertions do not mention range over the point 0; those whose every assertion the declared
// ranges imply were dropped from the formula and hold any value of their range, say its
// lower end.
void complete_model(outcome& o, const problem& p, const std::vector<mpq_class>& lows) {
  for (int i : p.declared) {
    const mpq_class& low = lows[static_cast<std::size_t>(i)];
    o.values.emplace(p.names[static_cast<std::size_t>(i)], value_range{low, low});
  }
}

}  // namespace

script::script(std::ostream& out, std::string source, checker check)
    : out_(out), source_(std::move(source)), check_(std::move(check)) {}

void script::run(std::istream& in) {
  reader r(in);
  for (;;) {
    sexpr command;
    try {
      if (!r.next(command)) break;
      if (!execute(command)) break;
    } catch (const script_error& e) {
      error(e.line, e.what());
    }
    out_.flush();
  }
  out_.flush();
}

void script::success() {
  if (print_success_) out_ << "success" << std::endl;
}

void script::error(int line, const std::string& message) {
  out_ << "(error " << quoted("line " + std::to_string(line) + ": " + message) << ")" << std::endl;
}

bool script::execute(const sexpr& c) {
  if (!c.is_list() || c.items.empty() || c.items[0].kind != sexpr::symbol) throw script_error(c.line, "a command is (name arguments)");
  const std::string& name = c.items[0].text;
  const std::size_t n = c.items.size();
  auto arity = [&](std::size_t k) {
    if (n != k + 1) throw script_error(c.line, name + " takes " + std::to_string(k) + " argument" + (k == 1 ? "" : "s"));
  };
  if (name == "exit") {
    arity(0);
    success();
    return false;
  }
  if (name == "set-logic") {
    arity(1);
    if (logic_set_) throw script_error(c.line, "the logic is already set");
    if (!logics.count(c.items[1].text)) {
      out_ << "unsupported" << std::endl;
      return true;
    }
    logic_set_ = true;
    success();
  } else if (name == "set-info") {
    if (n < 2 || c.items[1].kind != sexpr::keyword) throw script_error(c.line, "set-info takes a keyword and a value");
    success();
  } else if (name == "set-option") {
    set_option(c);
  } else if (name == "get-info") {
    get_info(c);
  } else if (name == "declare-const") {
    arity(2);
    declare(c, c.items[1], sexpr{}, c.items[2]);
  } else if (name == "declare-fun") {
    arity(3);
    declare(c, c.items[1], c.items[2], c.items[3]);
  } else if (name == "define-fun") {
    define(c);
  } else if (name == "assert") {
    arity(1);
    term_ref t = elaborate(c.items[1], table_);
    if (t->type != sort::boolean) throw script_error(c.line, "an assertion must be of sort Bool");
    assertions_.push_back(t);
    assertion_ids_.push_back(++last_id_);
    last_.reset();
    success();
  } else if (name == "check-sat") {
    arity(0);
    check_sat(c);
  } else if (name == "get-model") {
    arity(0);
    get_model(c);
  } else if (name == "get-value") {
    arity(1);
    get_value(c);
  } else if (name == "push" || name == "pop") {
    push(c, name == "pop");
  } else if (name == "reset-assertions" || name == "reset") {
    arity(0);
    table_ = symbols{};
    assertions_.clear();
    assertion_ids_.clear();
    frames_.clear();
    forget_contexts();
    last_.reset();
    if (name == "reset") {
      logic_set_ = false;
      print_success_ = false;
      settings_ = {};
    }
    success();
  } else if (name == "echo") {
    arity(1);
    if (c.items[1].kind != sexpr::string) throw script_error(c.line, "echo takes a string");
    out_ << to_text(c.items[1]) << std::endl;
  } else if (name == "check-sat-assuming" || name == "declare-sort" || name == "define-sort" || name == "get-assertions" ||
             name == "get-assignment" || name == "get-proof" || name == "get-unsat-core" || name == "get-unsat-assumptions" ||
             name == "get-option" || name == "define-fun-rec" || name == "define-funs-rec" || name == "declare-datatype" ||
             name == "declare-datatypes") {
    out_ << "unsupported" << std::endl;
  } else {
    throw script_error(c.line, "unknown command " + name);
  }
  return true;
}

void script::set_option(const sexpr& c) {
  if (c.items.size() != 3 || c.items[1].kind != sexpr::keyword) throw script_error(c.line, "set-option takes a keyword and a value");
  const std::string& key = c.items[1].text;
  const sexpr& v = c.items[2];
  auto flag = [&]() {
    if (!v.is_symbol("true") && !v.is_symbol("false")) throw script_error(c.line, key + " takes true or false");
    return v.text == "true";
  };
  if (key == ":print-success") {
    print_success_ = flag();
  } else if (key == ":produce-models") {
    flag();  // models are always kept
  } else if (key == ":random-seed") {
    if (v.kind != sexpr::numeral || v.text.size() > 9) throw script_error(c.line, ":random-seed takes a numeral below 10^9");
    settings_.random_seed = std::stoi(v.text);
  } else if (key == ":precision") {
    if (v.kind != sexpr::numeral && v.kind != sexpr::decimal) throw script_error(c.line, ":precision takes a number");
    const double width = literal_value(v.text).get_d();
    if (!std::isfinite(width)) throw script_error(c.line, ":precision is too large");
    settings_.min_split_width = width;
  } else if (key == ":diagnostic-output-channel" || key == ":regular-output-channel" || key == ":produce-unsat-cores" ||
             key == ":produce-proofs" || key == ":produce-assignments" || key == ":global-declarations" ||
             key == ":interactive-mode" || key == ":produce-assertions" || key == ":reproducible-resource-limit" ||
             key == ":verbosity" || key == ":produce-unsat-assumptions") {
    out_ << "unsupported" << std::endl;
    return;
  } else {
    out_ << "unsupported" << std::endl;
    return;
  }
  success();
}

void script::get_info(const sexpr& c) {
  if (c.items.size() != 2 || c.items[1].kind != sexpr::keyword) throw script_error(c.line, "get-info takes a keyword");
  const std::string& key = c.items[1].text;
  if (key == ":name") {
    out_ << "(:name \"krait-smt2\")" << std::endl;
  } else if (key == ":version") {
    out_ << "(:version \"" KRAIT_VERSION "\")" << std::endl;
  } else if (key == ":authors") {
    out_ << "(:authors \"the Krait developers\")" << std::endl;
  } else if (key == ":error-behavior") {
    out_ << "(:error-behavior continued-execution)" << std::endl;
  } else if (key == ":all-statistics") {
    out_ << "(:check-sat-in-contexts " << statistics_.in_contexts << " :check-sat-from-scratch " << statistics_.from_scratch
         << " :search-processes " << (contexts_ ? contexts_->started() : 0) << " :carried-clauses " << statistics_.carried
         << ")" << std::endl;
  } else if (key == ":reason-unknown") {
    if (reason_unknown_.empty()) throw script_error(c.line, "the last check-sat did not answer unknown");
    out_ << "(:reason-unknown " << quoted(reason_unknown_) << ")" << std::endl;
  } else {
    out_ << "unsupported" << std::endl;
  }
}

void script::declare(const sexpr& c, const sexpr& name, const sexpr& parameters, const sexpr& result) {
  if (name.kind != sexpr::symbol) throw script_error(c.line, "a declared name must be a symbol");
  if (parameters.is_list() && !parameters.items.empty()) throw script_error(c.line, "functions with arguments are not supported");
  if (!parameters.is_list()) throw script_error(c.line, "declare-fun takes a list of argument sorts");
  if (table_.constants.count(name.text) || table_.functions.count(name.text))
    throw script_error(c.line, "the symbol " + to_text(name) + " is already declared");
  const sort s = read_sort(result);
  table_.constants[name.text] = static_cast<int>(table_.declared.size());
  table_.declared.push_back({name.text, s});
  last_.reset();
  success();
}

void script::define(const sexpr& c) {
  if (c.items.size() != 5 || c.items[1].kind != sexpr::symbol || !c.items[2].is_list())
    throw script_error(c.line, "define-fun takes a name, parameters, a sort and a body");
  const std::string& name = c.items[1].text;
  if (table_.constants.count(name) || table_.functions.count(name)) throw script_error(c.line, "the symbol " + to_text(c.items[1]) + " is already declared");
  definition d;
  symbols scope = table_;  // the body is checked once with its parameters as constants
  for (const sexpr& p : c.items[2].items) {
    if (!p.is_list() || p.items.size() != 2 || p.items[0].kind != sexpr::symbol) throw script_error(p.line, "a parameter is (name sort)");
    d.parameters.emplace_back(p.items[0].text, read_sort(p.items[1]));
    scope.functions.erase(p.items[0].text);
    scope.constants[p.items[0].text] = static_cast<int>(scope.declared.size());
    scope.declared.push_back({p.items[0].text, d.parameters.back().second});
  }
  d.result = read_sort(c.items[3]);
  d.body = c.items[4];
  const term_ref body = elaborate(d.body, scope);
  if ((body->type == sort::boolean) != (d.result == sort::boolean)) throw script_error(c.line, "the body of " + name + " is not of sort " + sort_name(d.result));
  table_.functions[name] = std::move(d);
  success();
}

problem script::current_problem() const { return build_problem(assertions_, table_, default_range, source_); }

void script::check_sat(const sexpr& c) {
  // In contexts the whole problem is written only when they cannot take it: its error, if it
  // has one, is the answer then.
  problem p = named_constants(table_);
  std::vector<mpq_class> lows = p.lows;
  std::optional<outcome> searched = contexts_ ? check_in_contexts(p, lows) : std::nullopt;
  if (!searched) {
    try {
      p = current_problem();
    } catch (const std::runtime_error& e) {
      reason_unknown_.clear();
      throw script_error(c.line, e.what());
    }
    lows = p.lows;
  }
  ++(searched ? statistics_.in_contexts : statistics_.from_scratch);
  outcome o = searched ? std::move(*searched) : check_(p.text, settings_);
  if (o.answer == outcome::failed) {
    reason_unknown_ = o.message;
    out_ << "unknown" << std::endl;
    error(c.line, o.message);
    return;
  }
  if (o.answer == outcome::sat) complete_model(o, p, lows);
  out_ << (o.answer == outcome::sat ? "sat" : o.answer == outcome::unsat ? "unsat" : "unknown") << std::endl;
  reason_unknown_ = o.answer == outcome::unknown ? o.message : "";
  last_ = std::move(o);
  last_problem_ = std::move(p);
}

// The outcome speaks of the variables of the contexts' texts; `lows` gets the lower ends of
// their declared ranges. None when the contexts cannot answer.
std::optional<outcome> script::check_in_contexts(const problem& p, std::vector<mpq_class>& lows) {
  stack_view stack{table_, assertions_, assertion_ids_, {0}, {0}, default_range};
  for (const frame& f : frames_) {
    stack.frame_ids.push_back(f.id);
    stack.frame_starts.push_back(f.assertions);
  }
  context_planner::plan plan;
  try {
    plan = planner_.make_plan(stack);
  } catch (const std::runtime_error&) {
    return std::nullopt;  // the text from scratch is written otherwise, or says why not
  }
  const std::vector<context_operation> operations = std::move(plan.operations);
  planner_.commit(std::move(plan));
  std::optional<outcome> o = contexts_->check(operations, settings_);
  if (!o) {
    // The process has ended, or kept a state its contexts no longer tell: it starts afresh.
    forget_contexts();
    return std::nullopt;
  }
  statistics_.carried += o->carried;
  std::map<std::string, value_range> values;
  for (auto& [name, v] : o->values) {
    const int i = planner_.declaration_of(name);
    if (i >= 0 && !p.names[static_cast<std::size_t>(i)].empty()) values.emplace(p.names[static_cast<std::size_t>(i)], std::move(v));
  }
  o->values = std::move(values);
  for (const auto& [i, v] : planner_.current().variables)
    if (v.range) lows[static_cast<std::size_t>(i)] = *v.range->range.lo;
  return o;
}

void script::forget_contexts() {
  if (contexts_) contexts_->reset();
  planner_.reset();
}

std::string script::value_text(const value_range& v, sort type) const {
  if (type == sort::boolean) return v.lower != 0 ? "true" : "false";
  if (v.lower == v.upper) return rational_term(v.lower, type == sort::integer);
  return decimal_toward((v.lower + v.upper) / 2, 20, true);
}

void script::get_model(const sexpr& c) {
  if (!last_ || last_->answer == outcome::unsat) throw script_error(c.line, "no model: the last check-sat found none, or assertions changed since");
  out_ << "(" << std::endl;
  if (last_->answer == outcome::unknown) out_ << "  ; unknown: " << last_->message << std::endl;
  for (int i : last_problem_.declared) {
    const declaration& d = table_.declared[static_cast<std::size_t>(i)];
    const auto v = last_->values.find(last_problem_.names[static_cast<std::size_t>(i)]);
    if (v == last_->values.end()) continue;  // a box leaves out what the search never saw
    if (last_->answer == outcome::unknown) {
      out_ << "  ; " << d.name << " in [" << plain_toward(v->second.lower, 17, true) << ", "
           << plain_toward(v->second.upper, 17, false) << "]" << std::endl;
      continue;
    }
    const std::string shown = symbol_term(d.name);
    if (v->second.lower != v->second.upper)
      out_ << "  ; " << shown << " is irrational: a solution has it in [" << plain_toward(v->second.lower, 20, true) << ", "
           << plain_toward(v->second.upper, 20, false) << "]" << std::endl;
    out_ << "  (define-fun " << shown << " () " << sort_name(d.type) << " " << value_text(v->second, d.type) << ")" << std::endl;
  }
  out_ << ")" << std::endl;
}

void script::get_value(const sexpr& c) {
  if (!last_ || last_->answer != outcome::sat) throw script_error(c.line, "no model: the last check-sat did not answer sat, or assertions changed since");
  if (!c.items[1].is_list() || c.items[1].items.empty()) throw script_error(c.line, "get-value takes a list of terms");
  std::vector<std::optional<value_range>> model(table_.declared.size());
  for (int i : last_problem_.declared) {
    model[static_cast<std::size_t>(i)] = last_->values.at(last_problem_.names[static_cast<std::size_t>(i)]);
  }
  std::string response = "(";
  evaluator eval{model};
  bool approximate = false;
  for (const sexpr& e : c.items[1].items) {
    const term_ref t = elaborate(e, table_);
    eval.approximate = false;
    const mpq_class v = eval(*t);
    std::string text = rational_term(v, t->type == sort::integer);
    if (eval.approximate && t->type != sort::boolean) {
      approximate = true;
      text = decimal_toward(enclose(*t, model).midpoint(), 20, true);
    }
    response += (response.size() > 1 ? " (" : "(") + to_text(e) + " " + (t->type == sort::boolean ? (v != 0 ? "true" : "false") : text) + ")";
  }
  if (approximate) out_ << "; irrational values rounded to 20 digits" << std::endl;
  out_ << response << ")" << std::endl;
}

void script::push(const sexpr& c, bool pop) {
  std::size_t levels = 1;
  if (c.items.size() == 2) {
    if (c.items[1].kind != sexpr::numeral || c.items[1].text.size() > 6) throw script_error(c.line, "push and pop take a numeral");
    levels = std::stoul(c.items[1].text);
  } else if (c.items.size() != 1) {
    throw script_error(c.line, "push and pop take at most one numeral");
  }
  if (pop && levels > frames_.size()) throw script_error(c.line, "pop of more levels than were pushed");
  for (std::size_t k = 0; k < levels; ++k) {
    if (pop) {
      std::vector<declaration> declared = std::move(table_.declared);  // indices stay valid
      table_ = std::move(frames_.back().table);
      table_.declared = std::move(declared);
      assertions_.resize(frames_.back().assertions);
      assertion_ids_.resize(frames_.back().assertions);
      frames_.pop_back();
    } else {
      frames_.push_back({table_, assertions_.size(), ++last_id_});
    }
  }
  last_.reset();
  success();
}

}  // namespace smt2
