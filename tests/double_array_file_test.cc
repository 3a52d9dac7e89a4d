#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tests/expect_error.h"
#include "tests/file_size_limit.h"
#include "tests/random_keys.h"
#include "tests/temporary_folder.h"
#include "tests/thrown_by.h"
#include "tests/trie_section.h"
#include "urldb/double_array.h"
#include "urldb/trie_check.h"

// The section of a trie in a file: docs/urldb-file.md.

namespace urldb {
namespace {

using std::string_literals::operator""s;

constexpr int kGain = 64;

// Keys 01 02, 03 and 01 03 in mode 0, in this order.
//
// "01 02" finds the root's arc by 01 missing: leaf 1 + 1 = 2, record 02 7F.
// "03": leaf 1 + 3 = 4, record 7F; cell 3 comes in as a free one.
// "01 03" meets the leaf 2, whose record parts from it at once: the labels 2
// and 3 fit nowhere below the end (base 1 would need cell 4), so cell 2 gets
// base 5 - 2 = 3 and the leaves 5 and 6, each with the record 7F.
//
//   cell   0  1  2  3  4   5   6
//   BASE   6  1  3  0 -1  -7 -13    cell 0 holds DA_SIZE
//   CHECK  0 -3  1 -7  1   2   2    free: 1 (the root), 3, then 7, the end
//
// The records, in the order of the leaves: 03, 01 02, 01 03, each 7F 00 and the
// identifier; posTail is 19.
void addSmallKeys(DoubleArray* trie) {
  trie->add("\x01\x02", 0x01020304);
  trie->add("\x03", 0x11121314);
  trie->add("\x01\x03", -2);
}

const Keys& smallKeys() {
  static const Keys keys = {
      {"\x01\x02", 0x01020304}, {"\x03", 0x11121314}, {"\x01\x03", -2}};
  return keys;
}

std::string smallSection() {
  return "_DYNAMIC_AC_"            // 0
         "\0\0\0\1"                // 12  endian marker
         "\0\0\0\4"                // 16  version
         "\0\0\0\x21"              // 20  status: Linux, EUC
         "\0\0\0\0"                // 24  convMode
         "\0\0\0\6"                // 28  DA_SIZE
         "\0\0\0\1"                // 32  emptyHead
         "\0\0\0\3"                // 36  emptyTail
         "\0\0\0\x13"              // 40  posTail
         "\0\0\0\6"                // 44  BASE
         "\0\0\0\1"                //
         "\0\0\0\3"                //
         "\0\0\0\0"                //
         "\xFF\xFF\xFF\xFF"        //
         "\xFF\xFF\xFF\xF9"        //
         "\xFF\xFF\xFF\xF3"        //
         "\0\0\0\0"                // 72  CHECK
         "\xFF\xFF\xFF\xFD"        //
         "\0\0\0\1"                //
         "\xFF\xFF\xFF\xF9"        //
         "\0\0\0\1"                //
         "\0\0\0\2"                //
         "\0\0\0\2"                //
         "\0"                      // 100  TAIL
         "\x7F\0\x11\x12\x13\x14"  //
         "\x7F\0\1\2\3\4"          //
         "\x7F\0\xFF\xFF\xFF\xFE"  //
         "\0"s;                    // 119  at posTail
}

// A trie of its own to be overwritten, or not.
constexpr char kOldKey[] = "old key";
constexpr int kOldId = 4711;

class DoubleArrayFile : public testing::Test {
 protected:
  DoubleArrayFile() : trie_(kGain, 0), old_(kGain, 1) {
    old_.add(kOldKey, kOldId);
    oldSection_ = sectionOf(old_);
  }

  // Whether `old_` still holds what it did.
  void expectOldContent() {
    EXPECT_EQ(kOldId, old_.search(kOldKey));
    EXPECT_EQ(oldSection_, sectionOf(old_));
  }

  void expectRefused(const std::string& section, ErrorCode code,
                     const char* message) {
    expectError(code, 60, message, [&] { readSection(&old_, section); });
    expectOldContent();
  }

