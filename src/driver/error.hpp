#pragma once

// The program's only ways of talking outside the report. `error` is the single fatal path:
// it never returns, so callers need no code after it.

[[noreturn]] void error(const char* format, ...) __attribute__((format(printf, 1, 2)));
void warning(const char* format, ...) __attribute__((format(printf, 1, 2)));
void info(const char* format, ...) __attribute__((format(printf, 1, 2)));
