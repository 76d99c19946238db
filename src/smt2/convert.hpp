#pragma once

// An input of the program written as an SMT-LIB 2 script: a plain formula as it stands, a
// transition system unwound to one depth (INIT at step 0, TRANS up to the depth, TARGET at it).

#include <string>

class hexpr;

namespace smt2 {

// `parsed` is the tree as the program's reader returns it (symbols entered in the table);
// `depth` < 0 for a plain formula. Throws std::invalid_argument for what has no counterpart.
std::string krait_to_smt2(const hexpr& parsed, int depth, const std::string& source);

}  // namespace smt2
