#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "common/last_error.h"
#include "tests/file_size_limit.h"
#include "tests/temporary_folder.h"
#include "tests/thrown_by.h"
#include "tests/tiny_database.h"
#include "urldb/urldb.h"

namespace urldb {
namespace {

constexpr std::size_t kBlock = URLDB::COPY_BUFFER;
constexpr std::size_t kFixed = 32;

// Bytes that no block boundary repeats.
std::string body(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i)
    bytes[i] = static_cast<char>(i * 7 + i / 251);
  return bytes;
}

std::string databaseOf(std::size_t size) {
  return "_URL_DATABASE_" + body(size - 14);
}

class URLDBCopy : public testing::Test {
 protected:
  URLDBCopy()
      : source_(folder_.path("source")), target_(folder_.path("target")) {}
  std::string error() {
    return thrownBy([this] { URLDB().copy(source_.c_str(), target_.c_str()); });
  }
  // The code and the path that the error names.
  std::string failure(int code, const char* text, const std::string& path) {
    return std::to_string(code) + "/3004 " + text + ": " + path;
  }
  bool isThere(const std::string& path) {
    return std::filesystem::exists(path);
  }

  TemporaryFolder folder_;
  std::string source_;
  std::string target_;
};

TEST_F(URLDBCopy, CopiesByteForByteWhateverTheSize) {
  for (const std::size_t size :
       {kFixed, kFixed + 1, kFixed + kBlock - 1, kFixed + kBlock,
        kFixed + kBlock + 1, kFixed + 2 * kBlock,
        kFixed + 2 * kBlock + 12345}) {
    SCOPED_TRACE(size);
    const std::string bytes = databaseOf(size);
    folder_.write("source", bytes);
    EXPECT_EQ("", error());
    EXPECT_TRUE(bytes == folder_.read("target"));
    EXPECT_TRUE(bytes == folder_.read("source"));
  }
}

TEST_F(URLDBCopy, CopyOfADatabaseIsADatabase) {
  TinyDatabase().db.writeFile(source_.c_str());
  EXPECT_EQ(0, URLDB_copy(source_.c_str(), target_.c_str()));
  EXPECT_EQ(folder_.read("source"), folder_.read("target"));
  URLDB db;
  EXPECT_EQ(2, db.openFile(target_.c_str(), nullptr, 0, true));
  EXPECT_EQ(3U, valuesOf(db.search("ab")).size());
}

TEST_F(URLDBCopy, TruncatesALongerTarget) {
  folder_.write("source", databaseOf(100));
  folder_.write("target", databaseOf(100000));
  EXPECT_EQ("", error());
  EXPECT_EQ(databaseOf(100), folder_.read("target"));
}

TEST_F(URLDBCopy, TargetIsCreatedWithMode0644) {
  folder_.write("source", databaseOf(100));
  const mode_t former = ::umask(0);
  EXPECT_EQ("", error());
  ::umask(former);
  EXPECT_EQ(std::filesystem::perms(0644),
            std::filesystem::status(target_).permissions());
}

TEST_F(URLDBCopy, MissingSourceIsCode3AndNothingIsCreated) {
  EXPECT_EQ(failure(3, "Can't Open File", source_), error());
  EXPECT_FALSE(isThere(target_));
}

TEST_F(URLDBCopy, TargetThatCannotBeCreatedIsCode2) {
  folder_.write("source", databaseOf(100));
  target_ = folder_.path("no/such/folder");
  EXPECT_EQ(failure(2, "Can't Create File", target_), error());
}

TEST_F(URLDBCopy, SourceShorterThanTheMagicIsCode4AndTheTargetEmpty) {
  for (const std::size_t size : {0U, 1U, 13U}) {
    folder_.write("source", databaseOf(14).substr(0, size));
    EXPECT_EQ(failure(4, "Can't Read File", source_), error()) << size;
    EXPECT_EQ("", folder_.read("target"));
  }
}

TEST_F(URLDBCopy, OtherMagicIsCode26AndTheTargetEmpty) {
  for (const char* magic :
       {"_URL_DATABASE-", "_url_database_", "XURL_DATABASE_"}) {
    folder_.write("source", magic + body(1000));
    folder_.write("target", "former content");
    EXPECT_EQ(failure(26, "Invalid File", source_), error()) << magic;
    EXPECT_EQ("", folder_.read("target"));
  }
}

TEST_F(URLDBCopy, SourceThatEndsInTheFixedFieldsIsCode4) {
  for (const std::size_t size : {14U, 17U, 18U, 21U, 22U, 31U}) {
    folder_.write("source", databaseOf(size));
    EXPECT_EQ(failure(4, "Can't Read File", source_), error()) << size;
  }
}

TEST_F(URLDBCopy, FolderAsSourceIsCode4) {
  source_ = folder_.path();
  EXPECT_EQ(failure(4, "Can't Read File", source_), error());
}

TEST_F(URLDBCopy, FullDiskIsCode5) {
  folder_.write("source", databaseOf(100));
  target_ = "/dev/full";
  EXPECT_EQ(failure(5, "Can't Write File", target_), error());
}

TEST_F(URLDBCopy, DiskThatFillsUpInTheBodyIsCode5) {
  folder_.write("source", databaseOf(kFixed + kBlock + 100));
  for (const rlim_t size : {rlim_t{10}, rlim_t{20}, rlim_t{1000},
                            rlim_t{kBlock}, rlim_t{kFixed + kBlock + 50}}) {
    SCOPED_TRACE(size);
    std::string failed;
    {
      const FileSizeLimit limit(size);
      failed = error();
    }
    EXPECT_EQ(failure(5, "Can't Write File", target_), failed);
  }
}

TEST_F(URLDBCopy, ReadsFromAPipe) {
  // A pipe gives the body in small pieces.
  const std::string bytes = databaseOf(kFixed + 300000);
  ASSERT_EQ(0, ::mkfifo(source_.c_str(), 0600));
  const std::string feeder = folder_.write("bytes", bytes);
  ASSERT_EQ(
      0, std::system(("cat '" + feeder + "' > '" + source_ + "' &").c_str()));
  EXPECT_EQ("", error());
  EXPECT_TRUE(bytes == folder_.read("target"));
}

TEST_F(URLDBCopy, PlainFunctionGivesMinusOneAndTheReason) {
  EXPECT_EQ(-1, URLDB_copy(source_.c_str(), target_.c_str()));
  EXPECT_EQ("[ERROR(3004)] Can't Open File: " + source_,
            std::string(lastErrorText()));
  folder_.write("source", "_URL_DATABASE-" + body(100));
  EXPECT_EQ(-1, URLDB_copy(source_.c_str(), target_.c_str()));
  EXPECT_EQ("[ERROR(3004)] Invalid File: " + source_,
            std::string(lastErrorText()));
}

TEST_F(URLDBCopy, NullPathsAreFilesThatCannotBeOpened) {
  EXPECT_EQ(-1, URLDB_copy(nullptr, target_.c_str()));
  EXPECT_STREQ("[ERROR(3004)] Can't Open File: ", lastErrorText());
  folder_.write("source", databaseOf(100));
  EXPECT_EQ(-1, URLDB_copy(source_.c_str(), nullptr));
  EXPECT_STREQ("[ERROR(3004)] Can't Create File: ", lastErrorText());
}

TEST_F(URLDBCopy, LeavesNoDescriptorOpen) {
  const auto open = [] {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry :
         std::filesystem::directory_iterator("/proc/self/fd"))
      ++count;
    return count;
  };
  const std::size_t before = open();
  error();  // no source
  folder_.write("source", "short");
  error();
  folder_.write("source", databaseOf(100));
  error();
  EXPECT_EQ(before, open());
}

}  // namespace
}  // namespace urldb
