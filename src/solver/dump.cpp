// Readable dumps of the solver's stores, for a person looking into a run.
#include <iostream>

#include "base/error.hpp"
#include "solver/solver.hpp"

namespace {

std::ostream& out() { return std::cout; }

void print_bound(const bound& b) {
  out() << "V_" << b.var << (b.is_lower ? (b.strict ? " > " : " >= ") : (b.strict ? " < " : " <= ")) << b.value;
}

// " [ITP]: " with blanks for the parts not in the mask; ": " without a mask.
void print_part_mask(u8 mask) {
  if (mask == 0) {
    out() << ": ";
    return;
  }
  out() << " [" << (mask & KRAIT_PART_INIT ? 'I' : ' ') << (mask & KRAIT_PART_TRANS ? 'T' : ' ')
        << (mask & KRAIT_PART_TARGET ? 'P' : ' ') << "]: ";
}

void print_clause(const dclause& c, const u32 watch[2], bool wrap) {
  out() << "DC_" << c.index;
  if (c.learned) out() << (c.shift_template ? " (T)" : c.shift_copy ? " (R)" : " (L)");
  print_part_mask(c.part_mask);
  for (u32 i = 0; i < c.atoms.size(); ++i) {
    if (i > 0) out() << " or ";
    const bool watched = i == watch[0] || i == watch[1];
    if (wrap) out() << (watched ? "[[" : "(");
    print_bound(c.atoms[i]);
    if (wrap) out() << (watched ? "]]" : ")");
  }
  out() << std::endl;
}

}  // namespace

void krait_solver::dump_dclauses(const char* prefix) const {
  if (dclause_slot.size() <= 1) {
    out() << prefix << "(no disjunctive clauses)" << std::endl;
    return;
  }
  for (u32 index = 1; index < dclause_slot.size(); ++index) {
    if (dclause_slot[index] == 0) continue;
    out() << prefix;
    print_clause(dclause_at(index), hot[index].watch, true);
  }
}

void krait_solver::dump_dclause(u32 index, const char* prefix) const {
  if (index >= dclause_slot.size()) error("Passed invalid argument to dump_dclause.");
  out() << prefix;
  print_clause(dclause_at(index), hot[index].watch, false);
}

void krait_solver::dump_tclauses(const char* prefix) const {
  if (tclauses.size() <= 1) {
    out() << prefix << "(no triplet clauses)" << std::endl;
    return;
  }
  static const char* const names[] = {"", "", "", "max", "min", "abs", "exp", "cos", "pow", "nrt"};
  for (u32 t = 1; t < tclauses.size(); ++t) {
    const tclause& tc = tclauses[t];
    out() << prefix << "TC_" << t;
    print_part_mask(tc.part_mask);
    out() << "V_" << tc.x << " = ";
    switch (tc.functor) {
      case KRAIT_SUM: out() << "V_" << tc.y << " + V_" << tc.z; break;
      case KRAIT_SCALE: out() << tc.c << " * V_" << tc.y; break;
      case KRAIT_PRODUCT: out() << "V_" << tc.y << " * V_" << tc.z; break;
      case KRAIT_MAX:
      case KRAIT_MIN: out() << names[tc.functor] << "(V_" << tc.y << ", V_" << tc.z << ")"; break;
      case KRAIT_POW:
      case KRAIT_NRT: out() << names[tc.functor] << "(V_" << tc.y << ", " << tc.c << ")"; break;
      default: out() << names[tc.functor < 10 ? tc.functor : 0] << "(V_" << tc.y << ")"; break;
    }
    out() << std::endl;
  }
}

void krait_solver::dump_variables(const char* prefix) const {
  if (vars.size() <= 1) {
    out() << prefix << "(no variables)" << std::endl;
    return;
  }
  for (u32 v = 1; v < vars.size(); ++v) {
    const variable& var = vars[v];
    out() << prefix << "V_" << v << std::endl;
    for (const bool lower : {true, false}) {
      bool strict;
      double value;
      out() << prefix << (lower ? "    lower bound : " : "    upper bound : ");
      if (lower ? get_lower_bound(v, strict, value) : get_upper_bound(v, strict, value)) {
        out() << value << (strict ? " (strict)" : "");
      } else {
        out() << (lower ? "-inf" : "+inf");
      }
      out() << std::endl;
    }
    out() << prefix << "    arith_auxvar: " << (var.arith_auxvar ? "true" : "false") << std::endl;
    out() << prefix << "    intvar      : " << (var.intvar ? "true" : "false") << std::endl;
    out() << prefix << "    watched in tclauses: ";
    if (var.tclause_watches.empty()) out() << "(nowhere)";
    for (u32 t : var.tclause_watches) out() << "TC_" << t << " ";
    out() << std::endl;
    for (const bool lower : {true, false}) {
      out() << prefix << (lower ? "    watched in dclauses as lb: " : "    watched in dclauses as ub: ");
      for (const dclause_watch& w : lower ? var.dclause_watches_lb : var.dclause_watches_ub) {
        out() << "DC_" << w.dclause << " ";
      }
      out() << std::endl;
    }
    out() << prefix << "    prev var: V_" << var.prev_var << std::endl;
    out() << prefix << "    next var: V_" << var.next_var << std::endl;
  }
}

void krait_solver::dump_implication_queue(const char* prefix) const {
  if (implication_queue.empty()) {
    out() << prefix << "(no entries in implication queue)" << std::endl;
    return;
  }
  for (std::size_t i = 0; i < implication_queue.size(); ++i) {
    const queued_stack& q = implication_queue[i];
    out() << prefix << "IQ_" << i << ": " << (q.is_lower ? "lower" : "upper") << " bound for V_" << q.var
          << std::endl;
  }
}

void krait_solver::dump_pending_implications(const char* prefix) const {
  for (std::size_t i = 0; i < pending_implications.size(); ++i) {
    const pending_implication& p = pending_implications[i];
    out() << prefix << "PI_" << i << ": dl = " << p.level << ", ";
    print_bound(p.atom);
    out() << std::endl;
  }
}

void krait_solver::dump_assignments(const char* prefix) const {
  for (u32 d = 0; d <= dlevel; ++d) {
    const std::vector<bound_ref>& refs = trail[d].bounds;
    out() << prefix << "assignments on dlevel " << d << ": " << refs.size() << std::endl;
    for (std::size_t i = 0; i < refs.size(); ++i) {
      out() << prefix << "    " << i << ": ";
      print_bound(bound_of(refs[i]));
      out() << std::endl;
    }
  }
}
