// The database file: its bytes, what a reader refuses, and what becomes of
// damaged files and failing writes.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>

#include "tests/file_size_limit.h"
#include "tests/memory_file.h"
#include "tests/temporary_folder.h"
#include "tests/thrown_by.h"
#include "tests/tiny_database.h"
#include "urldb/database_check.h"
#include "urldb/database_lookup.h"
#include "urldb/database_view.h"
#include "urldb/key_enumerator.h"
#include "urldb/urldb.h"

namespace urldb {
namespace {

const char* const kKeys[] = {"a",  "ab",  "ac", "b",  "abc",  "bb",
                             "/a", "ab/", "z",  "c1", "\x01", "\xFF\xFE"};

// Whatever a reader does with a file. Only ErrExceptions may come of it.
void useForLookups(const std::string& path) {
  URLDB db;
  if (codeThrownBy([&] { db.openFile(path.c_str(), nullptr, 0, true); }) != 0)
    return;
  for (const char* const key : kKeys) {
    codeThrownBy([&] { valuesOf(db.search(key)); });
    codeThrownBy([&] { valuesOf(db.searchMaxPrefix(key)); });
    for (const int mode : {1, 3, 4})
      codeThrownBy([&] { valuesOf(lookupKey(db, key, matchModeOf(mode))); });
  }
  const DatabaseView view = viewOf(db);
  std::ostringstream os;
  os << db;
  view.names->outputNames(os);
  view.names->outputHierarchical(os);
  os << *view.trie;
  for (int id = -1; id <= std::min(view.numIdxURLID, 1000); ++id)
    codeThrownBy([&] { valuesOf(db.searchRepository(id)); });
  KeyEnumerator keys(*view.trie);
  while (keys.next())
    codeThrownBy([&] { valuesOf(db.searchRepository(keys.id())); });
  checkDatabase(db, 100);
  codeThrownBy([&] { db.checkData(); });
}

// Whatever a builder does with it.
void useForBuilding(const std::string& path) {
  static const MemoryFile out;
  CategoryNames names;
  URLDB db;
  if (codeThrownBy([&] { db.openFile(path.c_str(), &names, 50, true); }) != 0)
    return;
  names.addCateogry("another");
  codeThrownBy([&] { names.setHierarchical(pairOf(2, 1)); });
  codeThrownBy([&] { names.setHierarchical(pairOf(3, 1)); });
  for (const char* const key : kKeys) {
    codeThrownBy([&] { db.add(key, pairOf(1, 1)); });
    codeThrownBy([&] { db.add(key, pairOf(2, 3)); });
    codeThrownBy([&] { valuesOf(db.search(key)); });
  }
  for (int id = 1; id < 8; ++id)
    codeThrownBy([&] { db.addRepository(id, pairOf(3, 3)); });
  checkDatabase(db, 100);
  if (codeThrownBy([&] { db.writeFile(out.path().c_str()); }) == 0)
    useForLookups(out.path());
}

void use(const std::string& path) {
  useForLookups(path);
  useForBuilding(path);
}

class URLDBFile : public testing::Test {
 protected:
  std::string errorOfOpening(std::string_view bytes) {
    const std::string path = folder_.write("bad", bytes);
    const std::string error =
        thrownBy([&] { URLDB().openFile(path.c_str(), nullptr, 0, true); });
    // Every error names the file in the same way.
    const std::string where = " in reading \"" + path + "\"";
    const std::size_t at = error.find(where);
    EXPECT_EQ(error.size(), at + where.size());
    return error.substr(0, at);
  }

