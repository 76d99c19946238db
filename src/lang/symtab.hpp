#pragma once

#include <map>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class hexpr;
struct krait_solver;

// One variable of the input, or an auxiliary name the translation introduces.
class hexpr_symobj {
 public:
  hexpr_symobj(std::string name, double lower, double upper, bool is_int, bool is_static,
               bool hidden = false)
      : name(std::move(name)), lower(lower), upper(upper), is_int(is_int), is_static(is_static),
        hidden(hidden) {}
  virtual ~hexpr_symobj() = default;

  // Remembers how many instances exist when a frame opens ...
  virtual void open_frame_mark();
  // ... and drops those created since, when it closes.
  virtual void close_frame_mark();

  std::string name;
  double lower;
  double upper;
  bool is_int;     // int and boole declarations
  bool is_static;  // time-invariant: one instance serves every step
  bool hidden;     // left out of the solution
  std::string lower_text, upper_text;  // the declared range as written
  int aux_kind = 0;              // auxiliary names only: 0 variable, 1 upper, 2 lower literal
  std::vector<int> instances;    // solver variable per unwinding depth
  std::vector<hexpr*> users;     // nodes that cache a position of this record
  std::vector<int> frame_marks;  // per open frame: instance count - 1 when it was opened
};

// Orders records by name, byte-wise; also compares a record with a bare name for lookups.
struct symobj_name_less {
  using is_transparent = void;
  bool operator()(const hexpr_symobj* a, const hexpr_symobj* b) const { return a->name < b->name; }
  bool operator()(const hexpr_symobj* a, std::string_view b) const { return a->name < b; }
  bool operator()(std::string_view a, const hexpr_symobj* b) const { return a < b->name; }
};

using symbol_set = std::set<hexpr_symobj*, symobj_name_less>;
using symbol_ref = symbol_set::iterator;

struct hexpr_symconst {
  std::string name;
  double value;
  std::string text;  // the value as written
};

using constant_map = std::map<std::string, hexpr_symconst, std::less<>>;

// The names of the input file: variables in frames (so that one BMC depth's symbols and
// instances can be removed again) and symbolic constants (which belong to no frame).
class hexpr_symtab {
 public:
  hexpr_symtab() = default;
  hexpr_symtab(const hexpr_symtab&) = delete;
  hexpr_symtab& operator=(const hexpr_symtab&) = delete;
  ~hexpr_symtab();

  // Takes ownership of `record`; a name already in use ends the run.
  symbol_ref declare_variable(hexpr_symobj* record);
  // The same for a symbol of the translation's own, whose name no input can hold: no checks.
  symbol_ref declare_helper(hexpr_symobj* record);
  void define_constant(const std::string& name, double value, const std::string& text);
  symbol_ref lookup(std::string_view name) { return variables.find(name); }
  constant_map::const_iterator find_constant(std::string_view name) const { return constants.find(name); }

  void new_frame();
  // Deletes the variables inserted in the top frame (resetting the nodes that cache them) and
  // the instances created while it was open.
  void delete_last_frame();

  // The entries of the SOLUTION section, in name order.
  void print_solution(const krait_solver& solver, std::ostream& out, bool skip_hidden) const;
  static void print_variable(const hexpr_symobj& record, const krait_solver& solver, std::ostream& out);

  symbol_set variables;
  constant_map constants;
  std::vector<std::vector<symbol_ref>> frames;

 private:
  void forget_users(const hexpr_symobj& record);
};

extern hexpr_symtab symtab;

// The position that means "no symbol" for nodes caching one.
inline symbol_ref no_symbol() { return symtab.variables.end(); }
