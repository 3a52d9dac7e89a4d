#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>

#include "common/byte_order.h"
#include "common/error.h"
#include "common/file_descriptor.h"
#include "common/file_io.h"
#include "urldb/double_array.h"

// The file section of a trie: docs/urldb-file.md.

namespace urldb {
namespace {

constexpr int kSection = 60;
constexpr char kMagic[] = "_DYNAMIC_AC_";
constexpr std::size_t kMagicSize = sizeof kMagic - 1;
constexpr int kEndianMarker = 1;

// Opens a file of its own for `transfer`; errors name the path.
template <class Transfer>
int withFile(const char* path, int flags, const Transfer& transfer) {
  FileDescriptor file(open(path, flags | O_CLOEXEC, 0644));
  if (!file.valid()) {
    throw ErrException(ERR_CANT_OPEN_FILE, kSection, "%s", path);
  }
  try {
    transfer(file.get());
  } catch (ErrException& e) {
    e.setMessage("%s", path);
    throw;
  }
  return file.close();
}

template <class T>
std::unique_ptr<T[]> asPlainArray(const GrowableArray<T>& array) {
  std::unique_ptr<T[]> plain(new (std::nothrow) T[array.size()]);
  if (plain == nullptr) throw ErrException(ERR_NO_MEMORY, kSection);
  std::copy_n(array.data(), array.size(), plain.get());
  return plain;
}

}  // namespace

void DoubleArray::writeFile(int fd) {
  writeFully(fd, kMagic, kMagicSize, kSection);
  for (const int value : {kEndianMarker, VERSION, status_, convMode_}) {
    writeInteger(fd, value, kSection);
  }
  garbageTail();
  std::array<int32_t, NUM_INT> counts = {base_[0], emptyHead_, emptyTail_,
                                         posTail_};
  writeIntegers(fd, counts.data(), counts.size(), kSection);
  writeIntBuffer(fd, base_.data(), base_[0] + 1);
  writeIntBuffer(fd, check_.data(), base_[0] + 1);
  writeTailBuffer(fd);
}

void DoubleArray::readFile(int fd) {
  std::array<char, kMagicSize> magic;
  readFully(fd, magic.data(), magic.size(), kSection);
  if (std::memcmp(magic.data(), kMagic, kMagicSize) != 0) {
    throw ErrException(ERR_INVALID_FILE, kSection, "Invalid Header");
  }
  if (readInteger(fd, kSection) != kEndianMarker) {
    throw ErrException(ERR_INVALID_FILE, kSection, "Invalid Endian");
  }
  const int version = readInteger(fd, kSection);
  if (version > VERSION) {
    throw ErrException(ERR_INVALID_VERSION, kSection, "%d", version);
  }
  readInteger(fd, kSection);  // the writer's status word: of no use here
  const int convMode = readInteger(fd, kSection);
  std::array<int32_t, NUM_INT> counts;
  readFully(fd, counts.data(), sizeof counts, kSection);
  convEndian(counts.data(), NUM_INT);
  const auto [size, emptyHead, emptyTail, posTail] = counts;
  if (size < 1) {
    throw ErrException(ERR_INVALID_DATA, kSection, "DA_SIZE = %d", size);
  }
  if (posTail < 1) {
    throw ErrException(ERR_INVALID_DATA, kSection, "posTail = %d", posTail);
  }

  GrowableArray<int32_t> base = readIntegers(fd, int64_t{size} + 1, kSection);
  if (base[0] != size) {
    throw ErrException(ERR_INVALID_DATA, kSection, "DA_SIZE = %d and %d", size,
                       base[0]);
  }
  GrowableArray<int32_t> check = readIntegers(fd, int64_t{size} + 1, kSection);
  GrowableArray<unsigned char> tail =
      readBytes(fd, int64_t{posTail} + 1, kSection);
  if (size > kMostElements || posTail > kMostElements) {
    throw ErrException(ERR_INVALID_DATA, kSection, "too large a trie");
  }
  convEndianForTail(base.data(), size, tail.data(), posTail + 1);
  resizeTail(&tail, tail.size());

  base_.swap(base);
  check_.swap(check);
  tail_.swap(tail);
  posTail_ = posTail;
  emptyHead_ = emptyHead;
  emptyTail_ = emptyTail;
  convMode_ = convMode;
  freeCells_ = FreeCells();
  prepared_ = false;
}

int DoubleArray::writeFile(const char* path) {
  return withFile(path, O_WRONLY | O_CREAT | O_TRUNC,
                  [this](int fd) { writeFile(fd); });
}

int DoubleArray::readFile(const char* path) {
  return withFile(path, O_RDONLY, [this](int fd) { readFile(fd); });
}

int* DoubleArray::readIntBuffer(int fd, int count) {
  return asPlainArray(readIntegers(fd, count, kSection)).release();
}

unsigned char* DoubleArray::readTailBuffer(int fd, int size) {
  return asPlainArray(readBytes(fd, size, kSection)).release();
}

void DoubleArray::writeIntBuffer(int fd, int* array, int count) {
  writeIntegers(fd, array, static_cast<std::size_t>(count), kSection);
}

void DoubleArray::writeTailBuffer(int fd) const {
  const auto size = static_cast<std::size_t>(posTail_) + 1;
  GrowableArray<unsigned char> copy;
  try {
    copy.resize(size);
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
  std::memcpy(copy.data(), tail_.data(), size);
  convEndianForTail(base_.data(), base_[0], copy.data(), posTail_ + 1);
  writeFully(fd, copy.data(), size, kSection);
}

void DoubleArray::convEndianForTail(const int* base, int daSize,
                                    unsigned char* tail, int tailSize) {
  // Records of their own add up to the size of TAIL at most. Damage may make
  // some overlap, but whoever lets millions of leaves share a long record must
  // not keep the reader busy for hours.
  int64_t budget = 2 * (int64_t{tailSize} + 8);
  for (int s = 1; s <= daSize; ++s) {
    const int64_t start = -int64_t{base[s]};
    if (start < 1 || start >= tailSize) continue;
    const void* const nul = std::memchr(
        tail + start, 0, static_cast<std::size_t>(tailSize - start));
    const int64_t end = nul == nullptr
                            ? tailSize
                            : static_cast<const unsigned char*>(nul) - tail;
    budget -= end - start + 1;
    if (budget < 0) {
      throw ErrException(ERR_INVALID_DATA, kSection,
                         "overlapping TAIL records");
    }
    if (end + 4 >= tailSize) continue;
    uint32_t id = 0;
    std::memcpy(&id, tail + end + 1, sizeof id);
    id = convEndian(id);
    std::memcpy(tail + end + 1, &id, sizeof id);
  }
}

}  // namespace urldb
