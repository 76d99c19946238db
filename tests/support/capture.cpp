#include "support/capture.hpp"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

namespace {

std::string slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace

captured_run run_captured(const std::function<void()>& body) {
  char out_path[] = "/tmp/krait_test_outXXXXXX";
  char err_path[] = "/tmp/krait_test_errXXXXXX";
  const int out_fd = mkstemp(out_path);
  const int err_fd = mkstemp(err_path);
  std::fflush(stdout);
  std::fflush(stderr);
  std::cout.flush();

  captured_run run;
  const pid_t child = fork();
  if (child == 0) {
    dup2(out_fd, STDOUT_FILENO);
    dup2(err_fd, STDERR_FILENO);
    body();
    std::cout.flush();
    std::fflush(nullptr);
    _exit(0);
  }
  int wait_status = 0;
  waitpid(child, &wait_status, 0);
  if (WIFEXITED(wait_status)) run.status = WEXITSTATUS(wait_status);
  close(out_fd);
  close(err_fd);
  run.out = slurp(out_path);
  run.err = slurp(err_path);
  unlink(out_path);
  unlink(err_path);
  return run;
}
