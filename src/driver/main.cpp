#include <cstdio>
#include <iostream>

#include "driver/error.hpp"
#include "driver/options.hpp"
#include "version.hpp"

int main(int argc, char** argv) {
  parse_options(argc, argv);

  std::cout << "\n# This is Krait " KRAIT_VERSION ", compiled on " KRAIT_BUILD_DATE "." << std::endl;

  if (run_settings.input_file == nullptr) error("No input file specified. Try %s --help.", argv[0]);
  std::FILE* input = std::fopen(run_settings.input_file, "r");
  if (input == nullptr) error("Could not open input file.");

  std::fclose(input);
  return 0;
}