  DoubleArray trie_;
  DoubleArray old_;
  std::string oldSection_;
  TemporaryFolder folder_;
};

// A trie with many keys, some of them splits, some relocations.
void addRandomKeys(DoubleArray* trie, Keys* keys, int from, int to) {
  RandomKeys random(static_cast<unsigned>(from));
  for (int id = from; id < to; ++id) {
    const std::string key = random.key("abcd/.\x01\xFE", 12);
    if (trie->add(key.c_str(), id) == 0) (*keys)[key] = id;
  }
}

TEST_F(DoubleArrayFile, EmptyTrieIsASectionOf62Bytes) {
  const std::string expected =
      "_DYNAMIC_AC_"
      "\0\0\0\1\0\0\0\4\0\0\0\x21\0\0\0\3"  // mode 3
      "\0\0\0\1\0\0\0\1\0\0\0\1\0\0\0\1"    // the counts
      "\0\0\0\1\0\0\0\1"                    // BASE
      "\0\0\0\0\xFF\xFF\xFF\xFE"            // CHECK
      "\0\0"s;                              // TAIL
  ASSERT_EQ(62U, expected.size());
  for (const int gain : {1, 2, 64, 10240}) {
    DoubleArray empty(gain, 3);
    EXPECT_EQ(expected, sectionOf(empty));
  }
  readSection(&old_, expected);
  EXPECT_EQ(Keys(), keysOf(old_));
  EXPECT_EQ(expected, sectionOf(old_));
  EXPECT_EQ(0, old_.add("a", 1));
  EXPECT_EQ(1, old_.search("A"));
}

TEST_F(DoubleArrayFile, SmallSectionByteForByte) {
  addSmallKeys(&trie_);
  EXPECT_EQ(120U, smallSection().size());
  EXPECT_EQ(smallSection(), sectionOf(trie_));
  EXPECT_EQ(smallKeys(), keysOf(trie_));  // back in host order
}

// The integers of this section were never swapped by this host.
TEST_F(DoubleArrayFile, BigEndianSectionReadsBack) {
  readSection(&trie_, smallSection());
  EXPECT_EQ(smallKeys(), keysOf(trie_));
  for (const auto& [key, id] : smallKeys()) {
    EXPECT_EQ(id, trie_.search(key.c_str()));
    EXPECT_EQ(id, trie_.searchMaxPrefix((key + '/').c_str()));
    EXPECT_EQ(id, trie_.add(key.c_str(), 1));
  }
  EXPECT_EQ(std::vector<std::string>(), checkTrie(trie_, 1));
  EXPECT_EQ(smallSection(), sectionOf(trie_));
}

TEST_F(DoubleArrayFile, UnswappedSectionIsRefused) {
  TrieSection section;
  section.marker = 0x01000000;
  expectRefused(section.bytes(), ERR_INVALID_FILE,
                "Invalid File: Invalid Endian");
  for (const int marker : {0, 2, -1}) {
    section.marker = marker;
    expectRefused(section.bytes(), ERR_INVALID_FILE,
                  "Invalid File: Invalid Endian");
  }
}

TEST_F(DoubleArrayFile, ForeignMagicIsRefused) {
  for (const char* magic :
       {"_DYNAMIC_AC-", "xDYNAMIC_AC_", "_dynamic_ac_", "_URL_DATABAS"}) {
    TrieSection section;
    section.magic = magic;
    expectRefused(section.bytes(), ERR_INVALID_FILE,
                  "Invalid File: Invalid Header");
  }
}

TEST_F(DoubleArrayFile, NewerVersionsAreRefused) {
  TrieSection section;
  section.version = 5;
  expectRefused(section.bytes(), ERR_INVALID_VERSION, "Invalid Version: 5");
  section.version = INT_MAX;
  expectRefused(section.bytes(), ERR_INVALID_VERSION,
                "Invalid Version: 2147483647");
}

TEST_F(DoubleArrayFile, OlderVersionsAreAccepted) {
  for (const int version : {4, 3, 1, 0, -1, INT_MIN}) {
    std::string bytes = smallSection();
    bytes.replace(16, 4, word(version));
    DoubleArray trie(kGain, 0);
    readSection(&trie, bytes);
    EXPECT_EQ(smallKeys(), keysOf(trie)) << version;
    EXPECT_EQ(smallSection(), sectionOf(trie));  // written anew as version 4
  }
}

TEST_F(DoubleArrayFile, StatusWordIsIgnoredAndModeIsKept) {
  std::string bytes = smallSection();
  bytes.replace(20, 8, words({0x12345678, 1}));
  readSection(&old_, bytes);
  old_.add("a", 9);
  EXPECT_EQ(9, old_.search("A"));
  const std::string written = sectionOf(old_);
  EXPECT_EQ(words({0x21, 1}), written.substr(20, 8));
  for (const int mode : {0, 2, 3, 4, -1, INT_MIN}) {
    bytes.replace(24, 4, word(mode));
    readSection(&old_, bytes);
    EXPECT_EQ(mode, old_.view().convMode);
    EXPECT_EQ(bytes.substr(24), sectionOf(old_).substr(24));
  }
}

TEST_F(DoubleArrayFile, TwoSectionsBackToBackReadBackOneAfterTheOther) {
  Keys keys;
  addRandomKeys(&trie_, &keys, 1, 300);
  const FileDescriptor file = memoryFile();
  trie_.writeFile(file.get());
  old_.writeFile(file.get());
  ASSERT_EQ(3, write(file.get(), "end", 3));
  ASSERT_EQ(0, lseek(file.get(), 0, SEEK_SET));

  DoubleArray first(1, 0);
  DoubleArray second(1, 0);
  first.readFile(file.get());
  second.readFile(file.get());
  char rest[4] = {};
  EXPECT_EQ(3, read(file.get(), rest, sizeof rest));
  EXPECT_STREQ("end", rest);
  EXPECT_EQ(keys, keysOf(first));
  EXPECT_EQ(kOldId, second.search(kOldKey));
}

TEST_F(DoubleArrayFile, SectionsStandAnywhereInAFile) {
  const FileDescriptor file = memoryFile("head");
  lseek(file.get(), 4, SEEK_SET);
  addSmallKeys(&trie_);
  trie_.writeFile(file.get());
  EXPECT_EQ("head" + smallSection(), bytesOf(file.get()));
  lseek(file.get(), 4, SEEK_SET);
  old_.readFile(file.get());
  EXPECT_EQ(smallKeys(), keysOf(old_));
}

TEST_F(DoubleArrayFile, CutSectionIsCode4AndKeepsTheOldTrie) {
  Keys keys;
  addRandomKeys(&trie_, &keys, 1, 12);
  for (const std::string& whole : {smallSection(), sectionOf(trie_)}) {
    for (std::size_t n = 0; n < whole.size(); ++n) {
      SCOPED_TRACE(n);
      expectError(ERR_CANT_READ_FILE, 60,
                  [&] { readSection(&old_, whole.substr(0, n)); });
      ASSERT_EQ(kOldId, old_.search(kOldKey));
    }
  }
  expectOldContent();
  EXPECT_EQ(0, old_.add("more", 1));  // and can be extended still
  EXPECT_EQ(1, old_.search("more"));
}

TEST_F(DoubleArrayFile, PathStandsBehindTheTextWithoutSeparator) {
  const std::string whole = smallSection();
  for (std::size_t n = 0; n < whole.size(); ++n) {
    const std::string path = folder_.write("cut", whole.substr(0, n));
    const std::string message = "Can't Read File" + path;
    expectError(ERR_CANT_READ_FILE, 60, message.c_str(),
                [&] { old_.readFile(path.c_str()); });
  }
  TrieSection section;
  section.version = 5;
  std::string path = folder_.write("v5", section.bytes());
  EXPECT_EQ("34/60 Invalid Version" + path,
            thrownBy([&] { old_.readFile(path.c_str()); }));
  path = folder_.write("magic", std::string(100, 'x'));
  EXPECT_EQ("26/60 Invalid File" + path,
            thrownBy([&] { old_.readFile(path.c_str()); }));
  path = folder_.path();  // a folder opens, but cannot be read
  EXPECT_EQ("4/60 Can't Read File" + path,
            thrownBy([&] { old_.readFile(path.c_str()); }));
  EXPECT_EQ("5/60 Can't Write File/dev/full",
            thrownBy([&] { old_.writeFile("/dev/full"); }));
  path = folder_.write("%s%n", "");
  EXPECT_EQ("4/60 Can't Read File" + path,
            thrownBy([&] { old_.readFile(path.c_str()); }));
  expectOldContent();
}

TEST_F(DoubleArrayFile, FileThatCannotBeOpenedIsCode3) {
  const std::string path = folder_.path("none/trie");
  EXPECT_EQ("3/60 Can't Open File: " + path,
            thrownBy([&] { old_.readFile(path.c_str()); }));
  EXPECT_EQ("3/60 Can't Open File: " + path,
            thrownBy([&] { old_.writeFile(path.c_str()); }));
  expectOldContent();
}

TEST_F(DoubleArrayFile, WritesAFileOfItsOwn) {
  addSmallKeys(&trie_);
  const std::string path =
      folder_.write("trie", std::string(5000, 'x'));  // is cut to size
  EXPECT_EQ(0, trie_.writeFile(path.c_str()));
  EXPECT_EQ(smallSection(), folder_.read("trie"));
  EXPECT_EQ(0, old_.readFile(path.c_str()));
  EXPECT_EQ(smallKeys(), keysOf(old_));

  const mode_t mask = umask(0);
  const std::string fresh = folder_.path("fresh");
  EXPECT_EQ(0, trie_.writeFile(fresh.c_str()));
  umask(mask);
  struct stat status {};
  ASSERT_EQ(0, stat(fresh.c_str(), &status));
  EXPECT_EQ(0644U, status.st_mode & 07777U);
}

TEST_F(DoubleArrayFile, LeavesNoDescriptorOpen) {
  const int next = memoryFile().get();  // closed again: the lowest free one
  EXPECT_ANY_THROW(old_.readFile(folder_.write("cut", "_DYN").c_str()));
  EXPECT_ANY_THROW(old_.writeFile("/dev/full"));
  old_.writeFile(folder_.path("good").c_str());
  old_.readFile(folder_.path("good").c_str());
  EXPECT_EQ(next, memoryFile().get());
}

// Adding goes on after a write and after a read, and what is written at the end
// depends on the keys and their order alone.
TEST_F(DoubleArrayFile, InsertionGoesOnAfterWriteAndAfterRead) {
  for (int round = 0; round < 20; ++round) {
    SCOPED_TRACE(round);
    const int from = 1 + 1000 * round;
    Keys keys;
    DoubleArray straight(kGain, 0);
    DoubleArray written(1000, 0);
    DoubleArray read(3, 2);
    addRandomKeys(&straight, &keys, from, from + 150);
    addRandomKeys(&written, &keys, from, from + 150);
    readSection(&read, sectionOf(written));
    EXPECT_EQ(sectionOf(written), sectionOf(read));

    addRandomKeys(&straight, &keys, from + 150, from + 400);
    addRandomKeys(&written, &keys, from + 150, from + 400);
    addRandomKeys(&read, &keys, from + 150, from + 400);
    const std::string expected = sectionOf(straight);
    EXPECT_EQ(expected, sectionOf(written));
    EXPECT_EQ(expected, sectionOf(read));
    EXPECT_EQ(expected, sectionOf(read)) << "written twice";
    for (const DoubleArray* trie : {&straight, &written, &read}) {
      EXPECT_EQ(keys, keysOf(*trie));
      EXPECT_EQ(std::vector<std::string>(), checkTrie(*trie, 1));
    }
  }
}

TEST_F(DoubleArrayFile, ReadReplacesALargerTrieAndASmallerOne) {
  Keys keys;
  addRandomKeys(&trie_, &keys, 1, 2000);
  const std::string large = sectionOf(trie_);
  readSection(&trie_, smallSection());
  EXPECT_EQ(smallKeys(), keysOf(trie_));
  EXPECT_EQ(0, trie_.search(keys.rbegin()->first.c_str()));
  trie_.add("abc", 5);
  EXPECT_EQ(5, trie_.search("abc"));
  readSection(&trie_, large);
  EXPECT_EQ(keys, keysOf(trie_));
  EXPECT_EQ(large, sectionOf(trie_));
}

TEST_F(DoubleArrayFile, CapacitiesAfterAReadAreThoseOfTheSection) {
  readSection(&old_, smallSection());
  std::ostringstream os;
  os << old_;
  EXPECT_NE(std::string::npos, os.str().find("szBC = 7\n")) << os.str();
  EXPECT_NE(std::string::npos, os.str().find("szTail = 20\n")) << os.str();
  EXPECT_NE(std::string::npos, os.str().find("szGain = 64\n")) << os.str();
}

// Without a known size: a child feeds the bytes in pieces.
class Feeder {
 public:
  Feeder(const std::string& bytes, std::size_t piece) {
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("pipe");
    reader_ = FileDescriptor(ends[0]);
    const FileDescriptor writer(ends[1]);
    child_ = fork();
    if (child_ != 0) return;
    reader_.close();
    signal(SIGPIPE, SIG_DFL);
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
      const std::string part = bytes.substr(at, piece);
      if (write(writer.get(), part.data(), part.size()) < 0) break;
    }
    _exit(0);
  }
  Feeder(const Feeder&) = delete;
  Feeder& operator=(const Feeder&) = delete;
  ~Feeder() {
    reader_.close();
    waitpid(child_, nullptr, 0);
  }
  int fd() const { return reader_.get(); }

