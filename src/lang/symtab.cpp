#include "lang/symtab.hpp"

#include "base/error.hpp"
#include "hexpr/hexpr_nodes.hpp"

hexpr_symtab symtab;

void hexpr_symobj::open_frame_mark() { frame_marks.push_back(static_cast<int>(instances.size()) - 1); }

void hexpr_symobj::close_frame_mark() {
  const int mark = frame_marks.back();
  frame_marks.pop_back();
  if (mark < static_cast<int>(instances.size()) - 1) instances.resize(mark + 1);
}

hexpr_symtab::~hexpr_symtab() {
  for (hexpr_symobj* record : variables) delete record;
}

symbol_ref hexpr_symtab::declare_variable(hexpr_symobj* record) {
  const char* name = record->name.c_str();
  if (constants.contains(record->name))
    error("%s has been defined to be a constant; it cannot be redefined to be a variable.", name);
  if (lookup(record->name) != variables.end()) error("Redefinition of variable %s", name);
  return declare_helper(record);
}

symbol_ref hexpr_symtab::declare_helper(hexpr_symobj* record) {
  const symbol_ref position = variables.insert(record).first;
  // Records inserted while no frame is open live as long as the table.
  if (!frames.empty()) frames.back().push_back(position);
  return position;
}

void hexpr_symtab::define_constant(const std::string& name, double value, const std::string& text) {
  if (constants.contains(name)) error("Redefinition of constant %s", name.c_str());
  if (lookup(name) != variables.end())
    error("%s has been defined to be a variable; it cannot be redefined to be a constant.", name.c_str());
  constants.emplace(name, hexpr_symconst{name, value, text});
}

void hexpr_symtab::new_frame() {
  frames.emplace_back();
  for (hexpr_symobj* record : variables) record->open_frame_mark();
}

void hexpr_symtab::delete_last_frame() {
  for (const symbol_ref position : frames.back()) {
    hexpr_symobj* record = *position;
    forget_users(*record);
    variables.erase(position);
    delete record;
  }
  frames.pop_back();
  for (hexpr_symobj* record : variables) record->close_frame_mark();
}

// The nodes that cached the record must not keep a position that is about to disappear.
void hexpr_symtab::forget_users(const hexpr_symobj& record) {
  for (hexpr* node : record.users) {
    const hexpr_kind kind = node->get_opname();
    switch (kind) {
      case HEXPR_VAR:
        static_cast<hexpr_var*>(node)->symbol_entry = variables.end();
        break;
      case HEXPR_CONST:
        static_cast<hexpr_const*>(node)->symbol_entry = variables.end();
        break;
      case HEXPR_LINTERM:
      case HEXPR_AND:
      case HEXPR_OR:
      case HEXPR_ADD:
      case HEXPR_MUL:
      case HEXPR_FUNCTION:
        static_cast<hexpr_n_ary_node*>(node)->symbol_entry = variables.end();
        break;
      default:
        error("Unexpected case value %d in hexpr_symtab::delete_last_frame.", static_cast<int>(kind));
    }
  }
}
