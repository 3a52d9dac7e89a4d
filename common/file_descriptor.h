#ifndef URLDB_COMMON_FILE_DESCRIPTOR_H_
#define URLDB_COMMON_FILE_DESCRIPTOR_H_

#include <unistd.h>

#include <utility>

namespace urldb {

// Owns an open file descriptor, or none (-1), and closes it at the end of its
// life. Who must know whether closing worked, as after writing, calls close().
class FileDescriptor {
 public:
  explicit FileDescriptor(int fd = -1) : fd_(fd) {}
  FileDescriptor(FileDescriptor&& other) noexcept : fd_(other.release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    FileDescriptor former(std::exchange(fd_, other.release()));
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() {
    if (valid()) ::close(fd_);
  }

  int get() const { return fd_; }
  bool valid() const { return fd_ >= 0; }

  // The result of close(2), errno included. Afterwards no descriptor is owned,
  // even if closing failed; closing none is -1 (EBADF).
  int close() { return ::close(release()); }

  // Hands the descriptor over to the caller.
  int release() { return std::exchange(fd_, -1); }

 private:
  int fd_;
};

}  // namespace urldb

#endif  // URLDB_COMMON_FILE_DESCRIPTOR_H_
