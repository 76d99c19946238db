// Elaboration of SMT-LIB terms into sorted term graphs.
#include "smt2/terms.hpp"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <optional>

namespace smt2 {
namespace {

using bindings = std::vector<std::pair<std::string, term_ref>>;  // innermost last

[[noreturn]] void fault(const sexpr& at, const std::string& message) { throw script_error(at.line, message); }

term_ref make(op kind, sort type, std::vector<term_ref> args = {}) {
  auto t = std::make_shared<term>();
  t->kind = kind;
  t->type = type;
  t->args = std::move(args);
  return t;
}

term_ref number(const mpq_class& v, sort type) {
  auto t = std::make_shared<term>();
  t->kind = op::number;
  t->type = type;
  t->value = v;
  return t;
}

term_ref truth(bool v) {
  auto t = std::make_shared<term>();
  t->kind = op::truth;
  t->type = sort::boolean;
  t->value = v ? 1 : 0;
  return t;
}

bool arithmetic(sort s) { return s != sort::boolean; }

// The sort of an arithmetic operation: integer only if every operand is.
sort joined(const std::vector<term_ref>& args) {
  for (const term_ref& a : args)
    if (a->type == sort::real) return sort::real;
  return sort::integer;
}

// Left-nested application of a binary Boolean connective.
term_ref fold(op kind, const std::vector<term_ref>& args) {
  term_ref acc = args[0];
  for (std::size_t i = 1; i < args.size(); ++i) acc = make(kind, sort::boolean, {acc, args[i]});
  return acc;
}

class elaborator {
 public:
  explicit elaborator(const symbols& table) : table_(table) {}

  term_ref run(const sexpr& e) {
    if (++depth_ > 20000) fault(e, "term nested too deeply");
    term_ref t = e.is_list() ? application(e) : leaf(e);
    --depth_;
    return t;
  }

 private:
  term_ref leaf(const sexpr& e) {
    switch (e.kind) {
      case sexpr::numeral: return number(mpq_class(e.text, 10), sort::integer);
      case sexpr::decimal: return number(literal_value(e.text), sort::real);
      case sexpr::symbol: return symbol(e);
      default: fault(e, "unsupported literal " + to_text(e));
    }
  }

  term_ref symbol(const sexpr& e) {
    for (auto b = scope_.rbegin(); b != scope_.rend(); ++b)
      if (b->first == e.text) return b->second;
    if (!e.quoted && e.text == "true") return truth(true);
    if (!e.quoted && e.text == "false") return truth(false);
    const auto c = table_.constants.find(e.text);
    if (c != table_.constants.end()) {
      auto t = std::make_shared<term>();
      t->kind = op::variable;
      t->type = table_.declared[static_cast<std::size_t>(c->second)].type;
      t->var = c->second;
      return t;
    }
    const auto f = table_.functions.find(e.text);
    if (f != table_.functions.end() && f->second.parameters.empty()) return expand(e, f->second, {});
    fault(e, "unknown constant " + to_text(e));
  }

  term_ref expand(const sexpr& at, const definition& d, const std::vector<term_ref>& args) {
    if (args.size() != d.parameters.size()) fault(at, "wrong number of arguments to " + to_text(at));
    bindings inner;
    for (std::size_t i = 0; i < args.size(); ++i) {
      const sort want = d.parameters[i].second;
      if (args[i]->type != want && !(arithmetic(want) && arithmetic(args[i]->type)))
        fault(at, "argument " + std::to_string(i + 1) + " of " + to_text(at) + " is not of sort " + sort_name(want));
      inner.emplace_back(d.parameters[i].first, args[i]);
    }
    // The body sees its parameters, not the bindings around the application.
    std::swap(scope_, inner);
    term_ref body = run(d.body);
    std::swap(scope_, inner);
    return body;
  }

  std::vector<term_ref> operands(const sexpr& e) {
    std::vector<term_ref> args;
    for (std::size_t i = 1; i < e.items.size(); ++i) args.push_back(run(e.items[i]));
    return args;
  }

  void need(const sexpr& e, const std::vector<term_ref>& args, std::size_t at_least, bool boolean) {
    if (args.size() < at_least) fault(e, to_text(e.items[0]) + " needs at least " + std::to_string(at_least) + " argument" + (at_least > 1 ? "s" : ""));
    for (const term_ref& a : args)
      if ((a->type == sort::boolean) != boolean)
        fault(e, to_text(e.items[0]) + " takes " + (boolean ? "Bool" : "arithmetic") + " arguments");
  }

