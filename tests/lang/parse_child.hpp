#pragma once

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include "hexpr/hexpr_nodes.hpp"
#include "lang/parser.hpp"
#include "lang/scanner.hpp"
#include "support/capture.hpp"

// A tree on one line: (KIND child ...), a function as (name child ...), a linear term as
// (LINTERM coefficient*variable ...); a variable as its name, a constant as its value (after
// "name=" when it has a name), any other leaf as its kind name.
inline std::string sexpr(const hexpr* e) {
  const auto number = [](double value) { char d[32]; return std::string(d, std::to_chars(d, d + 32, value).ptr); };
  if (const auto* v = dynamic_cast<const hexpr_var*>(e)) return v->name + (v->primed ? "'" : "");
  if (const auto* k = dynamic_cast<const hexpr_const*>(e))
    return (k->text.empty() ? "" : k->text + "=") + number(k->value);
  if (e->is_leaf()) return hexpr_kind_name(e->get_opname());
  const auto* f = dynamic_cast<const hexpr_function*>(e);
  const auto* term = dynamic_cast<const hexpr_linterm*>(e);
  const auto* node = static_cast<const hexpr_inner_node*>(e);
  std::string text = "(" + (f != nullptr ? f->name : hexpr_kind_name(e->get_opname()));
  for (auto child = node->subexprs_begin(); child != node->subexprs_end(); ++child)
    text += " " + (term ? number(term->coefficients[child - node->subexprs_begin()]) + "*" : "") + sexpr(*child);
  return text + ")";
}

// The first child of an inner node.
inline hexpr* first(const hexpr* e) { return *static_cast<const hexpr_inner_node*>(e)->subexprs_begin(); }

// Parses `text` as an input file in this process: the line count starts at 1 and a frame opens.
inline hexpr* parse_text(const std::string& text) {
  krait_hexpr_lineno = 1;
  std::FILE* file = std::tmpfile();
  std::fputs(text.c_str(), file);
  std::rewind(file);
  symtab.new_frame();
  return parse_hexpr_file(file);
}

// The same in a child process, as the scanner, the parser and `symtab` keep process-wide state;
// `after` runs on the tree. The child ends through exit, so that the sanitizer build's leak check
// looks at it.
inline captured_run parse_in_child(const std::string& text, const std::function<void(hexpr*)>& after) {
  return run_captured([&] {
    hexpr* root = parse_text(text);
    after(root);
    delete root;
    symtab.delete_last_frame();
    std::exit(0);
  });
}
