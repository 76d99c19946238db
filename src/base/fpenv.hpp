#pragma once

// The floating-point environment as the narrowing and the search use it: the rounding
// direction and the sticky exception flags of the SSE unit, which carries every double
// operation of the program (it is built for SSE arithmetic, never x87). Its control register
// is read and written directly: a switch costs a few cycles, where the C library's functions,
// which keep the x87 unit in step as well, cost many times that. What the C library reports
// about the x87 unit is therefore not this environment.
//
// Every access is a volatile asm with a memory clobber: arithmetic whose operands and result
// are pinned the same way (interval/rounding.hpp) stays between the switches around it.

#include <cstdint>

namespace fpenv {

enum flag : unsigned {
  invalid = 0x01,
  divbyzero = 0x04,
  overflow = 0x08,
  underflow = 0x10,
  inexact = 0x20,
};
constexpr unsigned all_flags = 0x3f;  // the four above, inexact and "denormal operand"
// The flags that make a computed bound untrustworthy.
constexpr unsigned watched = invalid | divbyzero | overflow | underflow;

enum direction : unsigned { to_nearest = 0x0000, downward = 0x2000, upward = 0x4000 };
constexpr unsigned rounding_bits = 0x6000;

inline unsigned read() {
  unsigned csr;
  asm volatile("stmxcsr %0" : "=m"(csr) : : "memory");
  return csr;
}
inline void write(unsigned csr) { asm volatile("ldmxcsr %0" : : "m"(csr) : "memory"); }

// The direction in force, as the register holds it.
inline direction rounding() { return static_cast<direction>(read() & rounding_bits); }

// The direction last set through `set_rounding`, which is the one in force as long as nothing
// else changes it (nothing in the program does; the register starts at round-to-nearest). A
// switch to the direction already in force then costs no access at all.
inline direction last_set = to_nearest;
inline void set_rounding(direction d) {
  if (d == last_set) return;
  write((read() & ~rounding_bits) | d);
  last_set = d;
}

// The register's bits besides the direction and the flags (the exception masks and the like)
// as the program starts with them; nothing changes them.
inline const unsigned control = read() & ~(rounding_bits | all_flags);

// Sets the direction and sets every flag to what `flags` says, without reading the register:
// on some processors a read costs several times a write, and the callers know the flags they
// want.
inline void set_rounding_and_flags(direction d, unsigned flags) {
  write(control | d | (flags & all_flags));
  last_set = d;
}

// The subset of `which` that is raised.
inline unsigned raised(unsigned which) { return read() & which; }
inline void clear(unsigned which) {
  const unsigned csr = read();
  if ((csr & which) != 0) write(csr & ~which);
}
// Sets every flag to what `saved` (an earlier raised(all_flags)) says.
inline void restore(unsigned saved) {
  const unsigned csr = read();
  const unsigned wanted = (csr & ~all_flags) | (saved & all_flags);
  if (wanted != csr) write(wanted);
}

}  // namespace fpenv
