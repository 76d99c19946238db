#include "base/error.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <iostream>

#include "support/capture.hpp"

TEST(Diagnostics, ErrorWritesToStandardErrorAndExitsWithOne) {
  const captured_run run = run_captured([] {
    std::cout << "report line without end";
    error("Could not open input file.");
  });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "report line without end");  // flushed, not lost
  EXPECT_EQ(run.err, "\nError: Could not open input file.\n");

  const captured_run formatted = run_captured([] { error("Invalid option '%s'. Try %s --help.", "-x", "krait"); });
  EXPECT_EQ(formatted.status, 1);
  EXPECT_EQ(formatted.err, "\nError: Invalid option '-x'. Try krait --help.\n");

  // A message may hold its own newlines; they are printed unchanged.
  const captured_run multi = run_captured([] { error("Invalid value '%s' for a_init.\n", "0"); });
  EXPECT_EQ(multi.err, "\nError: Invalid value '0' for a_init.\n\n");
  EXPECT_EQ(multi.out, "");
}

TEST(Diagnostics, WarningAndInfoGoToStandardOutputInReportOrder) {
  const captured_run run = run_captured([] {
    std::cout << "SOLVING:";
    warning("Option '--reuse' without effect when not in BMC mode!");
    std::cout << "    input formula" << std::endl;
    info("%d and %s", 7, "more");
  });
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out,
            "SOLVING:\nWarning: Option '--reuse' without effect when not in BMC mode!\n"
            "    input formula\n\nInfo: 7 and more\n");
  EXPECT_EQ(run.err, "");
}
