#pragma once

#include <cmath>
#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "base/numbers.hpp"
#include "base/random.hpp"
#include "base/stopwatch.hpp"
#include "solver/sharable.hpp"

#include "interval/endpoint.hpp"
#include "solver/bm.hpp"
#include "solver/bound.hpp"
#include "solver/fifo.hpp"
#include "solver/watches.hpp"

using u8 = std::uint8_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;

struct variable {
  bool arith_auxvar = false;  // introduced for an arithmetic subterm; may be unbounded
  bool intvar = false;        // Boolean variables are integer variables too
  bool constant = false;      // declared range is a single point
  bool boolean = false;       // integer with range exactly [0, 1]
  bm bounds;
  std::vector<u32> tclause_watches;
  watch_list dclause_watches_lb{true};   // visited when an upper bound is pushed
  watch_list dclause_watches_ub{false};  // visited when a lower bound is pushed
  bool watches_dirty = false;
  bool lb_watches_dirty = false;
  bool ub_watches_dirty = false;
  u32 order_key = 0;
  u32 prev_var = 0;  // instance of the same state variable one unwinding step earlier
  u32 next_var = 0;  // ... and one step later
  bool queued_lower = false;
  bool queued_upper = false;
};

// x = y op z; slot 0 of the tclause vector is empty.
struct tclause {
  u32 functor = 0;
  u32 x = 0;
  u32 y = 0;
  u32 z = 0;
  double c = 0.0;  // constant factor (functor 1) or exponent (8, 9)
  bool deleted = false;
  u8 part_mask = 0;
};

enum tclause_functor : u32 {
  KRAIT_SUM = 0,      // x = y + z
  KRAIT_SCALE = 1,    // x = c * y
  KRAIT_PRODUCT = 2,  // x = y * z
  KRAIT_MAX = 3,
  KRAIT_MIN = 4,
  KRAIT_ABS = 5,
  KRAIT_EXP = 6,
  KRAIT_COS = 7,
  KRAIT_POW = 8,      // x = pow(y, n), n in c
  KRAIT_NRT = 9,      // x = nrt(y, n), n >= 2 in c
};

// A disjunction of bound atoms.
struct dclause {
  std::vector<bound> atoms;
  u32 index = 0;
  bool deleted = false;
  bool learned = false;
  u8 part_mask = 0;
  // Learned-clause bookkeeping for reuse and shifting.
  bool shift_template = false;
  u32 latest_copy = 0;
  std::vector<u32> copies;
  bool shift_copy = false;
  u32 shift_origin = 0;
};

// The bounds pushed on one decision level, and the dclauses that became reasons there.
struct trail_level {
  std::vector<bound_ref> bounds;
  std::vector<u32> reason_dclauses;
  u64 birth = 0;  // changes whenever the level is opened anew or loses bounds
};

// A caller's picture of one variable's current bounds, kept up to date by `assign_bound`. The
// solver keeps one per variable too, side by side, so that the tests of the watch visits read
// one small record instead of the variable's stacks.
struct var_view {
  double lower = 0.0;
  double upper = 0.0;
  u32 lower_id = 0;
  u32 upper_id = 0;
  bool has_lower = false;
  bool lower_strict = false;
  bool has_upper = false;
  bool upper_strict = false;
  bool intvar = false;  // the variable's kind, beside its bounds for the tests that need both

  endpoint lo() const { return {lower_strict, lower}; }
  endpoint hi() const { return {upper_strict, upper}; }
};

struct queued_stack {
  u32 var = 0;
  bool is_lower = false;
};

// An atom of a dclause to be asserted once the solver is back at `level`.
struct pending_implication {
  u32 level = 0;
  bound atom;
  origin why;
};

struct var_order_entry {
  u32 var = 0;
  u32 order_key = 0;
  u32 boolean = 0;
};

enum part_mask_bits : u8 { KRAIT_PART_INIT = 2, KRAIT_PART_TRANS = 4, KRAIT_PART_TARGET = 8 };

