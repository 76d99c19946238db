// Defining variables and making tclauses.
#include <cmath>

#include "base/error.hpp"
#include "solver/solver.hpp"
#include "version.hpp"

u32 krait_solver::define_var(bool arith_auxvar, bool intvar, bool has_lower, bool lower_strict, double lower,
                             bool has_upper, double upper) {
  const u32 v = static_cast<u32>(++num_variables);
  resize_vars(num_variables + 1);
  vars[v] = variable{};
  tops[v] = var_view{};
  tops[v].intvar = intvar;
  variable& var = vars[v];
  var.arith_auxvar = arith_auxvar;
  var.intvar = intvar;
  var.boolean = intvar && has_lower && !lower_strict && lower == 0.0 && has_upper && upper == 1.0;
  var.order_key = order_key_counter;
  if (!arith_auxvar && !(has_lower && has_upper)) error("Attempt to define unbounded non-arithmetical auxvar.");

  const bound lo = normalize_bound({v, true, lower_strict, lower});
  const bound hi = normalize_bound({v, false, false, upper});
  if (has_lower && has_upper && bounds_conflict(lo, hi)) error("Attempt to define variable with empty range.");
  // The range enters at level 0 through ordinary propagation.
  if (has_lower) add_unit_dclause(lo);
  if (has_upper) add_unit_dclause(hi);

  if (!arith_auxvar && lo.value == hi.value) {
    var.constant = true;
    ++num_constant;
  } else {
    if (var.boolean) ++num_boolean;
    if (intvar) {
      ++num_integer;
    } else {
      ++num_real;
    }
  }
  return v;
}

u32 krait_solver::make_tclause(u32 functor, u32 y, u32 z, double c) {
  const u32 t = static_cast<u32>(++num_tclauses);
  tclauses.resize(num_tclauses + 1);
  tclause& tc = tclauses[t];
  tc = tclause{};
  tc.functor = functor;
  tc.y = y;
  tc.z = z;
  tc.c = c;
  if (current_part != 0) tc.part_mask = static_cast<u8>(2u << (current_part - 1));

  // The result's integrality and the range its operation guarantees.
  const bool c_integral = std::trunc(c) == c;
  const bool even = std::fmod(std::nearbyint(c), 2.0) == 0.0;
  bool is_int = false, has_lower = false, lower_strict = false, has_upper = false;
  double lower = 0.0, upper = 0.0;
  switch (functor) {
    case KRAIT_SUM:
    case KRAIT_PRODUCT:
    case KRAIT_MAX:
    case KRAIT_MIN: is_int = vars[y].intvar && vars[z].intvar; break;
    case KRAIT_SCALE: is_int = vars[y].intvar && c_integral; break;
    case KRAIT_ABS:
      is_int = vars[y].intvar && c_integral;
      has_lower = true;
      break;
    case KRAIT_EXP: has_lower = lower_strict = true; break;
    case KRAIT_COS:
      has_lower = has_upper = true;
      lower = -1.0;
      upper = 1.0;
      break;
    case KRAIT_POW:
      is_int = vars[y].intvar;
      has_lower = even;
      break;
    case KRAIT_NRT:
      if (even) add_unit_dclause({y, true, false, 0.0});
      break;
    default: break;
  }
  const u32 x = define_var(true, is_int, has_lower, lower_strict, lower, has_upper, upper);
  tclauses[t].x = x;

  vars[x].tclause_watches.push_back(t);
  vars[y].tclause_watches.push_back(t);
  const bool binary = has_two_operands(functor);
  if (binary && z != y) vars[z].tclause_watches.push_back(t);

  // Seed the new constraint with the bounds its operands already have.
  for (u32 operand : {y, binary ? z : y}) {
    for (u32 id : {vars[operand].bounds.top_lower_id(), vars[operand].bounds.top_upper_id()}) {
      if (id != 0 && deduce({operand, id}, t)) {
        error("Internal error: a new constraint contradicts the bounds it was built from.\n"
              "Please send the input file to <" KRAIT_BUG_ADDRESS ">. Thank you!");
      }
    }
    if (!binary) break;
  }
  return x;
}

u32 krait_solver::add_tclause(u32 functor, u32 y, u32 z, double c) {
  if (functor > KRAIT_NRT) error("Unexpected case in krait_solver::add_tclause.");
  // y + y is 2 * y, y * y is pow(y, 2), max and min of one operand are the operand.
  if (functor == KRAIT_SUM && y == z) {
    functor = KRAIT_SCALE;
    c = 2.0;
  } else if (functor == KRAIT_PRODUCT && y == z) {
    functor = KRAIT_POW;
    c = 2.0;
  } else if ((functor == KRAIT_MAX || functor == KRAIT_MIN) && y == z) {
    return y;
  }
  const bool integral = std::trunc(c) == c;
  if (functor == KRAIT_POW) {
    if (!integral) error("Exponent must be integer.");
    if (c == 0.0) return define_constant_var(1.0);
  }
  if (functor == KRAIT_NRT && !(integral && c >= 2.0)) error("Exponent must be an integer greater equal two.");
  if ((functor == KRAIT_SCALE || functor == KRAIT_POW) && c == 1.0) return y;

  // The key names only what the operation reads.
  const bool binary = has_two_operands(functor);
  const bool with_constant = functor == KRAIT_SCALE || functor == KRAIT_POW || functor == KRAIT_NRT;
  std::unique_ptr<sharable_expr> key =
      std::make_unique<sharable_tclause>(functor, y, binary ? z : 0, with_constant ? c : 0.0);
  sharable_entry found;
  if (lookup_sharable_expr(key, 3, found)) return found.rep.var;
  const u32 x = make_tclause(functor, y, z, c);
  insert_sharable_expr(std::move(key), {x, true, false, 0.0}, 3);
  return x;
}

u32 krait_solver::define_constant_var(double value) {
  std::unique_ptr<sharable_expr> key = std::make_unique<sharable_arithconst>(value);
  sharable_entry found;
  if (lookup_sharable_expr(key, 3, found)) return found.rep.var;
  const u32 v = define_var(false, false, true, false, value, true, value);
  insert_sharable_expr(std::move(key), {v, true, false, value}, 3);
  return v;
}

bound krait_solver::true_bound() { return {define_constant_var(1.0), true, false, 1.0}; }
