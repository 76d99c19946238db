#pragma once

// A script's commands carried out one by one, each answered on the output stream as the
// SMT-LIB standard has solvers answer them.

#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "smt2/check.hpp"
#include "smt2/contexts.hpp"
#include "smt2/problem.hpp"
#include "smt2/session.hpp"
#include "smt2/terms.hpp"

namespace smt2 {

class script {
 public:
  // `check` runs a check-sat (a child process in the command; tests may stand in for it).
  using checker = std::function<outcome(const std::string& problem_text, const check_settings&)>;
  script(std::ostream& out, std::string source, checker check = run_check);

  std::optional<interval> default_range;

  // check-sat searches in the solver's contexts, kept from one to the next; `check` serves
  // where they cannot (a text they cannot take, a search process that ended).
  void use_contexts(std::unique_ptr<context_search> search) { contexts_ = std::move(search); }

  // Reads and carries out every command of `in` until its end or `exit`.
  void run(std::istream& in);
  // The live assertions as a problem in the input language (for conversion).
  problem current_problem() const;
  // Carries out one command; false after `exit`.
  bool execute(const sexpr& command);

 private:
  void success();
  void error(int line, const std::string& message);
  void set_option(const sexpr& command);
  void get_info(const sexpr& command);
  void declare(const sexpr& command, const sexpr& name, const sexpr& parameters, const sexpr& result);
  void define(const sexpr& command);
  void check_sat(const sexpr& command);
  void get_model(const sexpr& command);
  void get_value(const sexpr& command);
  void push(const sexpr& command, bool pop);
  std::optional<outcome> check_in_contexts(const problem& p, std::vector<mpq_class>& lows);
  void forget_contexts();
  std::string value_text(const value_range& v, sort type) const;

  struct frame {
    symbols table;
    std::size_t assertions;
    std::uint64_t id;  // a frame popped and pushed again is another one
  };

  std::ostream& out_;
  std::string source_;
  checker check_;
  bool print_success_ = false;
  bool logic_set_ = false;
  check_settings settings_;
  symbols table_;
  std::vector<term_ref> assertions_;
  std::vector<std::uint64_t> assertion_ids_;  // per assertion, never given twice
  std::uint64_t last_id_ = 0;                  // of assertions and frames
  std::vector<frame> frames_;
  std::unique_ptr<context_search> contexts_;
  context_planner planner_;
  struct {
    std::size_t in_contexts = 0, from_scratch = 0, carried = 0;
  } statistics_;
  // The last check-sat, while no command has changed the assertions since.
  std::optional<outcome> last_;
  problem last_problem_;
  std::string reason_unknown_;  // empty unless the last check-sat answered unknown
};

}  // namespace smt2
