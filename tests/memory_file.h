#ifndef URLDB_TESTS_MEMORY_FILE_H_
#define URLDB_TESTS_MEMORY_FILE_H_

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace urldb {

// A file that lies in memory and can be opened by its path, for tests that open
// thousands of variants of a file.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view bytes = {})
      : fd_(::memfd_create("urldb-test", MFD_CLOEXEC)) {
    if (fd_ < 0) throw std::runtime_error("memfd_create");
    set(bytes);
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { ::close(fd_); }

  std::string path() const { return "/proc/self/fd/" + std::to_string(fd_); }

  // The whole content from now on.
  void set(std::string_view bytes) {
    if (::ftruncate(fd_, 0) != 0) throw std::runtime_error("ftruncate");
    patch(0, bytes);
  }
  // Other bytes at `offset`.
  void patch(std::size_t offset, std::string_view bytes) {
    const ssize_t written =
        ::pwrite(fd_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (written != static_cast<ssize_t>(bytes.size()))
      throw std::runtime_error("pwrite");
  }

 private:
  int fd_;
};

}  // namespace urldb

#endif  // URLDB_TESTS_MEMORY_FILE_H_
