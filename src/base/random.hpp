#pragma once

#include <cstdint>

// The only pseudo-random source. Stored masked; changed by `ran0` alone, never reseeded, so
// every run draws the same sequence.
extern std::int32_t random_seed;

// Next number of the generator, strictly between 0 and 1.
double ran0();
