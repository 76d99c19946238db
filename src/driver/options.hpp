#pragma once

#include "driver/run.hpp"

extern run_settings_t run_settings;

// Walks the arguments once and fills `run_settings`. Returns only when every argument was
// accepted; --help and --version end the process with status 0, a bad argument with status 1.
void parse_options(int argc, char** argv);

void print_usage(const char* program_name);
void print_version();
