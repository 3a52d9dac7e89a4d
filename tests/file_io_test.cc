#include "common/file_io.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <cstdint>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "common/file_descriptor.h"
#include "tests/expect_error.h"
#include "tests/temporary_folder.h"

namespace urldb {
namespace {

constexpr int kSection = 77;

struct Pipe {
  FileDescriptor in;
  FileDescriptor out;
  Pipe() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(0, ::pipe2(ends, O_CLOEXEC));
    in = FileDescriptor(ends[0]);
    out = FileDescriptor(ends[1]);
  }
  // A pipe that holds `bytes` and then ends.
  explicit Pipe(const std::string& bytes) : Pipe() {
    EXPECT_EQ(static_cast<ssize_t>(bytes.size()),
              ::write(out.get(), bytes.data(), bytes.size()));
    out.close();
  }
};

class FileIo : public testing::Test {
 protected:
  FileDescriptor fileOf(const std::string& bytes) {
    return FileDescriptor(
        ::open(folder_.write("file", bytes).c_str(), O_RDONLY | O_CLOEXEC));
  }
  FileDescriptor newFile() {
    return FileDescriptor(::open(folder_.path("file").c_str(),
                                 O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC,
                                 0600));
  }
  std::string written() { return folder_.read("file"); }

  TemporaryFolder folder_;
};

// SIGALRM every millisecond without restart, for as long as it lives; threads
// that are to be left in peace block it.
class Interruptions {
 public:
  Interruptions() {
    count_ = 0;
    struct sigaction action {};
    action.sa_handler = [](int) { count_ = count_ + 1; };
    ::sigaction(SIGALRM, &action, &former_);
    const itimerval timer{{0, 1000}, {0, 1000}};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
  }
  Interruptions(const Interruptions&) = delete;
  Interruptions& operator=(const Interruptions&) = delete;
  ~Interruptions() {
    const itimerval none{};
    ::setitimer(ITIMER_REAL, &none, nullptr);
    ::sigaction(SIGALRM, &former_, nullptr);
  }
  static int count() { return count_; }
  static void blockInThisThread() {
    sigset_t alarms;
    sigemptyset(&alarms);
    sigaddset(&alarms, SIGALRM);
    pthread_sigmask(SIG_BLOCK, &alarms, nullptr);
  }