// A learned clause saved across a depth change.
struct saved_dclause {
  std::vector<bound> atoms;
  u8 part_mask = 0;
};

// What a context holds on to so that popping it removes everything added since.
struct context_frame {
  u64 var_count = 0;
  u64 tclause_last = 0;
  u64 learned_L = 0, learned_T = 0, learned_C = 0, learned_O = 0;
  // Clauses added since the push. Only popping deletes clauses, so every one is still there
  // when its frame is popped.
  std::vector<u32> added_dclauses;
  u32 level0_bounds = 0;
  u32 level0_reasons = 0;
  std::vector<u32> added_sharables;
  std::vector<std::pair<u32, u32>> changed_sharables;  // entry position, polarity before
};

inline bool opposite_bounds_conflict(bool intvar, bound a, bound b);

// The solver: one object holds the variables, their bound stacks, the clauses and the search.
// Its member functions live in files named after their concern.
struct krait_solver {
  krait_solver();

  // ---- Variables and bound manager (bounds.cpp) ----
  std::vector<variable> vars;  // slot 0 holds no variable
  std::vector<var_view> tops;  // the current bounds of each variable: the tops of its stacks
  u64 num_variables = 0;       // number of the most recently defined variable
  u64 num_boolean = 0, num_integer = 0, num_real = 0, num_constant = 0;
  u32 dlevel = 0;
  std::vector<trail_level> trail;  // levels 0..dlevel are live; deeper records are spares
  u64 level_births = 0;
  u32 max_backjump = 0;

  bool bounds_conflict(bound a, bound b) const;  // inline below: the hottest test of all
  static bool bounds_equal(bound a, bound b) { return ::bounds_equal(a, b); }
  static bool bound_less(bound a, bound b) { return ::bound_less(a, b); }
  bound normalize_bound(bound b) const;
  bound make_bound(u32 var, u32 relation, double value);
  bound negate_bound(bound b) const;
  bool get_lower_bound(u32 var, bool& strict, double& value) const;
  bool get_upper_bound(u32 var, bool& strict, double& value) const;
  u32 push_bound(u32 var, bool is_lower, bool& strict, double& value, const origin& why);
  void pop_bound(u32 var, bool is_lower);
  void resize_vars(std::size_t count);
  bound_ref find_falsifying_bound(bound b) const;
  void backtrack(u32 level);

  // Helpers shared by the other concerns.
  bound bound_of(bound_ref r) const;
  var_view view_of(u32 var) const { return tops[var]; }
  trail_level& current_trail() { return trail[dlevel]; }
  void open_decision_level();

  // ---- Clause store (clauses.cpp) ----
  std::vector<dclause> dclause_records;  // slot 0 holds no dclause
  std::vector<u32> dclause_slot;         // dclause index -> slot; 0 for an unused index
  std::deque<u32> free_dclause_indices;
  // Per dclause index, side by side, what a watch visit needs of a clause: its atoms (the
  // record's own array, which never moves while the clause lives), the positions of its two
  // watched atoms, and whether visits pass over it (deleted, or a reason on the current level;
  // the record holds the same flags) and a walk has passed over its watches asleep, and where.
  struct dclause_hot {
    const bound* atoms = nullptr;
    u32 size = 0;
    u32 watch[2] = {0, 0};
    u8 passed_over = 0;        // the flags below
    u32 slept_at[2] = {0, 0};  // per watch: the index where a walk last passed it over asleep
    // Every unwatched atom before position false_prefix was false, through bounds of levels up
    // to false_level, when that level had this birth; while it lives they still are, and the
    // search for a new watch starts there.
    u32 false_prefix = 0;
    u32 false_level = 0;
    u64 false_birth = 0;
  };
  static constexpr u8 deleted_flag = 1, reason_flag = 2, skipped_asleep = 4;
  // reason_flag is the clause's `reason_here` flag (the reason of a bound on the current or a
  // lower level); it lives only here, beside the watches that read it, not in the clause record.
  std::vector<dclause_hot> hot;
  u64 num_dclauses = 0;
  u64 num_learned = 0;          // L: learned clauses present
  u64 num_reused = 0;           // R: added by reuse and shifting at a depth change
  u64 num_templates = 0;        // T: learned clauses that became shift templates
  u64 num_shifted_copies = 0;   // C: copies made by shifting
  u64 num_other_learned = 0;    // O: other learned clauses
  u32 lowest_deleted_dclause_slot = 0;  // 0: none
  std::vector<tclause> tclauses;        // slot 0 holds no tclause
  u64 num_tclauses = 0;
  u32 lowest_deleted_tclause = 0;  // 0: none
  u8 current_part = 0;             // 1 INIT, 2 TRANS, 3 TARGET while that part is translated
  bool backjump_pending = false;
  u32 backjump_level = 0;

