#ifndef URLDB_TOOLS_INTERRUPTION_H_
#define URLDB_TOOLS_INTERRUPTION_H_

#include <signal.h>

#include <array>

namespace urldb {

// While it lives, SIGINT, SIGTERM and SIGHUP do not end the program but are
// noted, and check() ends the work in an orderly way. A signal that the
// program was started to ignore stays ignored. One object at a time.
class Interruption {
 public:
  Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;
  ~Interruption();  // puts the former handling back

  // Throws ProgramError when a signal has come.
  void check() const;

  // Waits until `fd` can be read without waiting, as check().
  void waitReadable(int fd) const;

 private:
  static constexpr std::array<int, 3> kSignals = {SIGINT, SIGTERM, SIGHUP};
  std::array<struct sigaction, kSignals.size()> former_;
};

}  // namespace urldb

#endif  // URLDB_TOOLS_INTERRUPTION_H_
