#pragma once

#include <functional>
#include <string>

// What a piece of code wrote and how the process ended, with the code run in a child process
// so that fatal errors (which end the process) can be observed exactly.
struct captured_run {
  std::string out;
  std::string err;
  int status = -1;  // exit status; -1 if the child did not exit normally
};

// Runs `body` in a forked child with standard output and error redirected; if `body` returns,
// the child exits with status 0.
captured_run run_captured(const std::function<void()>& body);