 private:
  FileDescriptor reader_;
  pid_t child_ = -1;
};

TEST_F(DoubleArrayFile, ReadsFromAPipeInPieces) {
  Keys keys;
  addRandomKeys(&trie_, &keys, 1, 3000);
  const std::string section = sectionOf(trie_);
  for (const std::size_t piece : {1U, 7U, 4096U, 100000U}) {
    const Feeder twice(section + smallSection(), piece);
    DoubleArray first(kGain, 0);
    DoubleArray second(kGain, 0);
    first.readFile(twice.fd());
    second.readFile(twice.fd());
    EXPECT_EQ(section, sectionOf(first)) << piece;
    EXPECT_EQ(smallSection(), sectionOf(second)) << piece;
  }
}

TEST_F(DoubleArrayFile, WritesToAPipe) {
  addSmallKeys(&trie_);
  int ends[2];
  ASSERT_EQ(0, pipe(ends));
  const FileDescriptor reader(ends[0]);
  FileDescriptor writer(ends[1]);
  trie_.writeFile(writer.get());
  writer.close();
  old_.readFile(reader.get());
  EXPECT_EQ(smallKeys(), keysOf(old_));
}

TEST_F(DoubleArrayFile, PipeThatEndsEarlyIsCode4) {
  const std::string whole = smallSection();
  for (std::size_t n = 0; n < whole.size(); n += 3) {
    const Feeder feeder(whole.substr(0, n), 50);
    expectError(ERR_CANT_READ_FILE, 60, [&] { old_.readFile(feeder.fd()); });
  }
  expectOldContent();
}

// The most address space that the process has ever had, in bytes.
std::size_t peakOfMemory() {
  const std::unique_ptr<FILE, int (*)(FILE*)> status(
      std::fopen("/proc/self/status", "re"), &std::fclose);
  char line[256];
  std::size_t kilobytes = 0;
  while (std::fgets(line, sizeof line, status.get()) != nullptr) {
    if (std::sscanf(line, "VmPeak: %zu", &kilobytes) == 1) break;
  }
  return kilobytes * 1024;
}

constexpr std::size_t kLittle = std::size_t{64} << 20;

TEST_F(DoubleArrayFile, HugeCountsThatNeverArriveCostNoMemory) {
  const std::size_t before = peakOfMemory();
  ASSERT_GT(before, 0U);
  const int huge[] = {INT_MAX, INT_MAX - 1, 1 << 30, 1 << 24};
  for (const int count : huge) {
    SCOPED_TRACE(count);
    TrieSection cells;
    cells.size = count;
    cells.base[0] = count;
    TrieSection tail;
    tail.posTail = count;
    for (const TrieSection* section : {&cells, &tail}) {
      expectError(ERR_CANT_READ_FILE, 60,
                  [&] { readSection(&old_, section->bytes()); });
      const Feeder feeder(section->bytes(), 1000);
      expectError(ERR_CANT_READ_FILE, 60, [&] { old_.readFile(feeder.fd()); });
    }
  }
  expectOldContent();
  EXPECT_LT(peakOfMemory(), before + kLittle);
}

TEST_F(DoubleArrayFile, FullDeviceIsCode5AndLeavesTheTrie) {
  const FileDescriptor full(open("/dev/full", O_WRONLY | O_CLOEXEC));
  ASSERT_TRUE(full.valid());
  expectError(ERR_CANT_WRITE_FILE, 60, [&] { old_.writeFile(full.get()); });
  expectOldContent();
  expectError(ERR_CANT_WRITE_FILE, 60, [&] { old_.writeFile(-1); });
  expectOldContent();
}

TEST_F(DoubleArrayFile, WriteThatFailsAnywhereIsCode5AndLeavesTheTrie) {
  addSmallKeys(&trie_);
  const std::string path = folder_.path("limited");
  const std::string message = "Can't Write File" + path;
  for (std::size_t n = 0; n < smallSection().size(); ++n) {
    SCOPED_TRACE(n);
    std::string thrown;
    {
      const FileSizeLimit limit(n);
      thrown = thrownBy([&] { trie_.writeFile(path.c_str()); });
    }
    EXPECT_EQ("5/60 " + message, thrown);
    EXPECT_EQ(smallSection().substr(0, n), folder_.read("limited"));
    ASSERT_EQ(smallKeys(), keysOf(trie_));
    ASSERT_EQ(smallSection(), sectionOf(trie_));
  }
  EXPECT_EQ(0, trie_.add("\x01\x01", 7));
  EXPECT_EQ(7, trie_.search("\x01\x01"));
}

// The building blocks of the section.

TEST(DoubleArrayBlocks, IntegersAreWrittenBigEndianAndSwappedBack) {
  int values[] = {1, -2, 0x01020304};
  const FileDescriptor file = memoryFile();
  DoubleArray::writeIntBuffer(file.get(), values, 3);
  EXPECT_EQ("\0\0\0\1\xFF\xFF\xFF\xFE\1\2\3\4"s, bytesOf(file.get()));
  EXPECT_EQ(1, values[0]);
  EXPECT_EQ(-2, values[1]);
  EXPECT_EQ(0x01020304, values[2]);
  expectError(ERR_CANT_WRITE_FILE, 60,
              [&] { DoubleArray::writeIntBuffer(-1, values, 3); });
  EXPECT_EQ(0x01020304, values[2]);  // swapped back then, too
}

TEST(DoubleArrayBlocks, NothingToTransferIsNoError) {
  int none = 5;
  DoubleArray::writeIntBuffer(-1, &none, 0);
  const std::unique_ptr<int[]> integers(DoubleArray::readIntBuffer(-1, 0));
  EXPECT_NE(nullptr, integers);
  const std::unique_ptr<unsigned char[]> bytes(
      DoubleArray::readTailBuffer(-1, 0));
  EXPECT_NE(nullptr, bytes);
}

TEST(DoubleArrayBlocks, ArraysAreReadExactly) {
  const FileDescriptor file = memoryFile("\0\0\1\0\x80\0\0\1xyz"s);
  const std::unique_ptr<int[]> integers(
      DoubleArray::readIntBuffer(file.get(), 2));
  EXPECT_EQ(256, integers[0]);
  EXPECT_EQ(INT_MIN + 1, integers[1]);
  const std::unique_ptr<unsigned char[]> bytes(
      DoubleArray::readTailBuffer(file.get(), 2));
  EXPECT_EQ("xy", std::string(bytes.get(), bytes.get() + 2));
  expectError(ERR_CANT_READ_FILE, 60,
              [&] { DoubleArray::readTailBuffer(file.get(), 2); });
  expectError(ERR_CANT_READ_FILE, 60,
              [&] { DoubleArray::readIntBuffer(file.get(), 1); });
  expectError(ERR_INVALID_DATA, 60,
              [&] { DoubleArray::readIntBuffer(file.get(), -1); });
  expectError(ERR_INVALID_DATA, 60,
              [&] { DoubleArray::readTailBuffer(file.get(), -1); });
}

std::string swappedTail(const std::vector<int>& base, const std::string& tail) {
  std::vector<unsigned char> copy(tail.begin(), tail.end());
  DoubleArray::convEndianForTail(base.data(), static_cast<int>(base.size()) - 1,
                                 copy.data(), static_cast<int>(copy.size()));
  return {copy.begin(), copy.end()};
}

TEST(DoubleArrayBlocks, IdentifierOfEveryRecordIsReversed) {
  EXPECT_EQ(
      "\0ab\0\4\3\2\1\0\x0D\x0C\x0B\x0A\0"s,
      swappedTail({4, 1, -1, 0, -8}, "\0ab\0\1\2\3\4\0\x0A\x0B\x0C\x0D\0"s));
  // Cell 0 is no cell.
  EXPECT_EQ("\0ab\0\1\2\3\4"s, swappedTail({-1, 1}, "\0ab\0\1\2\3\4"s));
}

TEST(DoubleArrayBlocks, RecordsWithoutAnEndArePassedOver) {
  const std::string tail = "\0ab\0\1\2\3"s;  // one byte short
  EXPECT_EQ(tail, swappedTail({1, -1}, tail));
  EXPECT_EQ("\0abcde"s, swappedTail({1, -1}, "\0abcde"s));
  for (const int base : {-7, -8, -1000, INT_MIN, INT_MAX}) {
    EXPECT_EQ(tail, swappedTail({1, base}, tail)) << base;
  }
}

}  // namespace
}  // namespace urldb
