// x = y * z: four-corner products forward, four-corner quotients backward.
#include "interval/rounding.hpp"
#include "solver/solver.hpp"

namespace {

using corner_op = endpoint (*)(endpoint, endpoint);

// The loosest end of the four corner results, computed in the direction of that end.
endpoint corner_hull(corner_op op, bool lower, const var_view& a, const var_view& b) {
  rounding::toward(lower);
  const endpoint corners[4] = {op(a.lo(), b.lo()), op(a.lo(), b.hi()), op(a.hi(), b.lo()), op(a.hi(), b.hi())};
  endpoint lo, hi;
  endpoint_hull(corners, 4, lo, hi);
  return lower ? lo : hi;
}

bool bounded(const var_view& v) { return v.has_lower && v.has_upper; }

}  // namespace

// Both projections of one trigger work from the bounds read at entry: `target` is updated as
// its own bounds are asserted, the operands are not.
bool krait_solver::deduce_product(bound_ref trigger, u32 t) {
  rule_inputs in;
  if (!read_rule_inputs(trigger, t, in)) return false;
  const tclause& tc = in.tc;
  const var_view x0 = in.x, y0 = in.y, z0 = in.z;

  // x from y and z.
  auto forward = [&]() {
    if (!bounded(y0) || !bounded(z0)) return false;
    const antecedent_list reasons{{tc.y, y0.lower_id}, {tc.y, y0.upper_id}, {tc.z, z0.lower_id}, {tc.z, z0.upper_id}};
    return narrow_rounded(tc.x, in.x, true, corner_hull(multiply_endpoints, true, y0, z0), t, reasons) ||
           narrow_rounded(tc.x, in.x, false, corner_hull(multiply_endpoints, false, y0, z0), t, reasons);
  };
  // One operand from x and the other (the divisor), unless the divisor's range holds 0.
  auto backward = [&](u32 target, var_view& target_view, u32 divisor, const var_view& d) {
    if (!bounded(x0) || !bounded(d) || (d.lower <= 0.0 && 0.0 <= d.upper)) return false;
    const antecedent_list reasons{{tc.x, x0.lower_id}, {tc.x, x0.upper_id}, {divisor, d.lower_id}, {divisor, d.upper_id}};
    return narrow_rounded(target, target_view, true, corner_hull(divide_endpoints, true, x0, d), t, reasons) ||
           narrow_rounded(target, target_view, false, corner_hull(divide_endpoints, false, x0, d), t, reasons);
  };

  bool conflict;
  if (in.on_x()) {
    conflict = backward(tc.y, in.y, tc.z, z0) || backward(tc.z, in.z, tc.y, y0);
  } else if (in.on_y()) {
    conflict = forward() || backward(tc.z, in.z, tc.y, y0);
  } else {
    conflict = forward() || backward(tc.y, in.y, tc.z, z0);
  }
  rounding::nearest();
  return conflict;
}