  TemporaryFolder folder_;
};

TEST_F(URLDBFile, TinyDatabaseByteForByte) {
  TinyDatabase tiny;
  const std::string path = folder_.path("db");
  ASSERT_EQ(0, tiny.db.writeFile(path.c_str()));
  const std::string written = folder_.read("db");
  EXPECT_EQ(TinyDatabase::bytes(), withoutDates(written));
  EXPECT_EQ(876U, written.size());
  EXPECT_EQ('\0', written[83]);  // the end of the time stamp
}

TEST_F(URLDBFile, WritingAgainGivesTheSameBytes) {
  TinyDatabase tiny;
  for (int i = 0; i < 3; ++i) {
    tiny.db.writeFile(folder_.path("db").c_str());
    EXPECT_EQ(TinyDatabase::bytes(), withoutDates(folder_.read("db"))) << i;
  }
}

TEST_F(URLDBFile, IsCreatedWithMode0644) {
  const mode_t former = ::umask(0);
  TinyDatabase().db.writeFile(folder_.path("db").c_str());
  ::umask(former);
  EXPECT_EQ(std::filesystem::perms(0644),
            std::filesystem::status(folder_.path("db")).permissions());
}

TEST_F(URLDBFile, ReleasedSampleStaysReadable) {
  const std::string path = URLDB_TEST_DATA "/tiny.urldb";
  std::ifstream stream(path, std::ios::binary);
  const std::string sample(std::istreambuf_iterator<char>(stream), {});
  EXPECT_EQ(TinyDatabase::bytes(), withoutDates(sample));

  URLDB db;
  ASSERT_EQ(2, db.openFile(path.c_str(), nullptr, 0, true));
  EXPECT_EQ((Values{pairOf(1, 1), pairOf(2, 2), pairOf(3, 3)}),
            valuesOf(db.search("ab")));
  EXPECT_EQ((Values{pairOf(2, 3), pairOf(1, 1)}), valuesOf(db.search("ac")));
  EXPECT_EQ(Values{pairOf(1, 1)}, valuesOf(db.search("b")));
  EXPECT_STREQ("sport", viewOf(db).names->getNames(2));
  EXPECT_TRUE(checkDatabase(db, 10).empty());
}

TEST_F(URLDBFile, LoadingAndSavingAddsTheSkippedIdAndTheSpareNode) {
  const std::string path = folder_.write("db", TinyDatabase::bytes());
  CategoryNames names;
  URLDB db;
  db.openFile(path.c_str(), &names, 10, true);
  db.add("b", pairOf(2, 2));  // moves from 1 to 10 and 11
  db.writeFile(nullptr);
  std::string expected = TinyDatabase::bytes();
  const auto replace = [&expected](const std::string& from,
                                   const std::string& to) {
    const std::size_t at = expected.find(from);
    ASSERT_NE(std::string::npos, at);
    expected.replace(at, from.size(), to);
  };
  replace(words({2, 3}) + words({0x10002, 0x20001}),
          words({2, 4}) + words({0x10002, 0x20001}));
  replace(words({0, 0x30003, 1, 2}), words({0, 0x30003, 1, 2, 0}));
  replace(words({5, 10, 3, 3}) + words({0, 7, 5, 1, 0}) + words({-1, 0x10001}),
          words({6, 12, 4, 3}) + words({0, 7, 5, 10, 0, 0}) + words({-1, -1}));
  replace(words({0x18001, 0x28002, 0x30003}) + words({4, 3, 2}),
          words({0x18001, 0x28002, 0x30003, 0x18001, 0x20002}) +
              words({1, 2, 3, 4}));
  EXPECT_EQ(expected, withoutDates(folder_.read("db")));
}

TEST_F(URLDBFile, HeaderIsChecked) {
  const std::string good = TinyDatabase::bytes();
  const auto with = [&good](std::size_t at, const std::string& bytes) {
    return std::string(good).replace(at, bytes.size(), bytes);
  };
  const struct {
    const char* what;
    std::string bytes;
    const char* error;
  } cases[] = {
      {"empty", "", "4/3004 Can't Read File"},
      {"short magic", good.substr(0, 13), "4/3004 Can't Read File"},
      {"other magic", with(0, "_url_database_"), "26/3004 Invalid File"},
      {"magic with a NUL", with(13, std::string(1, '\0')),
       "26/3004 Invalid File"},
      {"requires version 3", with(32, word(3)),
       "34/3004 Invalid Version: Required Engine Version: 3"},
      {"requires the last version", with(32, word(INT_MAX)),
       "34/3004 Invalid Version: Required Engine Version: 2147483647"},
      {"cut in the header", good.substr(0, 87), "4/3004 Can't Read File"},
      {"cut in the names", good.substr(0, 100), "4/3001 Can't Read File"},
      {"cut in the trie", good.substr(0, 300), "4/60 Can't Read File"},
      {"cut in the repository", good.substr(0, 800), "4/3004 Can't Read File"},
      {"other magic of the trie", with(156, "_DYNAMIC_AD_"),
       "26/60 Invalid File: Invalid Header"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(c.error, errorOfOpening(c.bytes));
  }
}

TEST_F(URLDBFile, AnyRequiredVersionUpTo2IsAccepted) {
  std::string bytes = TinyDatabase::bytes();
  for (const int version : {2, 1, 0, -1, INT_MIN}) {
    bytes.replace(32, 4, word(version));
    URLDB db;
    EXPECT_EQ(
        2, db.openFile(folder_.write("db", bytes).c_str(), nullptr, 0, true));
    EXPECT_EQ(3U, valuesOf(db.search("ab")).size());
  }
}

TEST_F(URLDBFile, FormatVersionIsTakenAsItStands) {
  std::string bytes = TinyDatabase::bytes();
  bytes.replace(14, 4, word(77));
  const std::string path = folder_.write("db", bytes);
  CategoryNames names;
  URLDB db;
  EXPECT_EQ(77, db.openFile(path.c_str(), &names, 10, true));
  EXPECT_EQ(77, viewOf(db).version);
  db.add("x", pairOf(1, 1));
  db.writeFile(nullptr);
  EXPECT_EQ(word(2), folder_.read("db").substr(14, 4));
}

TEST_F(URLDBFile, BytesBehindTheFileAreLeftAlone) {
  const std::string path = folder_.write("db", TinyDatabase::bytes() + "more");
  CategoryNames names;
  URLDB db;
  EXPECT_EQ(2, db.openFile(path.c_str(), &names, 10, true));
  EXPECT_EQ(3, viewOf(db).freePositions);
}

TEST_F(URLDBFile, FolderInPlaceOfAFileCannotBeRead) {
  const std::string path = folder_.path();
  EXPECT_EQ("4/3004 Can't Read File in reading \"" + path + "\"", thrownBy([&] {
              URLDB().openFile(path.c_str(), nullptr, 0, true);
            }));
}

TEST_F(URLDBFile, LongPathsAreCutInTheMessage) {
  std::string path = folder_.path();
  for (int i = 0; i < 40; ++i) path += "/././././././././././././././.";
  path += "/bad";
  folder_.write("bad", "short");
  const std::string error =
      thrownBy([&] { URLDB().openFile(path.c_str(), nullptr, 0, true); });
  EXPECT_EQ(std::string("4/3004 ").size() + 511, error.size());
}

TEST_F(URLDBFile, FreePositionsBeyondTheQueueAreAnOverflow) {
  const std::string path = folder_.write("db", TinyDatabase::bytes());
  CategoryNames names;
  names.addCateogry("kept");
  URLDB db;
  EXPECT_EQ("37/6 Overflow in reading \"" + path + "\"",
            thrownBy([&] { db.openFile(path.c_str(), &names, 3, true); }));
  EXPECT_STREQ("kept", names.getNames(1));
  EXPECT_EQ(2, db.openFile(path.c_str(), &names, 4, true));
}

// The damaged files.

TEST(URLDBDamage, UndamagedFilePassesEveryUse) {
  const MemoryFile file(TinyDatabase::bytes());
  URLDB db;
  ASSERT_EQ(2, db.openFile(file.path().c_str(), nullptr, 0, true));
  ASSERT_TRUE(checkDatabase(db, 10).empty());
  use(file.path());
}

TEST(URLDBDamage, CutAnywhereIsAShortRead) {
  const std::string bytes = TinyDatabase::bytes();
  MemoryFile file;
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    file.set(bytes.substr(0, size));
    CategoryNames names;
    URLDB db;
    ASSERT_EQ(4, codeThrownBy([&] {
                db.openFile(file.path().c_str(), &names, 10, true);
              }))
        << size;
    // Who only looks up does not read the free positions.
    const int code = codeThrownBy(
        [&] { db.openFile(file.path().c_str(), nullptr, 0, true); });
    ASSERT_EQ(size >= bytes.size() - 12 ? 0 : 4, code) << size;
    use(file.path());
  }
}

TEST(URLDBDamage, AnyBitFlippedIsAnErrorOrSafe) {
  const std::string bytes = TinyDatabase::bytes();
  MemoryFile file(bytes);
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    SCOPED_TRACE(at);
    for (int bit = 0; bit < 8; ++bit) {
      file.patch(at, std::string(1, static_cast<char>(bytes[at] ^ 1 << bit)));
      use(file.path());
    }
    file.patch(at, bytes.substr(at, 1));
  }
}

TEST(URLDBDamage, AnyByteReplacedIsAnErrorOrSafe) {
  const std::string bytes = TinyDatabase::bytes();
  MemoryFile file(bytes);
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    SCOPED_TRACE(at);
    for (const int value : {0x00, 0x01, 0x7E, 0x7F, 0xFF}) {
      file.patch(at, std::string(1, static_cast<char>(value)));
      use(file.path());
    }
    file.patch(at, std::string(1, static_cast<char>(~bytes[at])));
    use(file.path());
    file.patch(at, bytes.substr(at, 1));
  }
}

