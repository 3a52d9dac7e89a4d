#ifndef URLDB_TESTS_TERMINAL_H_
#define URLDB_TESTS_TERMINAL_H_

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include "common/file_descriptor.h"

namespace urldb {

// A terminal, and what a program has shown on it.
class Terminal {
 public:
  Terminal() : screen_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    if (!screen_.valid() || ::grantpt(screen_.get()) != 0 ||
        ::unlockpt(screen_.get()) != 0)
      throw std::runtime_error("no terminal");
    program_ = FileDescriptor(
        ::open(::ptsname(screen_.get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!program_.valid()) throw std::runtime_error("no terminal");
  }

  // The program's side.
  int fd() const { return program_.get(); }

  // Call it when the programs that are to write there have been started.
  void closeProgramSide() { program_.close(); }

  // Waits until `text` has been shown; false when the last program has closed
  // its side before.
  bool waitFor(std::string_view text) {
    while (shown_.find(text) == std::string::npos) {
      if (!readMore()) return false;
    }
    return true;
  }

  // Everything shown until the last program has closed its side.
  const std::string& waitForEnd() {
    while (readMore()) {
    }
    return shown_;
  }

  // Everything shown so far.
  const std::string& shown() {
    pollfd ready{screen_.get(), POLLIN, 0};
    while (::poll(&ready, 1, 0) > 0 && (ready.revents & POLLIN) != 0 &&
           readMore()) {
    }
    return shown_;
  }

 private:
  bool readMore() {
    char buffer[4096];
    const ssize_t got = ::read(screen_.get(), buffer, sizeof buffer);
    if (got > 0) shown_.append(buffer, static_cast<std::size_t>(got));
    return got > 0;
  }

  FileDescriptor screen_;
  FileDescriptor program_;
  std::string shown_;
};

// While it lives, this process writes its standard error to `fd`.
class StandardErrorTo {
 public:
  explicit StandardErrorTo(int fd) : former_(::dup(STDERR_FILENO)) {
    ::dup2(fd, STDERR_FILENO);
  }
  StandardErrorTo(const StandardErrorTo&) = delete;
  StandardErrorTo& operator=(const StandardErrorTo&) = delete;
  ~StandardErrorTo() { ::dup2(former_.get(), STDERR_FILENO); }

 private:
  FileDescriptor former_;
};

}  // namespace urldb

#endif  // URLDB_TESTS_TERMINAL_H_
