#include "base/child.hpp"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <stdexcept>

namespace {

std::string contents(std::FILE* f) {
  std::string s;
  std::rewind(f);
  char buffer[4096];
  for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, f)) > 0;) s.append(buffer, n);
  return s;
}

}  // namespace

child_output run_in_child(const std::function<void()>& body) {
  std::FILE* out = std::tmpfile();
  std::FILE* err = std::tmpfile();
  if (out == nullptr || err == nullptr) throw std::runtime_error("cannot create a temporary file");
  // Nothing buffered before the fork may come out twice.
  std::cout.flush();
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot start a child process");
  if (child == 0) {
    dup2(fileno(out), 1);
    dup2(fileno(err), 2);
    body();
    std::cout.flush();
    std::fflush(nullptr);
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  child_output result;
  result.exited = WIFEXITED(status);
  result.status = result.exited ? WEXITSTATUS(status) : WTERMSIG(status);
  result.out = contents(out);
  result.err = contents(err);
  std::fclose(out);
  std::fclose(err);
  return result;
}
