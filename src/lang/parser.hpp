#pragma once

#include <cstdio>

class hexpr;

// Parses a whole input file into its tree (an hexpr_formula for a plain formula, an
// hexpr_proof_spec for a transition system), entering declarations and constants into
// `symtab`. A syntax error ends the run with status 1 after the parser's report.
hexpr* parse_hexpr_file(std::FILE* file);
