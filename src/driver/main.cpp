// The program.
#include "driver/run.hpp"

int main(int argc, char** argv) { return run_program(argc, argv); }
