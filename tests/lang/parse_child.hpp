#pragma once

#include <functional>
#include <string>

#include "support/capture.hpp"

class hexpr;

// Parses `text` as an input file in a child process: the scanner, the parser and `symtab` keep
// process-wide state, so every parse gets a fresh copy of it. The line count starts at 1 and
// the base frame is open. `after` runs on the returned tree before it and the frame are deleted;
// by default it prints the tree dump. The child ends through exit, so that the sanitizer build's
// leak check looks at it.
captured_run parse_in_child(const std::string& text, const std::function<void(hexpr*)>& after = {});

// Expects the parse of `text` to end with the fatal error `message`.
void expect_fatal(const std::string& text, const std::string& message);

// The tree dump, then the declared variables and the constants of `symtab`, one line each, in
// name order.
void dump_with_symbols(hexpr* root);
