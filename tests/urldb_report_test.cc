#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/temporary_folder.h"
#include "tests/thrown_by.h"
#include "tests/tiny_database.h"
#include "urldb/database_view.h"
#include "urldb/urldb.h"

namespace urldb {
namespace {

std::string dump(const URLDB& db) {
  std::ostringstream os;
  os << db;
  return os.str();
}

// A database that is read from a file with chosen URL index, repository and
// free positions behind the names and the trie of the tiny one.
class URLDBCheck : public testing::Test {
 protected:
  void open(const std::string& repository, bool forLookups = false) {
    std::string file = TinyDatabase::bytes();
    const std::string whole = words({5, 10, 3, 3}) + words({0, 7, 5, 1, 0});
    file.resize(file.rfind(whole));
    const std::string path = folder_.write("db", file + repository);
    db_.openFile(path.c_str(), forLookups ? nullptr : &names_, 100, true);
  }
  std::string check() {
    return thrownBy([this] { db_.checkData(); });
  }

  TemporaryFolder folder_;
  CategoryNames names_;
  URLDB db_;
};

TEST_F(URLDBCheck, DatabaseWithoutUrlsPasses) {
  db_.openFile("x", &names_, 10, false);
  EXPECT_EQ("", check());
}

TEST_F(URLDBCheck, ObjectThatIsNotOpenPasses) { EXPECT_EQ("", check()); }

TEST_F(URLDBCheck, SoundDatabasePassesAndItsFreePositionsAreReversed) {
  TinyDatabase tiny;
  EXPECT_EQ((std::vector<int32_t>{2, 3, 4}), freePositionsOf(tiny.db));
  tiny.db.checkData();
  EXPECT_EQ((std::vector<int32_t>{4, 3, 2}), freePositionsOf(tiny.db));
  tiny.db.checkData();
  EXPECT_EQ((std::vector<int32_t>{2, 3, 4}), freePositionsOf(tiny.db));
}

TEST_F(URLDBCheck, NamesTheFault) {
  const struct {
    const char* what;
    std::string repository;
    const char* error;
  } cases[] = {
      {"sound", words({2, 4, 2, 0, 0, 1, -1, 0x10001, -1, -1, 2, 3}), ""},
      {"an ID that a load skipped has no list",
       words({4, 3, 0, 0, 0, 1, 0, 2, -1, 0x10001, 0x10001}), ""},
      {"free position that was overwritten",
       words({2, 4, 2, 0, 0, 1, -1, 0x10001, -1, 0x10001, 2, 3}),
       "25/3004 Invalid Data: in checkData(pattern)"},
      {"one free position too many",
       words({2, 4, 3, 0, 0, 1, -1, 0x10001, -1, -1, 2, 3, 3}),
       "25/3004 Invalid Data: in checkData(free)"},
      {"one free position too few",
       words({2, 4, 1, 0, 0, 1, -1, 0x10001, -1, -1, 2}),
       "25/3004 Invalid Data: in checkData(free)"},
      {"unknown level-2 ID", words({2, 2, 0, 0, 0, 1, -1, 0x10004}),
       "38/3001 No such a Element"},
      {"unknown level-1 ID", words({2, 2, 0, 0, 0, 1, -1, 0x40001}),
       "38/3001 No such a Element"},
      {"no level-1 ID", words({2, 2, 0, 0, 0, 1, -1, 1}),
       "38/3001 No such a Element"},
      {"negative level-1 ID", words({2, 2, 0, 0, 0, 1, -1, 0x80000001}),
       "38/3001 No such a Element"},
      {"free entry in a list", words({2, 3, 0, 0, 0, 1, -1, 0x18001, -1}),
       "31/3004 Invalid Status: value is clear(2)"},
      {"list without an end", words({2, 2, 0, 0, 0, 1, -1, 0x18001}),
       "31/3004 Invalid Status: value is clear(2)"},
      {"list outside the repository", words({2, 2, 0, 0, 0, 2, -1, 0x10001}),
       "25/3004 Invalid Data: list of URL ID 1"},
      {"the last ID is looked at first",
       words({3, 3, 0, 0, 0, 1, 2, -1, 0x10004, 0x18001}),
       "31/3004 Invalid Status: value is clear(3)"},
      {"the last ID is looked at first, whatever is wrong",
       words({3, 3, 0, 0, 0, 1, 2, -1, 0x18001, 0x10004}),
       "38/3001 No such a Element"},
      {"a list is whole before its values are looked at",
       words({2, 2, 0, 0, 0, 1, -1, 0x18004}),
       "31/3004 Invalid Status: value is clear(2)"},
      {"two lists share a position",
       words({3, 3, 0, 0, 0, 1, 2, -1, 0x18001, 0x10001}),
       "25/3004 Invalid Data: in checkData(free)"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    open(c.repository);
    EXPECT_EQ(c.error, check());
  }
}

TEST_F(URLDBCheck, ForLookupsTheFreePositionsAreNotCounted) {
  open(words({2, 4, 0, 0, 0, 1, -1, 0x10001, -1, -1}), true);
  EXPECT_EQ("", check());
  open(words({2, 2, 0, 0, 0, 1, -1, 0x10004}), true);
  EXPECT_EQ("38/3001 No such a Element", check());
}

TEST_F(URLDBCheck, ListsThatAllShareTheirPositionsTakeLinearTime) {
  // 200,000 IDs with one list of 200,000 values: 40,000,000,000 steps for a
  // walk of each.
  constexpr int kIds = 200000;
  std::string section = words({kIds + 1, kIds + 1, 0, kIds, 0});
  for (int i = 0; i < kIds; ++i) section += word(1);
  section += word(-1);
  for (int i = 1; i < kIds; ++i) section += word(0x18001);
  section += word(0x10001);
  open(section);
  EXPECT_EQ("25/3004 Invalid Data: in checkData(free)", check());
}

TEST_F(URLDBCheck, FaultyDatabaseIsNotWritten) {
  open(words({2, 4, 1, 0, 0, 1, -1, 0x10001, -1, -1, 2}));
  ASSERT_NE(0, db_.add("new", pairOf(1, 1)));
  const std::string path = folder_.path("out");
  EXPECT_EQ("25/3004 Invalid Data: in checkData(free)",
            thrownBy([&] { db_.writeFile(path.c_str()); }));
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(URLDBReport, PrintsEveryLine) {
  TinyDatabase tiny;
  EXPECT_EQ(
      "----------- URLDB Information -----------\n"
      "           Version = 2\n"
      " URL Database File = \n"
      "        bFinalized = 0\n"
      "         TimeStamp = \n"
      "       numIdxURLID = 50000\n"
      "             urlID = 4\n"
      "     numRepCateIDs = 50002\n"
      "   writeRepCateIDs = 10\n"
      "  maxCategoryChain = 3\n"
      "  freeList.getSize = 3\n"
      "-----------------------------------------\n",
      dump(tiny.db));
}

TEST(URLDBReport, OpenedForLookupsItHasNoFreeListLine) {
  const TemporaryFolder folder;
  std::string bytes = TinyDatabase::bytes();
  bytes.replace(kDatesAt, 20, std::string("2005/03/31 12:34:56\0", 20));
  const std::string file = folder.write("db", bytes);
  URLDB db;
  db.openFile(file.c_str(), nullptr, 0, true);
  EXPECT_EQ(
      "----------- URLDB Information -----------\n"
      "           Version = 2\n"
      " URL Database File = " +
          file +
          "\n"
          "        bFinalized = 1\n"
          "         TimeStamp = 2005/03/31 12:34:56\n"
          "       numIdxURLID = 5\n"
          "             urlID = 5\n"
          "     numRepCateIDs = 10\n"
          "   writeRepCateIDs = 10\n"
          "  maxCategoryChain = 3\n"
          "-----------------------------------------\n",
      dump(db));
}

TEST(URLDBReport, BoolFollowsTheStream) {
  const URLDB db;
  std::ostringstream os;
  os << std::boolalpha << db;
  EXPECT_NE(std::string::npos, os.str().find("bFinalized = false\n"));
}

}  // namespace
}  // namespace urldb
