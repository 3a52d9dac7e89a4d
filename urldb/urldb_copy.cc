// The copy of a database file, and its entry point for callers without
// exceptions.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

#include "common/error.h"
#include "common/file_descriptor.h"
#include "common/last_error.h"
#include "urldb/database_magic.h"
#include "urldb/urldb.h"

namespace urldb {
namespace {

constexpr int kSection = 3004;
// Format version and the two opaque fields.
constexpr std::size_t kHeaderFields[] = {4, 4, 10};

// A file of the copy. All its errors carry its path.
class CopyFile {
 public:
  CopyFile(const char* path, int flags, ErrorCode failure)
      : path_(path == nullptr ? "" : path),
        fd_(::open(path_, flags | O_CLOEXEC, 0644)) {
    if (!fd_.valid()) fail(failure);
  }

  // One transfer of exactly `size` bytes.
  void readExactly(char* buffer, std::size_t size) const {
    if (::read(fd_.get(), buffer, size) != static_cast<ssize_t>(size))
      fail(ERR_CANT_READ_FILE);
  }
  void writeExactly(const char* buffer, std::size_t size) const {
    if (::write(fd_.get(), buffer, size) != static_cast<ssize_t>(size))
      fail(ERR_CANT_WRITE_FILE);
  }

  // Reads until `size` bytes are there or the file ends; returns how many.
  std::size_t fill(char* buffer, std::size_t size) const {
    std::size_t have = 0;
    while (have < size) {
      const ssize_t n = ::read(fd_.get(), buffer + have, size - have);
      if (n < 0 && errno == EINTR) continue;
      if (n < 0) fail(ERR_CANT_READ_FILE);
      if (n == 0) break;
      have += static_cast<std::size_t>(n);
    }
    return have;
  }
  void writeAll(const char* buffer, std::size_t size) const {
    while (size > 0) {
      const ssize_t n = ::write(fd_.get(), buffer, size);
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) fail(ERR_CANT_WRITE_FILE);
      buffer += n;
      size -= static_cast<std::size_t>(n);
    }
  }
  // Ends writing.
  void close() {
    if (fd_.close() != 0) fail(ERR_CANT_WRITE_FILE);
  }

  [[noreturn]] void fail(ErrorCode code) const {
    throw ErrException(code, kSection, "%s", path_);
  }

 private:
  const char* path_;
  FileDescriptor fd_;
};

}  // namespace

void URLDB::copy(const char* source, const char* destination) {
  const CopyFile from(source, O_RDONLY, ERR_CANT_OPEN_FILE);
  CopyFile to(destination, O_WRONLY | O_CREAT | O_TRUNC, ERR_CANT_CREATE_FILE);
  std::unique_ptr<char[]> buffer(new (std::nothrow) char[COPY_BUFFER]);
  if (buffer == nullptr) throw ErrException(ERR_NO_MEMORY, kSection);

  from.readExactly(buffer.get(), kDatabaseMagicSize);
  if (std::memcmp(buffer.get(), kDatabaseMagic, kDatabaseMagicSize) != 0)
    from.fail(ERR_INVALID_FILE);
  to.writeExactly(kDatabaseMagic, kDatabaseMagicSize);
  for (const std::size_t size : kHeaderFields) {
    from.readExactly(buffer.get(), size);
    to.writeExactly(buffer.get(), size);
  }

  constexpr std::size_t kBlock = COPY_BUFFER;
  for (std::size_t filled = kBlock; filled == kBlock;) {
    filled = from.fill(buffer.get(), kBlock);
    to.writeAll(buffer.get(), filled);
  }
  to.close();
}

}  // namespace urldb

int URLDB_copy(const char* source, const char* destination) {
  using urldb::ErrException;
  try {
    urldb::URLDB().copy(source, destination);
    return 0;
  } catch (const ErrException& error) {
    urldb::setLastError(error);
  } catch (...) {
    urldb::setLastError(ErrException(urldb::ERR_UNKNOWN, 3004));
  }
  return -1;
}
