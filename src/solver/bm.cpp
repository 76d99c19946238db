#include "solver/bm.hpp"

#include "base/error.hpp"

void bm::no_such_entry() { error("Unexpected case in bm::get_bound_info."); }