  dclause& dclause_at(u32 index) { return dclause_records[dclause_slot[index]]; }
  const dclause& dclause_at(u32 index) const { return dclause_records[dclause_slot[index]]; }
  u32 add_dclause(const std::vector<bound>& atoms, bool learned);
  u32 add_unit_dclause(bound atom);
  u32 get_atom_status(bound atom) const;  // 0 open, 1 true, 2 false
  u32 get_dclause_status(u32 index) const;  // 0 all false, 1 satisfied, 2 unit, 3 open
  u32 get_dlevel_of_bound(bound atom) const;
  void register_watches(u32 index);
  void request_backjump(u32 level);
  void queue_pending(u32 level, bound atom, u32 dclause_index);
  void mark_tclause_deleted(u32 t);
  void purge_deleted_tclauses();
  void delete_dclause(u32 index);
  void purge_deleted_dclauses();
  static bool has_two_operands(u32 functor);

  // ---- Propagation (assign.cpp, propagate.cpp) ----
  fifo<queued_stack> implication_queue;
  fifo<pending_implication> pending_implications;
  bound conflict_bound;
  origin conflict_origin;
  u64 num_assignments = 0;
  u64 num_ineffective = 0;
  double min_bound_delta = 0.01;

  bool assign_bound(u32 var, bool is_lower, bool strict, double value, const origin& why,
                    var_view& view);
  bool check_and_push(u32 var, bool is_lower, bool strict, double value, const origin& why, var_view& view);
  // check_and_push in two steps, for callers that build the origin only for a bound that goes
  // in: the test (a conflict leaves conflict_bound set, a bound that gains too little is
  // counted) and the push of a bound the test let through.
  enum class bound_effect { news, conflict, none };
  bound_effect test_bound(u32 var, bool is_lower, bool strict, double& value, origin_kind kind, const var_view& view);
  void push_tested(u32 var, bool is_lower, bool strict, double value, const origin& why, var_view& view);
  void enqueue_implication(u32 var, bool is_lower);
  bool visit_watch(bound_ref trigger, dclause_watch watch, bool& remove);
  bool move_watch_or_assert(dclause_watch watch, bool& remove);
  void add_watch(u32 dclause_index, u32 position, bound atom);
  bool visit_bound(bound_ref trigger);
  bool propagate();
  void clear_queues();
  void note_reason(u32 dclause_index);
  void clear_reason(u32 dclause_index);

  // ---- Decisions and variable orders (decide.cpp) ----
  double min_split_width = 0.1;
  u32 var_order = 0;
  std::vector<var_order_entry> var_order_list;
  u32 split_pos = 0;
  u32 order_key_counter = 0;
  u64 num_decisions = 0;
  u32 max_dlevel = 0;
  u32 max_dlevel_depth = 0;
  // Set when the latest scan passed over a range that is wide enough but has no cut strictly
  // inside; the search warns if it ends in a box that holds one.
  bool unsplittable_range = false;

  void init_var_order();
  bool decide();

