// The settings and statistics blocks of the report.
#include <iostream>

#include "base/error.hpp"
#include "solver/solver.hpp"

void krait_solver::set_min_bound_delta(double delta) {
  if (delta < 0.0) error("Invalid argument to set_min_bound_delta.");
  min_bound_delta = delta;
}

namespace {

const char* yes_no(bool b) { return b ? "yes" : "no"; }

const char* order_label(u32 order) {
  static const char* const labels[] = {"standard",         "bv first",          "bv last",
                                       "bmc fwd",          "bmc bwd",           "bmc fwd, bv first",
                                       "bmc fwd, bv last", "bmc bwd, bv first", "bmc bwd, bv last",
                                       "shuffle"};
  return order <= 9 ? labels[order] : "";
}

}  // namespace

void krait_solver::print_settings(const char* prefix) const {
  std::ostream& out = std::cout;
  out << prefix << "min_split_width : " << min_split_width << std::endl;
  out << prefix << "min_bound_delta : " << min_bound_delta << std::endl;
  out << prefix << "var_order       : " << order_label(var_order) << std::endl;
  out << prefix << "reuse           : " << yes_no(reuse) << std::endl;
  out << prefix << "shifting        : " << yes_no(shifting) << std::endl;
  out << prefix << "restarts        : ";
  if (restarts) {
    out << "yes, (a_init, b_init, f_a, f_b) = (" << a_init << ", " << b_init << ", " << f_a << ", " << f_b << ")";
  } else {
    out << "no";
  }
  out << std::endl;
}

void krait_solver::print_statistics(const char* prefix) const {
  std::ostream& out = std::cout;
  out << prefix << "num variables    : " << num_variables << " (B: " << num_boolean << ", I: " << num_integer
      << ", F: " << num_real << ", C: " << num_constant << ")" << std::endl;
  out << prefix << "num dclauses     : " << num_dclauses << " (L: " << num_learned << ", R: " << num_reused
      << ", T: " << num_templates << ", C: " << num_shifted_copies << ", O: " << num_other_learned << ")"
      << std::endl;
  out << prefix << "num tclauses     : " << num_tclauses << std::endl;
  auto pair = [&](const char* label, auto current, auto total) {
    out << prefix << label << current << " / " << total << std::endl;
  };
  pair("num assignments  : ", num_assignments, tot_assignments);
  pair("num ineffective  : ", num_ineffective, tot_ineffective);
  pair("num decisions    : ", num_decisions, tot_decisions);
  pair("num conflicts    : ", num_conflicts, tot_conflicts);
  pair("num restarts     : ", num_restarts, tot_restarts);
  pair("max backjump     : ", max_backjump, tot_max_backjump);
  pair("max dlevel       : ", max_dlevel, tot_max_dlevel);
  pair("max dlevel depth : ", max_dlevel_depth, tot_max_dlevel_depth);
  pair("time solver      : ", time_solver, tot_time_solver);
}
