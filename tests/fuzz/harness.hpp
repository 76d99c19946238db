#pragma once

// What both fuzz targets share: running one input as if it were a fresh process, with the
// report silenced and fatal errors turned into a return.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

class hexpr;
struct krait_solver;

namespace fuzz {

// Runs `body` for one input: the process-wide state starts as at program start-up, standard
// output, standard error and the report go into a digest instead of the terminal, and a fatal
// error ends the body the way it would have ended the process. With KRAIT_FUZZ_TWICE=1 in the
// environment every input runs twice and a different digest aborts (state carried over from an
// earlier input). With KRAIT_FUZZ_VERBOSE=1 nothing is silenced.
void run_input(const std::function<void()>& body);

// True when the environment asks for the run's output (see above).
bool verbose();

// The bytes as the contents of an input file: the parsed and preprocessed tree, or null for an
// input skipped because it runs into a fault known to be open (see harness.cpp).
std::unique_ptr<hexpr> parse(const std::uint8_t* data, std::size_t size);

// A new solver with its base context pushed and the base symbol frame opened, as the program
// sets them up before it reads its input.
std::unique_ptr<krait_solver> new_solver();

// Closes what `new_solver` opened (the base frame still holds the declarations, which the nodes
// of `root` refer to), then frees the tree and the solver, in the program's order.
void finish(std::unique_ptr<krait_solver> solver, std::unique_ptr<hexpr> root);

}  // namespace fuzz