  // ---- Conflict analysis, learning and backjumping (analyze.cpp) ----
  u32 open_count = 0;
  // The bounds collected for the learned clause, at most one per variable and direction: a
  // slot per variable, valid when stamped with the current analysis, and the variables in the
  // order they were first met (sorted when the clause is made).
  struct reason_slot {
    u32 stamp[2] = {0, 0};  // upper, lower
    bound kept[2];
  };
  std::vector<reason_slot> reason_slots;
  std::vector<u32> reason_vars[2];  // upper, lower
  std::vector<bound> learned_atoms;
  u32 analysis_stamp = 0;
  std::vector<u32> reusable_dclauses;  // learned in this search, each once; collected in index order
  std::vector<u32> pending_templates;
  u64 num_conflicts = 0;
  bool shifting = false;

  bool analyze_conflict();
  void mark_reason(bound b, const origin& why);
  void mark_antecedent(bound_ref r);
  bool add_reason_bound(bound b, bool keep_weaker);
  std::pair<u32, u32> learn_dclause(const std::vector<bound>& atoms, u8 part_mask);
  u8 part_mask_of(const origin& why) const;

  // ---- Search loop and restarts (search.cpp) ----
  bool restarts = false;
  u32 a_init = 0, b_init = 0;
  double f_a = 0.0, f_b = 0.0;
  u32 conflicts_since_restart = 0;
  u32 restart_limit_a = 0, restart_limit_b = 0;
  u32 num_restarts = 0;
  double time_solver = 0.0;
  solver_timer timer;
  // Run totals, folded in at the end of every search.
  u64 tot_assignments = 0, tot_ineffective = 0, tot_decisions = 0, tot_conflicts = 0;
  u32 tot_restarts = 0, tot_max_backjump = 0, tot_max_dlevel = 0, tot_max_dlevel_depth = 0;
  double tot_time_solver = 0.0;
  // Harnesses that must end (fuzzing) cap the decisions plus conflicts of one search; 0 is no
  // cap. A capped search reports a candidate box and sets `budget_exhausted`.
  u64 step_budget = 0;
  bool budget_exhausted = false;

  bool solve();
  void restart();
  void fold_statistics();
  void set_restarts(bool on) { restarts = on; }
  void set_a_init(u32 a) { a_init = a; }
  void set_b_init(u32 b) { b_init = b; }
  void set_f_a(double f) { f_a = f; }
  void set_f_b(double f) { f_b = f; }
  void set_min_split_width(double w) { min_split_width = w; }
  void set_var_order(u32 order) { var_order = order; }

  // ---- Definitions of variables and tclauses (define.cpp) ----
  u32 define_var(bool arith_auxvar, bool intvar, bool has_lower, bool lower_strict, double lower, bool has_upper,
                 double upper);
  u32 define_float_var(double lower, double upper) { return define_var(false, false, true, false, lower, true, upper); }
  u32 define_int_var(double lower, double upper) { return define_var(false, true, true, false, lower, true, upper); }
  u32 make_tclause(u32 functor, u32 y, u32 z, double c);
  u32 add_tclause(u32 functor, u32 y, u32 z, double c);
  u32 define_constant_var(double value);
  bound true_bound();
  bound define_or(const std::vector<bound>& literals, u32 polarity);
  bound define_and(const std::vector<bound>& literals, u32 polarity);
  bound define_connective(const std::vector<bound>& literals, u32 polarity, bool is_or);

  // ---- Sharable expressions (sharing.cpp) ----
  sharable_table sharables;
  // On a hit the key is consumed and `out` holds the representing bound and the directions
  // still to be encoded.
  bool lookup_sharable_expr(std::unique_ptr<sharable_expr>& key, u32 polarity, sharable_entry& out);
  void insert_sharable_expr(std::unique_ptr<sharable_expr> key, bound rep, u32 polarity);
  u32 find_constant_var(double value) const;

  // ---- Statistics, settings report and dumps (report.cpp, dump.cpp) ----
  bool reuse = false;
  void set_min_bound_delta(double delta);
  void set_reuse(bool on) { reuse = on; }
  void set_shifting(bool on) { shifting = on; }
  void print_settings(const char* prefix) const;
  void print_statistics(const char* prefix) const;
  void dump_variables(const char* prefix) const;
  void dump_tclauses(const char* prefix) const;
  void dump_dclauses(const char* prefix) const;
  void dump_dclause(u32 index, const char* prefix) const;
  void dump_implication_queue(const char* prefix) const;
  void dump_pending_implications(const char* prefix) const;
  void dump_assignments(const char* prefix) const;

