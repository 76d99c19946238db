#pragma once

#include <cstdint>
#include <vector>

#include "interval/endpoint.hpp"
#include "solver/bm.hpp"
#include "solver/bound.hpp"
#include "solver/fifo.hpp"

using u8 = std::uint8_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;

// A watched atom of a dclause, filed under the atom's variable.
struct dclause_watch {
  u32 dclause = 0;
  u32 position = 0;
};

struct variable {
  bool arith_auxvar = false;  // introduced for an arithmetic subterm; may be unbounded
  bool intvar = false;        // Boolean variables are integer variables too
  bool constant = false;      // declared range is a single point
  bool boolean = false;       // integer with range exactly [0, 1]
  bm bounds;
  std::vector<u32> tclause_watches;
  std::vector<dclause_watch> dclause_watches_lb;  // visited when an upper bound is pushed
  std::vector<dclause_watch> dclause_watches_ub;  // visited when a lower bound is pushed
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
  u32 watch[2] = {0, 0};
  std::vector<bound> atoms;
  u32 index = 0;
  bool deleted = false;
  bool learned = false;
  bool reason_here = false;  // reason of a bound on the current or a lower level
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
};

// A caller's picture of one variable's current bounds, kept up to date by `assign_bound`.
struct var_view {
  bool has_lower = false;
  bool lower_strict = false;
  double lower = 0.0;
  u32 lower_id = 0;
  bool has_upper = false;
  bool upper_strict = false;
  double upper = 0.0;
  u32 upper_id = 0;

  endpoint lo() const { return {lower_strict, lower}; }
  endpoint hi() const { return {upper_strict, upper}; }
};

struct queued_stack {
  u32 var = 0;
  bool is_lower = false;
};

// The solver: one object holds the variables, their bound stacks, the clauses and the search.
// Its member functions live in files named after their concern.
struct krait_solver {
  krait_solver();

  // ---- Variables and bound manager (bounds.cpp) ----
  std::vector<variable> vars;  // slot 0 holds no variable
  u64 num_variables = 0;       // number of the most recently defined variable
  u64 num_boolean = 0, num_integer = 0, num_real = 0, num_constant = 0;
  u32 dlevel = 0;
  std::vector<trail_level> trail;  // levels 0..dlevel are live; deeper records are spares
  u32 max_backjump = 0;

  bool bounds_conflict(bound a, bound b) const;
  static bool bounds_equal(bound a, bound b);
  static bool bound_less(bound a, bound b);
  bound normalize_bound(bound b) const;
  bound make_bound(u32 var, u32 relation, double value);
  bound negate_bound(bound b) const;
  bool get_lower_bound(u32 var, bool& strict, double& value) const;
  bool get_upper_bound(u32 var, bool& strict, double& value) const;
  u32 push_bound(u32 var, bool is_lower, bool& strict, double& value, const origin& why);
  bound_ref find_falsifying_bound(bound b) const;
  void backtrack(u32 level);

  // Helpers shared by the other concerns.
  bound bound_of(bound_ref r) const;
  var_view view_of(u32 var) const;
  trail_level& current_trail() { return trail[dlevel]; }
  void open_decision_level();

  // ---- Clause store (clauses.cpp) ----
  std::vector<dclause> dclause_records;
  std::vector<u32> dclause_slot;  // dclause index -> slot in `dclause_records`; 0 unused
  std::vector<tclause> tclauses;  // slot 0 holds no tclause
  dclause& dclause_at(u32 index) { return dclause_records[dclause_slot[index]]; }

  // ---- Propagation (assign.cpp) ----
  fifo<queued_stack> implication_queue;
  bound conflict_bound;
  origin conflict_origin;
  u64 num_assignments = 0;
  u64 num_ineffective = 0;
  double min_bound_delta = 0.01;

  bool assign_bound(u32 var, bool is_lower, bool strict, double value, const origin& why,
                    var_view& view);
  void enqueue_implication(u32 var, bool is_lower);

  // ---- Interval narrowing operators (src/interval/narrow_*.cpp) ----
  bool deduce(bound_ref trigger, u32 t);
  bool deduce_sum(bound_ref trigger, u32 t);
  bool deduce_scale(bound_ref trigger, u32 t);
  bool deduce_product(bound_ref trigger, u32 t);
  bool deduce_max(bound_ref trigger, u32 t);
  bool deduce_min(bound_ref trigger, u32 t);
  bool deduce_abs(bound_ref trigger, u32 t);
  bool deduce_exp(bound_ref trigger, u32 t);
  bool deduce_cos(bound_ref trigger, u32 t);
  bool deduce_pow(bound_ref trigger, u32 t);
  bool deduce_nrt(bound_ref trigger, u32 t);

  // What every rule starts from: the trigger and the current bounds of x, y and z, with the
  // trigger standing in for its own variable's bound on its side.
  struct rule_inputs {
    tclause tc;
    bound_ref trigger;
    bool is_lower = false;  // direction of the trigger
    endpoint value;         // strictness and value of the trigger
    var_view x, y, z;
    bool on_x() const { return trigger.var == tc.x; }
    bool on_y() const { return trigger.var == tc.y; }
  };
  // False when the trigger came from this very tclause on a real variable: nothing new follows.
  bool read_rule_inputs(bound_ref trigger, u32 t, rule_inputs& in) const;
  // Hands a computed end to the assignment, with tclause t and `reasons` as its origin.
  bool narrow(u32 var, var_view& view, bool is_lower, endpoint e, u32 t, antecedent_list reasons);
  // The same, first rounding the end inward to an integer for an integer variable.
  bool narrow_rounded(u32 var, var_view& view, bool is_lower, endpoint e, u32 t, antecedent_list reasons);
  // p entails q: p together with the complement of q is empty.
  bool entails(bound p, bound q) const;
  // power = base^n, the base being y for pow and x for nrt.
  bool deduce_power_relation(rule_inputs& in, u32 t, bool base_is_y);
};
