#include "base/error.hpp"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace {

fatal_handler installed_handler = nullptr;

// Each message starts with a newline so that it begins on a fresh line even when the report
// was in the middle of one.
void emit(std::FILE* stream, const char* label, const char* format, std::va_list args) {
  std::fputs(label, stream);
  std::vfprintf(stream, format, args);
  std::fputc('\n', stream);
  std::fflush(stream);
}

}  // namespace

void error(const char* format, ...) {
  // Anything still buffered on the report must come out before the process ends.
  std::fflush(stdout);
  std::va_list args;
  va_start(args, format);
  emit(stderr, "\nError: ", format, args);
  va_end(args);
  end_run(1);
}

void set_fatal_handler(fatal_handler handler) { installed_handler = handler; }

void end_run(int status) {
  if (installed_handler != nullptr) installed_handler(status);
  std::exit(status);
}

void warning(const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  emit(stdout, "\nWarning: ", format, args);
  va_end(args);
}

void info(const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  emit(stdout, "\nInfo: ", format, args);
  va_end(args);
}