  // ---- Contexts (contexts.cpp) ----
  std::vector<context_frame> context_stack;
  void set_translation_phase(u32 phase) { current_part = static_cast<u8>(phase); }
  void push_context();
  void pop_context();

  // ---- Reuse and shifting of learned dclauses (shifting.cpp) ----
  std::vector<saved_dclause> collect_reusable() const;
  void reuse_dclauses(const std::vector<saved_dclause>& saved);
  u32 shift_forward(u32 t);
  u32 shift_backward(u32 t);
  u32 shift(u32 t, bool forward);
  void shift_pending();

  // ---- Deduction through tclauses (deduce.cpp) ----
  // Asks the narrowing operator of tclause t what follows from the trigger and asserts it, in
  // order, until a conflict.
  bool deduce(bound_ref trigger, u32 t);
  // p entails q: p together with the complement of q is empty.
  bool entails(bound p, bound q) const;
};

inline bool krait_solver::bounds_conflict(bound a, bound b) const {
  if (a.var != b.var || a.is_lower == b.is_lower) return false;
  return opposite_bounds_conflict(vars[a.var].intvar, a, b);
}

// The test above for two bounds already known to lie on one variable in opposite directions.
inline bool opposite_bounds_conflict(bool intvar, bound a, bound b) {
  bound lower = a.is_lower ? a : b;
  bound upper = a.is_lower ? b : a;
  if (intvar) {
    const double lower_value = std::ceil(lower.value), upper_value = std::floor(upper.value);
    if (lower_value != lower.value) lower = {lower.var, true, false, lower_value};
    if (upper_value != upper.value) upper = {upper.var, false, false, upper_value};
    // No integer lies strictly between two consecutive integers.
    if (lower.strict && upper.strict && lower.value == upper.value - 1.0) return true;
  }
  return lower.value > upper.value || (lower.value == upper.value && (lower.strict || upper.strict));
}

// Inline: most derived ends stop here, and their callers build no origin for them.
inline krait_solver::bound_effect krait_solver::test_bound(u32 var, bool is_lower, bool strict, double& value,
                                                           origin_kind kind, const var_view& view) {
  if (value == 0.0) value = 0.0;  // never store -0.0
  fpenv::set_rounding(fpenv::to_nearest);

  // The opposite bound: does the new one leave the range empty?
  const bool has_opposite = is_lower ? view.has_upper : view.has_lower;
  const double opposite = is_lower ? view.upper : view.lower;
  const bool opposite_strict = is_lower ? view.upper_strict : view.lower_strict;
  if (has_opposite) {
    const bool crossed = is_lower ? value > opposite : value < opposite;
    if (crossed || (value == opposite && (strict || opposite_strict))) {
      conflict_bound = {var, is_lower, strict, value};
      return bound_effect::conflict;
    }
  }

  // Does it improve the current bound of its side by more than min_bound_delta?
  const bool has_current = is_lower ? view.has_lower : view.has_upper;
  if (has_current && kind != KRAIT_ORIGIN_DECISION) {
    const double current = is_lower ? view.lower : view.upper;
    const bool current_strict = is_lower ? view.lower_strict : view.upper_strict;
    const double d = is_lower ? value - current : current - value;
    const bool accepted = kind == KRAIT_ORIGIN_DCLAUSE ? d > 0 : d > min_bound_delta;
    const bool only_tightens_strictness = value == current && strict && !current_strict;
    // The distance between two huge bounds may overflow, and infinite ones give no distance:
    // the flags that raises must not drop the next, unrelated bound. A finite distance raised
    // none of them.
    if (!std::isfinite(d)) clear_fp_exceptions();
    if (!accepted && !only_tightens_strictness) {
      ++num_ineffective;
      return bound_effect::none;
    }
  }

  return bound_effect::news;
}
