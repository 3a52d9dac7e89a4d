#include "common/file_io.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "common/byte_order.h"
#include "common/error.h"

namespace urldb {
namespace {

// Bytes between the position and the end of a regular file, or -1 where there
// is no such number (a pipe, a device).
int64_t bytesLeft(int fd) {
  struct stat status {};
  if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) return -1;
  const off_t position = lseek(fd, 0, SEEK_CUR);
  if (position < 0) return -1;
  return std::max<int64_t>(0, static_cast<int64_t>(status.st_size) - position);
}

// Reads in steps small enough to stay in the cache while `arrived` treats them.
template <class T, class Arrived>
GrowableArray<T> readArray(int fd, int64_t count, int section,
                           const Arrived& arrived) {
  constexpr int64_t kStep =
      (int64_t{1} << 18) / static_cast<int64_t>(sizeof(T));
  if (count < 0) throw ErrException(ERR_INVALID_DATA, section);
  const int64_t left = bytesLeft(fd);
  if (left >= 0 && count > left / static_cast<int64_t>(sizeof(T))) {
    throw ErrException(ERR_CANT_READ_FILE, section);
  }
  try {
    GrowableArray<T> array;
    if (left >= 0) array.resizeForOverwrite(static_cast<std::size_t>(count));
    for (int64_t have = 0; have < count;) {
      const int64_t step = std::min(kStep, count - have);
      if (left < 0) {
        array.resizeForOverwrite(static_cast<std::size_t>(have + step));
      }
      T* const to = array.data() + have;
      readFully(fd, to, static_cast<std::size_t>(step) * sizeof(T), section);
      arrived(to, static_cast<unsigned>(step));
      have += step;
    }
    return array;
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, section);
  }
}

}  // namespace

void readFully(int fd, void* buffer, std::size_t size, int section) {
  auto* to = static_cast<unsigned char*>(buffer);
  while (size > 0) {
    const ssize_t n = read(fd, to, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) throw ErrException(ERR_CANT_READ_FILE, section);
    to += n;
    size -= static_cast<std::size_t>(n);
  }
}

void writeFully(int fd, const void* buffer, std::size_t size, int section) {
  const auto* from = static_cast<const unsigned char*>(buffer);
  while (size > 0) {
    const ssize_t n = write(fd, from, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) throw ErrException(ERR_CANT_WRITE_FILE, section);
    from += n;
    size -= static_cast<std::size_t>(n);
  }
}

int32_t readInteger(int fd, int section) {
  uint32_t word = 0;
  readFully(fd, &word, sizeof word, section);
  return static_cast<int32_t>(convEndian(word));
}

void writeInteger(int fd, int32_t value, int section) {
  const uint32_t word = convEndian(static_cast<uint32_t>(value));
  writeFully(fd, &word, sizeof word, section);
}

GrowableArray<int32_t> readIntegers(int fd, int64_t count, int section) {
  return readArray<int32_t>(
      fd, count, section,
      [](int32_t* array, unsigned size) { convEndian(array, size); });
}

GrowableArray<unsigned char> readBytes(int fd, int64_t count, int section) {
  return readArray<unsigned char>(fd, count, section,
                                  [](unsigned char*, unsigned) {});
}

void writeIntegers(int fd, int32_t* array, std::size_t count, int section) {
  struct SwappedForWriting {
    int32_t* array;
    unsigned count;
    SwappedForWriting(int32_t* a, unsigned n) : array(a), count(n) {
      convEndian(array, count);
    }
    ~SwappedForWriting() { convEndian(array, count); }
    SwappedForWriting(const SwappedForWriting&) = delete;
    SwappedForWriting& operator=(const SwappedForWriting&) = delete;
  } swapped(array, static_cast<unsigned>(count));
  writeFully(fd, array, count * sizeof(int32_t), section);
}

}  // namespace urldb
