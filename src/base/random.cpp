#include "base/random.hpp"

std::int32_t random_seed = 13;

double ran0() {
  constexpr std::int32_t ia = 16807, im = 2147483647, iq = 127773, ir = 2836;
  constexpr std::int32_t mask = 123459876;
  std::int32_t s = random_seed ^ mask;
  // Schrage's method keeps ia * s inside 32 bits.
  const std::int32_t k = s / iq;
  s = ia * (s - k * iq) - ir * k;
  if (s < 0) s += im;
  random_seed = s ^ mask;
  return (1.0 / im) * s;
}
