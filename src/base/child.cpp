#include "base/child.hpp"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
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

// Nothing buffered before a fork may come out twice.
void flush_all() {
  std::cout.flush();
  std::cerr.flush();
  std::fflush(nullptr);
}

pid_t fork_or_throw() {
  flush_all();
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot start a child process");
  return child;
}

}  // namespace

child_output run_in_child(const std::function<void()>& body) {
  std::FILE* out = std::tmpfile();
  std::FILE* err = std::tmpfile();
  if (out == nullptr || err == nullptr) throw std::runtime_error("cannot create a temporary file");
  const pid_t child = fork_or_throw();
  if (child == 0) {
    dup2(fileno(out), 1);
    dup2(fileno(err), 2);
    body();
    flush_all();
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

serving_child::serving_child(const std::function<void(std::FILE*, std::FILE*)>& serve, answers_on where) {
  int down[2], up[2];
  if (pipe(down) != 0) throw std::runtime_error("cannot open a pipe");
  if (pipe(up) != 0) {
    close(down[0]);
    close(down[1]);
    throw std::runtime_error("cannot open a pipe");
  }
  try {
    pid_ = fork_or_throw();
  } catch (const std::runtime_error&) {
    for (int fd : {down[0], down[1], up[0], up[1]}) close(fd);
    throw;
  }
  if (pid_ == 0) {
    close(down[1]);
    close(up[0]);
    std::FILE* requests = fdopen(down[0], "r");
    std::FILE* answers;
    if (where == answers_on::standard_output) {
      dup2(up[1], 1);
      close(up[1]);
      answers = stdout;
    } else {
      const int null = open("/dev/null", O_WRONLY);
      dup2(null, 1);
      dup2(null, 2);
      close(null);
      answers = fdopen(up[1], "w");
    }
    serve(requests, answers);
    flush_all();
    _exit(0);
  }
  close(down[0]);
  close(up[1]);
  requests_ = down[1];
  answers_ = fdopen(up[0], "r");
}

serving_child::~serving_child() {
  if (requests_ >= 0) close(requests_);
  if (answers_ != nullptr) std::fclose(answers_);
  if (pid_ > 0) waitpid(pid_, nullptr, 0);
}

void serving_child::send(const std::string& text) {
  // A child that has ended closed its end: the write fails instead of ending this process.
  struct sigaction ignore {}, before {};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &ignore, &before);
  for (std::size_t at = 0; at < text.size();) {
    const ssize_t n = write(requests_, text.data() + at, text.size() - at);
    if (n <= 0) break;
    at += static_cast<std::size_t>(n);
  }
  sigaction(SIGPIPE, &before, nullptr);
}

serving_child::answer serving_child::read_answer(const std::string& closing) {
  answer a;
  const std::string closing_line = closing + "\n";
  char buffer[4096];
  std::string line;
  while (std::fgets(buffer, sizeof buffer, answers_) != nullptr) {
    line += buffer;
    if (line.back() != '\n') continue;  // a line longer than the buffer
    if (line == closing_line) {
      a.complete = true;
      return a;
    }
    a.text += line;
    line.clear();
  }
  a.text += line;
  wait_for_end();
  return a;
}

void serving_child::wait_for_end() {
  if (pid_ <= 0) return;
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = 0;
  exited_ = WIFEXITED(status);
  status_ = exited_ ? WEXITSTATUS(status) : WTERMSIG(status);
}