TEST(URLDBDamage, AnyWordReplacedIsAnErrorOrSafe) {
  const std::string bytes = TinyDatabase::bytes();
  MemoryFile file(bytes);
  for (std::size_t at = 88; at + 4 <= bytes.size(); ++at) {
    SCOPED_TRACE(at);
    for (const int64_t value :
         {INT_MIN, INT_MIN + 1, -71, -20, -2, -1, 0, 1, 2, 19, 20, 69, 70, 71,
          0x10001, INT_MAX - 1, INT_MAX}) {
      file.patch(at, word(value));
      use(file.path());
    }
    file.patch(at, bytes.substr(at, 4));
  }
}

TEST(URLDBDamage, RandomDamageIsAnErrorOrSafe) {
  const unsigned seed = 161803;
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  const std::string bytes = TinyDatabase::bytes();
  MemoryFile file;
  for (int round = 0; round < 3000; ++round) {
    std::string damaged = bytes;
    for (std::size_t n = 1 + random() % 8; n > 0; --n) {
      // The small values that cells and positions have do the most.
      const std::size_t at = 88 + random() % (bytes.size() - 92);
      const int64_t value = static_cast<int64_t>(random() % 160) - 80;
      damaged.replace(at / 4 * 4, 4, word(value));
    }
    file.set(damaged);
    use(file.path());
  }
}

