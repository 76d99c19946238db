#pragma once

// Work done in a child process: the program's state (symbol table, scanner, the solver's
// translation) is process-wide and its fatal errors end the process, so a command that runs
// several independent searches, or must go on after one fails, forks for each.

#include <sys/types.h>

#include <cstdio>
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

// A child that keeps its state from one request to the next: it reads requests from a pipe and
// writes each answer to another, closing the answer with a line of its own that the parent
// waits for. A fatal error in the child ends it; the parent then reads the end of the pipe.
class serving_child {
 public:
  // Where the child's answers go: its standard output (which then carries what the program
  // prints), or a stream of their own while standard output and standard error are discarded.
  enum class answers_on { standard_output, own_stream };

  // Forks a child that runs `serve` (requests, answers) and then ends with status 0.
  serving_child(const std::function<void(std::FILE* requests, std::FILE* answers)>& serve, answers_on where);
  // Closing the requests ends the child's loop; the child is waited for.
  ~serving_child();
  serving_child(const serving_child&) = delete;
  serving_child& operator=(const serving_child&) = delete;

  // Sends text; nothing happens once the child has ended (its end shows in the next answer).
  void send(const std::string& text);

  struct answer {
    bool complete = false;  // false: the child ended before the closing line
    std::string text;       // the lines before the closing line, or all the child wrote
  };
  // The lines up to the line `closing` (without it).
  answer read_answer(const std::string& closing);

  // After an incomplete answer: how the child ended (it has been waited for).
  bool exited() const { return exited_; }
  int status() const { return status_; }

 private:
  void wait_for_end();

  pid_t pid_ = 0;
  int requests_ = -1;
  std::FILE* answers_ = nullptr;
  bool exited_ = false;
  int status_ = 0;
};