  term_ref application(const sexpr& e) {
    if (e.items.empty()) fault(e, "empty application");
    const sexpr& head = e.items[0];
    if (head.is_list()) fault(e, "unsupported function " + to_text(head));
    if (head.kind != sexpr::symbol) fault(e, "a function name must be a symbol");
    const std::string& f = head.text;
    if (f == "let" && !head.quoted) return let(e);
    if (f == "!" && !head.quoted) {
      if (e.items.size() < 2) fault(e, "'!' needs a term");
      return run(e.items[1]);  // annotations (names, patterns) do not change the term
    }
    if (f == "forall" || f == "exists") fault(e, "quantifiers are not supported");
    const auto user = table_.functions.find(f);
    if (user != table_.functions.end()) return expand(e, user->second, operands(e));
    if (table_.constants.count(f)) fault(e, to_text(head) + " is a constant, not a function");
    if (head.quoted) fault(e, "unknown function " + to_text(head));

    std::vector<term_ref> args = operands(e);
    if (f == "not") {
      need(e, args, 1, true);
      if (args.size() != 1) fault(e, "not takes one argument");
      return make(op::negation, sort::boolean, args);
    }
    if (f == "and" || f == "or" || f == "xor") {
      need(e, args, 1, true);
      if (args.size() == 1) return args[0];
      return fold(f == "and" ? op::conjunction : f == "or" ? op::disjunction : op::exclusive_or, args);
    }
    if (f == "=>") {
      need(e, args, 2, true);
      // Right associative: (=> a b c) is (=> a (=> b c)).
      term_ref acc = args.back();
      for (std::size_t i = args.size() - 1; i-- > 0;) acc = make(op::implication, sort::boolean, {args[i], acc});
      return acc;
    }
    if (f == "=" || f == "distinct") return equality(e, args, f == "distinct");
    if (f == "ite") {
      if (args.size() != 3 || args[0]->type != sort::boolean) fault(e, "ite takes a Bool condition and two branches");
      if ((args[1]->type == sort::boolean) != (args[2]->type == sort::boolean)) fault(e, "the branches of ite differ in sort");
      const sort s = args[1]->type == sort::boolean ? sort::boolean : joined({args[1], args[2]});
      return make(op::ite, s, args);
    }
    if (f == "<=" || f == "<" || f == ">=" || f == ">") {
      need(e, args, 2, false);
      const op kind = f == "<=" ? op::less_equal : f == "<" ? op::less : f == ">=" ? op::greater_equal : op::greater;
      std::vector<term_ref> links;
      for (std::size_t i = 0; i + 1 < args.size(); ++i) links.push_back(make(kind, sort::boolean, {args[i], args[i + 1]}));
      return fold(op::conjunction, links);
    }
    if (f == "+" || f == "*") {
      need(e, args, 2, false);
      const op kind = f == "+" ? op::add : op::multiply;
      term_ref acc = args[0];
      for (std::size_t i = 1; i < args.size(); ++i) acc = make(kind, joined({acc, args[i]}), {acc, args[i]});
      return acc;
    }
    if (f == "-") {
      need(e, args, 1, false);
      if (args.size() == 1) return make(op::negate, args[0]->type, args);
      term_ref acc = args[0];
      for (std::size_t i = 1; i < args.size(); ++i) acc = make(op::subtract, joined({acc, args[i]}), {acc, args[i]});
      return acc;
    }
    if (f == "/") {
      need(e, args, 2, false);
      term_ref acc = args[0];
      for (std::size_t i = 1; i < args.size(); ++i) {
        const std::optional<mpq_class> c = constant(args[i]);
        if (!c) fault(e, "division is supported by constants only");
        if (*c == 0) fault(e, "division by zero");
        const std::optional<mpq_class> a = constant(acc);
        acc = a ? number(*a / *c, sort::real) : make(op::divide, sort::real, {acc, number(*c, sort::real)});
      }
      return acc;
    }
    if (f == "abs" || f == "to_real" || f == "exp" || f == "sin" || f == "cos") {
      need(e, args, 1, false);
      if (args.size() != 1) fault(e, f + " takes one argument");
      if (f == "to_real") {
        if (args[0]->kind == op::number) return number(args[0]->value, sort::real);
        auto t = std::make_shared<term>(*args[0]);
        t->type = sort::real;
        return t;
      }
      const op kind = f == "abs" ? op::abs : f == "exp" ? op::exp : f == "sin" ? op::sin : op::cos;
      return make(kind, kind == op::abs ? args[0]->type : sort::real, args);
    }
    if (f == "^" || f == "pow") {
      need(e, args, 2, false);
      const std::optional<mpq_class> n = constant(args[1]);
      if (args.size() != 2 || !n || n->get_den() != 1 || *n < 0 || *n > 1000000)
        fault(e, f + " needs a constant natural exponent");
      auto t = std::make_shared<term>();
      t->kind = op::power;
      t->type = args[0]->type;
      t->args = {args[0]};
      t->exponent = n->get_num().get_ui();
      return t;
    }
    fault(e, "unsupported function " + to_text(head));
  }

  // The value of a constant operand: a number, or the negation of one.
  static std::optional<mpq_class> constant(const term_ref& t) {
    if (t->kind == op::number) return t->value;
    if (t->kind == op::negate && t->args[0]->kind == op::number) return -t->args[0]->value;
    return std::nullopt;
  }

