#include "parse_child.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "hexpr/hexpr.hpp"
#include "lang/parser.hpp"
#include "lang/scanner.hpp"
#include "lang/symtab.hpp"

captured_run parse_in_child(const std::string& text, const std::function<void(hexpr*)>& after) {
  return run_captured([&] {
    krait_hexpr_lineno = 1;
    std::FILE* file = std::tmpfile();
    std::fputs(text.c_str(), file);
    std::rewind(file);
    symtab.new_frame();
    hexpr* root = parse_hexpr_file(file);
    if (after)
      after(root);
    else
      root->print_hexpr("", std::cout);
    delete root;
    symtab.delete_last_frame();
    std::fclose(file);
    std::exit(0);
  });
}

void expect_fatal(const std::string& text, const std::string& message) {
  const captured_run run = parse_in_child(text);
  EXPECT_EQ(run.status, 1) << text;
  EXPECT_EQ(run.err, "\nError: " + message + "\n") << text;
}

void dump_with_symbols(hexpr* root) {
  root->print_hexpr("", std::cout);
  for (const hexpr_symobj* record : symtab.variables)
    std::cout << record->name << " [" << record->lower << ", " << record->upper << "]"
              << (record->is_int ? " int" : " float") << (record->is_static ? " static" : "")
              << (record->hidden ? " hidden" : "") << '\n';
  for (const auto& [name, constant] : symtab.constants) std::cout << name << " = " << constant.value << '\n';
}
