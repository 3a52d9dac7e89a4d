// The database file: docs/urldb-file.md.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <new>

#include "common/error.h"
#include "common/file_descriptor.h"
#include "common/file_io.h"
#include "urldb/database_magic.h"
#include "urldb/urldb.h"

namespace urldb {
namespace {

constexpr int kSection = 3004;
constexpr std::size_t kTimeStampSize = 20;  // in the file, with its NUL
constexpr int kMaxRequiredVersion = 2;      // that this engine satisfies

}  // namespace

// What comes before the category names.
struct URLDB::Header {
  int32_t version = 0;
  std::array<char, 4> opaque4{};
  std::array<char, 10> opaque10{};
  std::array<char, 32> timeStamp{};
  uint32_t freshDate = 0;
};

URLDB::Header URLDB::readHeader(int fd) {
  Header header;
  char magic[kDatabaseMagicSize];
  readFully(fd, magic, kDatabaseMagicSize, kSection);
  if (std::memcmp(magic, kDatabaseMagic, kDatabaseMagicSize) != 0)
    throw ErrException(ERR_INVALID_FILE, kSection);
  header.version = readInteger(fd, kSection);
  readFully(fd, header.opaque4.data(), header.opaque4.size(), kSection);
  readFully(fd, header.opaque10.data(), header.opaque10.size(), kSection);
  const GrowableArray<int32_t> integers = readIntegers(fd, NUM_INT, kSection);
  if (integers[0] > kMaxRequiredVersion) {
    throw ErrException(ERR_INVALID_VERSION, kSection,
                       "Required Engine Version: %d", integers[0]);
  }
  readFully(fd, header.timeStamp.data(), kTimeStampSize, kSection);
  header.freshDate = static_cast<uint32_t>(readInteger(fd, kSection));
  return header;
}

int URLDB::readFile(const char* file, CategoryNames* names, DoubleArray* trie,
                    RingQueue<int>* freeList) {
  if (file == nullptr) return -1;
  const FileDescriptor fd(::open(file, O_RDONLY | O_CLOEXEC));
  if (!fd.valid()) return -1;
  try {
    const Header header = readHeader(fd.get());
    CategoryNames fresh;
    fresh.readFile(fd.get());
    if (trie != nullptr) {
      trie->readFile(fd.get());
      readURL2CateIDs(fd.get(), freeList);
    }
    // From here on nothing can fail.
    if (names != nullptr) names->swap(fresh);
    version_ = header.version;
    opaque4_ = header.opaque4;
    opaque10_ = header.opaque10;
    timeStamp_ = header.timeStamp;
    freshDate_ = header.freshDate;
    return version_;
  } catch (ErrException& error) {
    error.addMessage(" in reading \"%s\"", file);
    throw;
  }
}

int URLDB::readCategoryNames(const char* file, CategoryNames* names) {
  if (file == nullptr)
    throw ErrException(ERR_INVALID_ARGUMENT, kSection, "no file name");
  if (names == nullptr)
    throw ErrException(ERR_INVALID_ARGUMENT, kSection, "CategoryNames = NULL");
  return readFile(file, names, nullptr, nullptr);
}

void URLDB::writeHeader(int fd) {
  writeFully(fd, kDatabaseMagic, kDatabaseMagicSize, kSection);
  writeInteger(fd, VERSION, kSection);
  writeFully(fd, opaque4_.data(), opaque4_.size(), kSection);
  writeFully(fd, opaque10_.data(), opaque10_.size(), kSection);
  int32_t integers[NUM_INT] = {REQUIRE_VERSION};
  writeIntegers(fd, integers, NUM_INT, kSection);

  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  timeStamp_.fill('\0');
  char text[MSG_SIZE];
  std::snprintf(text, sizeof text, "%4d/%02d/%02d %02d:%02d:%02d",
                local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                local.tm_hour, local.tm_min, local.tm_sec);
  std::memcpy(timeStamp_.data(), text, kTimeStampSize - 1);
  writeFully(fd, timeStamp_.data(), kTimeStampSize, kSection);
  writeInteger(fd, static_cast<int32_t>(freshDate_), kSection);
}

int URLDB::writeFile(const char* file) {
  if (!modified_ || bFinalized_) return 1;
  if (trie_ == nullptr)
    throw ErrException(ERR_INVALID_STATUS, kSection, "no database is open");
  checkData();
  const char* const path = file != nullptr ? file : fileName_.c_str();
  FileDescriptor fd(
      ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
  if (!fd.valid())
    throw ErrException(ERR_CANT_CREATE_FILE, kSection, "%s", path);
  writeHeader(fd.get());
  names_->writeFile(fd.get());
  trie_->writeFile(fd.get());
  writeURL2CateIDs(fd.get());
  if (fd.close() != 0) throw ErrException(ERR_CANT_WRITE_FILE, kSection);
  return 0;
}

}  // namespace urldb
