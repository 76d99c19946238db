#pragma once

// Work done in a child process: the program's state (symbol table, scanner, the solver's
// translation) is process-wide and its fatal errors end the process, so a command that runs
// several independent searches, or must go on after one fails, forks for each.

#include <functional>
#include <string>

struct child_output {
  bool exited = false;  // false: ended by a signal
  int status = 0;       // exit status, or the signal's number
  std::string out, err;
};

// Runs `body` in a child whose standard output and standard error are kept in temporary files,
// waits for it and returns what it wrote. The child ends with status 0 when `body` returns.
child_output run_in_child(const std::function<void()>& body);
