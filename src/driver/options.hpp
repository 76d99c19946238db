#pragma once

#include "driver/run.hpp"

extern run_settings_t run_settings;

// Walks the arguments once and fills `run_settings`. Returns only when every argument was
// accepted; --help and --version end the process with status 0, a bad argument with status 1.
void parse_options(int argc, char** argv);

void print_usage(const char* program_name);
// The option lines of the help page, and its closing line; companions print them too.
extern const char* const option_table;
extern const char* const bug_address_line;
void print_version();

// What --help and --version print: the program's own texts unless a companion command puts
// its own in place before parsing.
struct program_texts_t {
  void (*usage)(const char* program_name) = print_usage;
  void (*version)() = print_version;
};
extern program_texts_t program_texts;
