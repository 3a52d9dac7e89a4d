#ifndef URLDB_TESTS_UNPRIVILEGED_H_
#define URLDB_TESTS_UNPRIVILEGED_H_

#include <unistd.h>

namespace urldb {

// While it lives, the process has the rights of an ordinary user over files,
// even when root runs it.
class Unprivileged {
 public:
  Unprivileged() : root_(::geteuid() == 0) {
    bound_ = !root_ || ::seteuid(kNobody) == 0;
  }
  Unprivileged(const Unprivileged&) = delete;
  Unprivileged& operator=(const Unprivileged&) = delete;
  ~Unprivileged() {
    if (root_ && bound_ && ::seteuid(0) != 0) ::_exit(126);
  }

  // False where root may not give its rights up.
  bool bound() const { return bound_; }

 private:
  static constexpr uid_t kNobody = 65534;
  const bool root_;
  bool bound_;
};

}  // namespace urldb

#endif  // URLDB_TESTS_UNPRIVILEGED_H_