 private:
  static inline volatile sig_atomic_t count_ = 0;
  struct sigaction former_ {};
};

std::string randomBytes(std::size_t size) {
  std::string bytes(size, '\0');
  uint32_t state = 1;
  for (char& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<char>(state >> 24);
  }
  return bytes;
}

TEST_F(FileIo, ReadsExactlyWhatIsAskedFor) {
  const FileDescriptor file = fileOf("abcdef");
  char buffer[4] = "xyz";
  readFully(file.get(), buffer, 2, kSection);
  EXPECT_STREQ("abz", buffer);
  readFully(file.get(), buffer, 0, kSection);
  EXPECT_STREQ("abz", buffer);
  readFully(file.get(), buffer, 3, kSection);
  EXPECT_STREQ("cde", buffer);
}

TEST_F(FileIo, AnEndBeforeTheLastByteIsCode4) {
  char buffer[8];
  const FileDescriptor file = fileOf("abc");
  expectError(ERR_CANT_READ_FILE, kSection,
              [&] { readFully(file.get(), buffer, 4, kSection); });
  const Pipe pipe("abc");
  expectError(ERR_CANT_READ_FILE, kSection,
              [&] { readFully(pipe.in.get(), buffer, 4, kSection); });
}

TEST_F(FileIo, ADescriptorThatCannotBeReadIsCode4) {
  char buffer[8];
  expectError(ERR_CANT_READ_FILE, kSection,
              [&] { readFully(-1, buffer, 1, kSection); });
  const FileDescriptor file = newFile();
  expectError(ERR_CANT_READ_FILE, kSection,
              [&] { readFully(file.get(), buffer, 1, kSection); });
}

TEST_F(FileIo, ADescriptorThatCannotBeWrittenIsCode5) {
  expectError(ERR_CANT_WRITE_FILE, kSection,
              [&] { writeFully(-1, "a", 1, kSection); });
  const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
  ASSERT_TRUE(full.valid());
  expectError(ERR_CANT_WRITE_FILE, kSection,
              [&] { writeFully(full.get(), "a", 1, kSection); });
}

TEST_F(FileIo, NothingToTransferIsNoCall) {
  readFully(-1, nullptr, 0, kSection);
  writeFully(-1, nullptr, 0, kSection);
  writeIntegers(-1, nullptr, 0, kSection);
  EXPECT_TRUE(readIntegers(-1, 0, kSection).empty());
  EXPECT_TRUE(readBytes(-1, 0, kSection).empty());
}

TEST_F(FileIo, PartialAndInterruptedReadsGoOn) {
  const std::string sent = randomBytes(300000);
  Pipe pipe;
  std::thread writer([&] {
    Interruptions::blockInThisThread();
    for (std::size_t at = 0; at < sent.size(); at += 30000) {
      ::usleep(5000);
      writeFully(pipe.out.get(), sent.data() + at, 30000, kSection);
    }
  });
  std::string got(sent.size(), '\0');
  int interruptions = 0;
  {
    const Interruptions running;
    readFully(pipe.in.get(), got.data(), got.size(), kSection);
    interruptions = Interruptions::count();
  }
  writer.join();
  EXPECT_EQ(sent, got);
  EXPECT_GT(interruptions, 0);
}

TEST_F(FileIo, PartialAndInterruptedWritesGoOn) {
  const std::string sent = randomBytes(300000);
  std::string got(sent.size(), '\0');
  Pipe pipe;
  std::thread reader([&] {
    Interruptions::blockInThisThread();
    for (std::size_t at = 0; at < got.size(); at += 30000) {
      ::usleep(5000);
      readFully(pipe.in.get(), got.data() + at, 30000, kSection);
    }
  });
  int interruptions = 0;
  {
    const Interruptions running;
    writeFully(pipe.out.get(), sent.data(), sent.size(), kSection);
    interruptions = Interruptions::count();
  }
  reader.join();
  EXPECT_EQ(sent, got);
  EXPECT_GT(interruptions, 0);
}

TEST_F(FileIo, IntegersAreBigEndianInTheFile) {
  FileDescriptor file = newFile();
  writeInteger(file.get(), 1, kSection);
  writeInteger(file.get(), -2, kSection);
  writeInteger(file.get(), 0x12345678, kSection);
  file.close();
  const std::string bytes("\0\0\0\1\xFF\xFF\xFF\xFE\x12\x34\x56\x78", 12);
  EXPECT_EQ(bytes, written());

  const FileDescriptor again = fileOf(bytes);
  EXPECT_EQ(1, readInteger(again.get(), kSection));
  EXPECT_EQ(-2, readInteger(again.get(), kSection));
  EXPECT_EQ(0x12345678, readInteger(again.get(), kSection));
  expectError(ERR_CANT_READ_FILE, kSection,
              [&] { readInteger(again.get(), kSection); });
}

TEST_F(FileIo, ArraysAreBigEndianInTheFileAndUnchangedInMemory) {
  int32_t values[] = {1, -2, INT32_MIN};
  FileDescriptor file = newFile();
  writeIntegers(file.get(), values, 3, kSection);
  file.close();
  EXPECT_EQ(std::string("\0\0\0\1\xFF\xFF\xFF\xFE\x80\0\0\0", 12), written());
  EXPECT_EQ(1, values[0]);
  EXPECT_EQ(-2, values[1]);
  EXPECT_EQ(INT32_MIN, values[2]);

  const FileDescriptor again = fileOf(written());
  const GrowableArray<int32_t> read = readIntegers(again.get(), 3, kSection);
  ASSERT_EQ(3U, read.size());
  EXPECT_EQ(1, read[0]);
  EXPECT_EQ(-2, read[1]);
  EXPECT_EQ(INT32_MIN, read[2]);
}

TEST_F(FileIo, AFailedWriteSwapsTheArrayBack) {
  int32_t values[] = {1, -2, 3};
  expectError(ERR_CANT_WRITE_FILE, kSection,
              [&] { writeIntegers(-1, values, 3, kSection); });
  EXPECT_EQ(1, values[0]);
  EXPECT_EQ(-2, values[1]);
  EXPECT_EQ(3, values[2]);
}

TEST_F(FileIo, ArraysBeginAtThePosition) {
  const FileDescriptor file = fileOf(std::string("head\0\0\0\7tail", 12));
  char head[4];
  readFully(file.get(), head, 4, kSection);
  EXPECT_EQ(7, readIntegers(file.get(), 1, kSection)[0]);
  const GrowableArray<unsigned char> tail = readBytes(file.get(), 4, kSection);
  EXPECT_EQ("tail", std::string(tail.data(), tail.data() + tail.size()));
  EXPECT_TRUE(readBytes(file.get(), 0, kSection).empty());
  expectError(ERR_CANT_READ_FILE, kSection,
              [&] { readBytes(file.get(), 1, kSection); });
}

TEST_F(FileIo, NegativeCountsAreCode25) {
  const FileDescriptor file = fileOf("abcd");
  for (const int64_t count : {int64_t{-1}, int64_t{INT32_MIN}, INT64_MIN}) {
    expectError(ERR_INVALID_DATA, kSection,
                [&] { readIntegers(file.get(), count, kSection); });
    expectError(ERR_INVALID_DATA, kSection,
                [&] { readBytes(file.get(), count, kSection); });
  }
}

// Counts for which no memory could be had: the error is the short read, not
// code 1, and the position has not moved.
TEST_F(FileIo, CountsBeyondTheFileAreFoundBeforeAnythingIsAllocated) {
  const FileDescriptor file = fileOf("abcdefgh");
  for (const int64_t count :
       {int64_t{3}, int64_t{INT32_MAX}, int64_t{1} << 61, INT64_MAX}) {
    expectError(ERR_CANT_READ_FILE, kSection,
                [&] { readIntegers(file.get(), count, kSection); });
  }
  for (const int64_t count : {int64_t{9}, int64_t{INT32_MAX}, INT64_MAX}) {
    expectError(ERR_CANT_READ_FILE, kSection,
                [&] { readBytes(file.get(), count, kSection); });
  }
  EXPECT_EQ(0, ::lseek(file.get(), 0, SEEK_CUR));
  ASSERT_EQ(100, ::lseek(file.get(), 100, SEEK_SET));  // behind the end
  expectError(ERR_CANT_READ_FILE, kSection,
              [&] { readBytes(file.get(), 1, kSection); });
}

TEST_F(FileIo, FromAPipeAnArrayGrowsWithWhatArrives) {
  const Pipe cut("abcdefgh");
  expectError(ERR_CANT_READ_FILE, kSection,
              [&] { readIntegers(cut.in.get(), INT64_MAX, kSection); });

  // More than one step of growing.
  const std::string sent = randomBytes(5000000);
  Pipe pipe;
  std::thread writer(
      [&] { writeFully(pipe.out.get(), sent.data(), sent.size(), kSection); });
  const GrowableArray<unsigned char> got =
      readBytes(pipe.in.get(), static_cast<int64_t>(sent.size()), kSection);
  writer.join();
  EXPECT_EQ(sent, std::string(got.data(), got.data() + got.size()));
}

TEST_F(FileIo, LongArraysComeBackAsTheyWere) {
  std::vector<int32_t> values(1000003);
  std::iota(values.begin(), values.end(), -500000);
  FileDescriptor file = newFile();
  writeIntegers(file.get(), values.data(), values.size(), kSection);
  file.close();
  const FileDescriptor again(
      ::open(folder_.path("file").c_str(), O_RDONLY | O_CLOEXEC));
  const GrowableArray<int32_t> read =
      readIntegers(again.get(), static_cast<int64_t>(values.size()), kSection);
  EXPECT_EQ(values,
            std::vector<int32_t>(read.data(), read.data() + read.size()));
}

}  // namespace
}  // namespace urldb
