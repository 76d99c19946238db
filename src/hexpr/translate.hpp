#pragma once

#include <cstdint>

#include "solver/bound.hpp"

struct krait_solver;
class hexpr_symobj;

// What a subterm became in the solver: a variable carrying its value or, when var is 0, a
// bound standing for a Boolean literal.
struct translation_result {
  std::uint32_t var = 0;
  bound b;
};

// The part of a transition system being translated: 0 none, 1 INIT, 2 TRANS, 3 TARGET.
extern int translation_phase;

// The solver variable of a symbol at one unwinding step, made (with its predecessors) when
// the step has none yet.
std::uint32_t instance_of(krait_solver& solver, hexpr_symobj& symbol, std::uint32_t index);
