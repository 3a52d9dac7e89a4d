#ifndef URLDB_TESTS_FILE_SIZE_LIMIT_H_
#define URLDB_TESTS_FILE_SIZE_LIMIT_H_

#include <sys/resource.h>

#include <csignal>
#include <stdexcept>

namespace urldb {

// While it lives, no file of this process grows beyond `size` bytes: a write
// fails there as on a full disk.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t size) {
    if (::getrlimit(RLIMIT_FSIZE, &former_) != 0)
      throw std::runtime_error("getrlimit");
    handler_ = ::signal(SIGXFSZ, SIG_IGN);
    set(size);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() {
    set(former_.rlim_cur);
    ::signal(SIGXFSZ, handler_);
  }

 private:
  void set(rlim_t size) const {
    rlimit limit = former_;
    limit.rlim_cur = size;
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }

  rlimit former_{};
  void (*handler_)(int) = nullptr;
};

}  // namespace urldb

#endif  // URLDB_TESTS_FILE_SIZE_LIMIT_H_
