#include "tools/interruption.h"

#include <poll.h>

#include <cstddef>
#include <string>

#include "common/error.h"
#include "tools/program_error.h"

namespace urldb {

namespace {

volatile sig_atomic_t received = 0;

extern "C" void noteSignal(int signal) { received = signal; }

}  // namespace

Interruption::Interruption() {
  received = 0;
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    struct sigaction action {};
    ::sigemptyset(&action.sa_mask);
    action.sa_handler = noteSignal;
    ::sigaction(kSignals[i], nullptr, &former_[i]);
    if (former_[i].sa_handler != SIG_IGN)
      ::sigaction(kSignals[i], &action, nullptr);
  }
}

Interruption::~Interruption() {
  for (std::size_t i = 0; i < kSignals.size(); ++i)
    ::sigaction(kSignals[i], &former_[i], nullptr);
}

void Interruption::check() const {
  if (received != 0)
    throw ProgramError(std::string("interrupted by ") + SIG2STR(received));
}

void Interruption::waitReadable(int fd) const {
  // A short limit: a signal that comes between check() and poll() is noticed
  // after it at the latest.
  constexpr int kMilliseconds = 100;
  for (;;) {
    check();
    pollfd ready{fd, POLLIN, 0};
    if (::poll(&ready, 1, kMilliseconds) > 0) return;
  }
}

}  // namespace urldb
