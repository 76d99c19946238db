#pragma once

// The program's only ways of talking outside the report. `error` is the single fatal path:
// it never returns, so callers need no code after it.

[[noreturn]] void error(const char* format, ...) __attribute__((format(printf, 1, 2)));
void warning(const char* format, ...) __attribute__((format(printf, 1, 2)));
void info(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Ends the run with `status` once its messages are out. A harness that runs many inputs in one
// process (the fuzzers) installs a handler that takes over instead; it must not return, so it
// throws. Without one the process exits.
using fatal_handler = void (*)(int status);
void set_fatal_handler(fatal_handler handler);
[[noreturn]] void end_run(int status);
