#pragma once

// What both fuzz targets share: one input run as if by a fresh process.

#include <cstddef>
#include <cstdint>
#include <functional>

class hexpr;
struct krait_solver;

namespace fuzz {

// Parses and preprocesses the bytes as an input file and hands the tree to `body` with a new
// solver, set up and torn down as the program does it. Process-wide state starts as at start-up;
// standard output, standard error and the report go into a digest instead of the terminal; a
// fatal error ends the run the way it would have ended the process. An input that runs into a
// fault known to be open is skipped (see harness.cpp). KRAIT_FUZZ_TWICE=1 in the environment
// runs every input twice and aborts on a different digest (state carried over from an earlier
// input); KRAIT_FUZZ_VERBOSE=1 silences nothing.
void run_input(const std::uint8_t* data, std::size_t size, const std::function<void(krait_solver&, hexpr&)>& body);

bool verbose();

}  // namespace fuzz
