// x = y * z: four-corner products forward, four-corner quotients backward.
#include "interval/rounding.hpp"
#include "interval/rule.hpp"

namespace {

// The loosest end of the four corner results, computed in the direction of that end.
template <endpoint (*op)(bool, endpoint, endpoint)>
endpoint corner_hull(bool lower, const var_ends& a, const var_ends& b) {
  const endpoint corners[4] = {op(lower, a.lo, b.lo), op(lower, a.lo, b.hi), op(lower, a.hi, b.lo),
                               op(lower, a.hi, b.hi)};
  endpoint lo, hi;
  endpoint_hull(corners, 4, lo, hi);
  return lower ? lo : hi;
}

bool bounded(const var_ends& v) { return v.has_lo && v.has_hi; }

}  // namespace

// Every end derives from the ends read at entry; each target gets its lower end first.
void narrow_product(rule& r) {
  const var_ends &x = r.x(), &y = r.y(), &z = r.z();

  // x from y and z.
  auto forward = [&]() {
    if (!bounded(y) || !bounded(z)) return;
    r.emit_rounded(0, true, corner_hull<multiply_endpoints>(true, y, z), {Y_LO, Y_HI, Z_LO, Z_HI});
    r.emit_rounded(0, false, corner_hull<multiply_endpoints>(false, y, z), {Y_LO, Y_HI, Z_LO, Z_HI});
  };
  // One operand from x and the other (the divisor), unless the divisor's range holds 0.
  auto backward = [&](std::uint8_t target, std::uint8_t divisor) {
    const var_ends& d = r.in.v[divisor];
    if (!bounded(x) || !bounded(d) || (d.lo.value <= 0.0 && 0.0 <= d.hi.value)) return;
    const operand_end d_lo = end_of(divisor, true), d_hi = end_of(divisor, false);
    r.emit_rounded(target, true, corner_hull<divide_endpoints>(true, x, d), {X_LO, X_HI, d_lo, d_hi});
    r.emit_rounded(target, false, corner_hull<divide_endpoints>(false, x, d), {X_LO, X_HI, d_lo, d_hi});
  };

  if (r.on_x()) {
    backward(1, 2);
    backward(2, 1);
  } else if (r.on_y()) {
    forward();
    backward(2, 1);
  } else {
    forward();
    backward(1, 2);
  }
}
