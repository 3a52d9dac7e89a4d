#ifndef URLDB_TESTS_RUN_PROGRAM_H_
#define URLDB_TESTS_RUN_PROGRAM_H_

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace urldb {

// What a program left behind.
struct ProgramResult {
  int status = -1;  // exit status, or 128 + the signal that ended it
  std::string out;
  std::string err;
};

namespace run_program_detail {

struct Pipe {
  int ends[2] = {-1, -1};
  Pipe() {
    if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe2");
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    closeEnd(0);
    closeEnd(1);
  }
  void closeEnd(int end) {
    if (ends[end] >= 0) ::close(ends[end]);
    ends[end] = -1;
  }
};

// Appends what is there; closes the pipe at its end.
inline void drain(Pipe& pipe, std::string* text) {
  char buffer[65536];
  const ssize_t got = ::read(pipe.ends[0], buffer, sizeof buffer);
  if (got > 0) {
    text->append(buffer, static_cast<std::size_t>(got));
  } else if (got == 0 || errno != EINTR) {
    pipe.closeEnd(0);
  }
}

}  // namespace run_program_detail

// Runs `command` (a path or a name on PATH, then its arguments), gives it
// `input` on stdin and waits for it. Input that the program does not take is
// left. A program that cannot be started has the status 127.
inline ProgramResult runProgram(const std::vector<std::string>& command,
                                std::string_view input = {}) {
  using run_program_detail::Pipe;
  Pipe in;
  Pipe out;
  Pipe err;
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& argument : command)
    arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);

  const pid_t child = ::fork();
  if (child < 0) throw std::runtime_error("fork");
  if (child == 0) {
    ::dup2(in.ends[0], 0);
    ::dup2(out.ends[1], 1);
    ::dup2(err.ends[1], 2);
    ::signal(SIGPIPE, SIG_DFL);
    ::execvp(arguments[0], arguments.data());
    ::_exit(127);
  }
  in.closeEnd(0);
  out.closeEnd(1);
  err.closeEnd(1);
  ::fcntl(in.ends[1], F_SETFL, O_NONBLOCK);
  void (*const former)(int) = ::signal(SIGPIPE, SIG_IGN);
  if (input.empty()) in.closeEnd(1);

  ProgramResult result;
  while (out.ends[0] >= 0 || err.ends[0] >= 0) {
    // poll passes over the descriptors that are -1.
    pollfd ready[3] = {{in.ends[1], POLLOUT, 0},
                       {out.ends[0], POLLIN, 0},
                       {err.ends[0], POLLIN, 0}};
    if (::poll(ready, 3, -1) < 0) continue;
    if (ready[0].revents != 0) {
      const ssize_t put = ::write(in.ends[1], input.data(), input.size());
      if (put > 0) input.remove_prefix(static_cast<std::size_t>(put));
      const bool gone = put < 0 && errno != EAGAIN && errno != EINTR;
      if (gone || input.empty()) in.closeEnd(1);
    }
    if (ready[1].revents != 0) run_program_detail::drain(out, &result.out);
    if (ready[2].revents != 0) run_program_detail::drain(err, &result.err);
  }
  ::signal(SIGPIPE, former);

  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  result.status =
      WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

// The same for a line of the shell, for redirections and limits.
inline ProgramResult runShell(const std::string& line,
                              std::string_view input = {}) {
  return runProgram({"/bin/sh", "-c", line}, input);
}

}  // namespace urldb

#endif  // URLDB_TESTS_RUN_PROGRAM_H_