// Writes that fail.

class URLDBWriteFailure : public URLDBFile {};

TEST_F(URLDBWriteFailure, FullDiskIsCode5AndTheDatabaseStaysUsable) {
  TinyDatabase tiny;
  EXPECT_EQ("5/3004 Can't Write File",
            thrownBy([&] { tiny.db.writeFile("/dev/full"); }));
  EXPECT_TRUE(checkDatabase(tiny.db, 10).empty());
  EXPECT_EQ(3U, valuesOf(tiny.db.search("ab")).size());
  EXPECT_EQ(0, tiny.db.writeFile(folder_.path("db").c_str()));
}

TEST_F(URLDBWriteFailure, AtAnySizeItIsCode5AndTheDatabaseStaysUsable) {
  const std::string path = folder_.path("db");
  const std::string whole = TinyDatabase::bytes();
  for (std::size_t size = 0; size < whole.size(); size += 13) {
    SCOPED_TRACE(size);
    TinyDatabase tiny;
    {
      const FileSizeLimit limit(size);
      EXPECT_EQ(5, codeThrownBy([&] { tiny.db.writeFile(path.c_str()); }));
    }
    // What was written is the beginning of the file.
    const std::string partial = withoutDates(folder_.read("db"));
    EXPECT_EQ(withoutDates(whole.substr(0, partial.size())), partial);
    ASSERT_TRUE(checkDatabase(tiny.db, 10).empty());
    EXPECT_EQ(3U, valuesOf(tiny.db.search("ab")).size());
    // The free positions may come in the other order now.
    ASSERT_EQ(0, tiny.db.writeFile(path.c_str()));
    const std::string again = withoutDates(folder_.read("db"));
    EXPECT_EQ(whole.substr(0, whole.size() - 12),
              again.substr(0, again.size() - 12));
    EXPECT_TRUE(again.ends_with(words({4, 3, 2})) ||
                again.ends_with(words({2, 3, 4})));
    EXPECT_NE(0, tiny.db.add("more", pairOf(1, 1)));
    EXPECT_EQ(0, tiny.db.writeFile(path.c_str()));
  }
}

}  // namespace
}  // namespace urldb
