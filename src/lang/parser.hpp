#pragma once

#include <cstdio>

class hexpr;

// Parses a whole input file into its tree (an hexpr_formula for a plain formula, an
// hexpr_proof_spec for a transition system), entering declarations and constants into
// `symtab`. A syntax error ends the run with status 1 after the parser's report.
// With `invariant` given, a transition system may hold an INVARIANT section between TRANS and
// TARGET (the word is a name otherwise): its formula, or null, is returned there.
hexpr* parse_hexpr_file(std::FILE* file, hexpr** invariant = nullptr);