  term_ref equality(const sexpr& e, const std::vector<term_ref>& args, bool distinct) {
    if (args.size() < 2) fault(e, to_text(e.items[0]) + " needs at least 2 arguments");
    const bool boolean = args[0]->type == sort::boolean;
    for (const term_ref& a : args)
      if ((a->type == sort::boolean) != boolean) fault(e, "the arguments of " + to_text(e.items[0]) + " differ in sort");
    auto pair = [&](const term_ref& a, const term_ref& b) {
      if (boolean) {
        term_ref same = make(op::equivalence, sort::boolean, {a, b});
        return distinct ? make(op::negation, sort::boolean, {same}) : same;
      }
      return make(distinct ? op::not_equal : op::equal, sort::boolean, {a, b});
    };
    std::vector<term_ref> links;
    for (std::size_t i = 0; i < args.size(); ++i) {
      if (!distinct && i + 1 < args.size()) links.push_back(pair(args[i], args[i + 1]));
      if (distinct)
        for (std::size_t j = i + 1; j < args.size(); ++j) links.push_back(pair(args[i], args[j]));
    }
    return fold(op::conjunction, links);
  }

  term_ref let(const sexpr& e) {
    if (e.items.size() != 3 || !e.items[1].is_list() || e.items[1].items.empty()) fault(e, "let needs bindings and a body");
    bindings added;
    for (const sexpr& b : e.items[1].items) {
      if (!b.is_list() || b.items.size() != 2 || b.items[0].kind != sexpr::symbol) fault(b, "a let binding is (name term)");
      added.emplace_back(b.items[0].text, run(b.items[1]));  // parallel: bound in the outer scope
    }
    const std::size_t mark = scope_.size();
    scope_.insert(scope_.end(), added.begin(), added.end());
    term_ref body = run(e.items[2]);
    scope_.resize(mark);
    return body;
  }

  const symbols& table_;
  bindings scope_;
  int depth_ = 0;
};

}  // namespace

const char* sort_name(sort s) { return s == sort::boolean ? "Bool" : s == sort::integer ? "Int" : "Real"; }

sort read_sort(const sexpr& e) {
  if (e.is_symbol("Bool")) return sort::boolean;
  if (e.is_symbol("Int")) return sort::integer;
  if (e.is_symbol("Real")) return sort::real;
  throw script_error(e.line, "unsupported sort " + to_text(e));
}

mpq_class literal_value(const std::string& text) {
  const std::size_t dot = text.find('.');
  if (dot == std::string::npos) return mpq_class(text, 10);
  const std::string digits = text.substr(0, dot) + text.substr(dot + 1);
  mpz_class scale;
  mpz_ui_pow_ui(scale.get_mpz_t(), 10, text.size() - dot - 1);
  mpq_class v(mpz_class(digits, 10), scale);
  v.canonicalize();
  return v;
}

term_ref elaborate(const sexpr& e, const symbols& table) { return elaborator(table).run(e); }

std::string rational_term(const mpq_class& q, bool integer_sort) {
  const bool negative = q < 0;
  const mpq_class a = abs(q);
  std::string s;
  if (a.get_den() == 1) {
    s = a.get_num().get_str() + (integer_sort ? "" : ".0");
  } else {
    // n / (2^i 5^j) ends after max(i, j) decimal places.
    mpz_class d = a.get_den();
    unsigned long twos = 0, fives = 0;
    for (; mpz_divisible_ui_p(d.get_mpz_t(), 2); ++twos) mpz_divexact_ui(d.get_mpz_t(), d.get_mpz_t(), 2);
    for (; mpz_divisible_ui_p(d.get_mpz_t(), 5); ++fives) mpz_divexact_ui(d.get_mpz_t(), d.get_mpz_t(), 5);
    const unsigned long places = std::max(twos, fives);
    if (d == 1 && places <= 1000) {
      mpz_class scale;
      mpz_ui_pow_ui(scale.get_mpz_t(), 10, places);
      s = mpz_class(a.get_num() * scale / a.get_den()).get_str();
      if (s.size() <= places) s.insert(0, places + 1 - s.size(), '0');
      s.insert(s.size() - places, ".");
    } else {
      s = "(/ " + a.get_num().get_str() + " " + a.get_den().get_str() + ")";
    }
  }
  return negative ? "(- " + s + ")" : s;
}

std::string symbol_term(const std::string& name) {
  bool simple = !name.empty() && !std::isdigit(static_cast<unsigned char>(name[0]));
  for (char c : name)
    simple = simple && c != '\0' && (std::isalnum(static_cast<unsigned char>(c)) || std::strchr("~!@$%^&*_-+=<>.?/", c) != nullptr);
  return simple ? name : "|" + name + "|";
}

}  // namespace smt2
