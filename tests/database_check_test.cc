#include "urldb/database_check.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/memory_file.h"
#include "tests/tiny_database.h"
#include "urldb/database_view.h"

namespace urldb {
namespace {

using Faults = std::vector<std::string>;

// Where things stand in the tiny database.
constexpr std::size_t kNames = 88 + 8;  // where each name begins
constexpr std::size_t kHierarchy = kNames + 12 + 16;
constexpr std::size_t kBase = 200;
constexpr std::size_t kCheck = kBase + 4 * 71;
constexpr std::size_t kTail = kCheck + 4 * 71;
constexpr std::size_t kCounts = kTail + 20;
constexpr std::size_t kIndex = kCounts + 16;
constexpr std::size_t kRepository = kIndex + 4 * 5;
constexpr std::size_t kFree = kRepository + 4 * 10;

struct Patch {
  std::size_t at;
  int64_t value;
};

class DatabaseCheck : public testing::Test {
 protected:
  Faults check(const std::vector<Patch>& patches, bool forLookups = false,
               std::size_t limit = 100) {
    file_.set(TinyDatabase::bytes());
    for (const Patch& patch : patches) file_.patch(patch.at, word(patch.value));
    URLDB db;
    CategoryNames names;
    db.openFile(file_.path().c_str(), forLookups ? nullptr : &names, 100, true);
    return checkDatabase(db, limit);
  }

  MemoryFile file_;
};

TEST_F(DatabaseCheck, SoundDatabasesHaveNoFaults) {
  EXPECT_EQ(Faults(), check({}));
  EXPECT_EQ(Faults(), check({}, true));
  EXPECT_EQ(Faults(), checkDatabase(TinyDatabase().db, 100));
  CategoryNames names;
  URLDB db;
  db.openFile("x", &names, 10, false);
  EXPECT_EQ(Faults(), checkDatabase(db, 100));
}

TEST_F(DatabaseCheck, ChangesNothing) {
  TinyDatabase tiny;
  const std::vector<int32_t> before = freePositionsOf(tiny.db);
  checkDatabase(tiny.db, 100);
  EXPECT_EQ(before, freePositionsOf(tiny.db));
}

TEST_F(DatabaseCheck, ObjectThatIsNotOpenIsAFault) {
  EXPECT_EQ(Faults{"no database is open"}, checkDatabase(URLDB(), 100));
}

TEST_F(DatabaseCheck, SaysWhatIsWrongAndWhere) {
  const struct {
    std::vector<Patch> patches;
    Faults faults;
  } cases[] = {
      // Names and hierarchy.
      {{{kHierarchy + 8, 0x40002}},
       {"level 1 of the hierarchy has the ID 4, which has no name",
        "level 1 of the hierarchy has the ID 2 behind the ID 4"}},
      {{{kHierarchy + 8, 2}},
       {"level 1 of the hierarchy has the ID 0, which has no name"}},
      {{{kHierarchy + 8, 0x80010002}},
       {"level 1 of the hierarchy has the ID 32769, which has no name",
        "level 1 of the hierarchy has the ID 2 behind the ID 32769"}},
      {{{kHierarchy + 8, 0x20002}},
       {"level 1 of the hierarchy has the ID 2 behind the ID 2"}},
      {{{kHierarchy + 16 + 12, 9}},
       {"the hierarchy has the ID 9 below the ID 2, but it has no name"}},
      {{{kHierarchy - 16, 0x00657773}}, {"category 1 has no name"}},
      {{{kHierarchy - 16, 0x6E1F7773}},
       {"the name of category 1 holds a control byte"}},
      {{{kHierarchy - 16, 0x6E65777F}},
       {"the name of category 1 holds a control byte"}},
      {{{kNames + 4, 0}}, {"category 2 has the same name as category 1"}},
      {{{kNames + 4, 0}, {kNames + 8, 0}},
       {"category 2 has the same name as category 1",
        "category 3 has the same name as category 1"}},
      {{{kNames, 4}, {kNames + 4, 4}},  // no name twice is not the same name
       {"category 1 has no name", "category 2 has no name"}},
      // Identifiers: the records lie in TAIL as 7F 00 and the ID, from byte 1
      // on.
      {{{kTail + 1 + 2, 7}},
       {"the key of cell 67 has the URL ID 7, which was never given",
        "URL ID 3 has a list but no key"}},
      {{{kTail + 1 + 2, -2}},
       {"the key of cell 67 has the URL ID -2, which was never given",
        "URL ID 3 has a list but no key"}},
      {{{kTail + 1 + 2, 1}},
       {"the key of cell 69 has the URL ID 1, as another key has",
        "URL ID 3 has a list but no key"}},
      {{{kTail + 1 + 2, 4}},
       {"URL ID 4, of the key of cell 67, has no list",
        "URL ID 3 has a list but no key"}},
      {{{kIndex + 4 * 4, 2}, {kRepository + 4 * 2, 0x10001}},
       {"URL ID 4 has a list but no key",
        "position 2 waits for reuse, but is in the list of URL ID 4"}},
      {{{kIndex, 2}}, {"URL ID 0 has a list but no key"}},
      // Lists.
      {{{kIndex + 4 * 3, 10}},
       {"the list of URL ID 3 reaches position 10, outside the repository",
        "position 1 is in no list, but holds a value"}},
      {{{kIndex + 4 * 3, -1}},
       {"the list of URL ID 3 reaches position -1, outside the repository",
        "position 1 is in no list, but holds a value"}},
      {{{kIndex + 4 * 3, 3}},
       {"the list of URL ID 3 reaches the free position 3",
        "position 1 is in no list, but holds a value"}},
      {{{kIndex + 4 * 3, 6}},
       {"position 6 is in the lists of the URL IDs 2 and 3",
        "position 1 is in no list, but holds a value"}},
      {{{kRepository + 4 * 1, 0x18001}},
       {"the list of URL ID 3 reaches the free position 2"}},
      {{{kRepository + 4 * 6, 0x18001}},
       {"position 7 is in the lists of the URL IDs 1 and 2"}},
      {{{kRepository + 4 * 9, 0x38003}},
       {"the list of URL ID 1 reaches position 10, outside the repository"}},
      {{{kRepository + 4 * 7, 0x48001}},
       {"position 7, in the list of URL ID 1, has the category 4, which has no "
        "name"}},
      {{{kRepository + 4 * 9, 0x30000}},
       {"position 9, in the list of URL ID 1, has the category 0, which has no "
        "name"}},
      {{{kCounts + 12, 2}},
       {"the longest list has 3 values, but only 2 are recorded"}},
      {{{kCounts + 12, 4}}, {}},
      // Free positions.
      {{{kFree, 2}},
       {"position 2 waits for reuse twice",
        "position 4 is in no list and does not wait for reuse"}},
      {{{kFree, 5}},
       {"position 5 waits for reuse, but is in the list of URL ID 2",
        "position 4 is in no list and does not wait for reuse"}},
      {{{kRepository + 4 * 4, 0x10001}},
       {"position 4 is in no list, but holds a value"}},
      {{{kRepository, 0}}, {"position 0 is in no list, but holds a value"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.faults.empty() ? "no fault" : c.faults.front());
    EXPECT_EQ(c.faults, check(c.patches));
  }
}

TEST_F(DatabaseCheck, ForLookupsPositionsInNoListMustBeClear) {
  EXPECT_EQ(Faults(), check({{kFree, 5}}, true));
  EXPECT_EQ(Faults{"position 4 is in no list, but holds a value"},
            check({{kRepository + 4 * 4, 0x10001}}, true));
  EXPECT_EQ(Faults{"position 6 is in no list, but holds a value"},
            check({{kRepository + 4 * 5, 0x20003}}, true));
}

TEST_F(DatabaseCheck, FaultsOfTheTrieComeFirst) {
  const Faults faults = check({{kCheck + 4 * 69, 65}, {kCounts + 12, 0}});
  ASSERT_LE(2U, faults.size());
  EXPECT_NE(std::string::npos, faults.front().find("cell 69"));
  EXPECT_EQ("the longest list has 3 values, but only 0 are recorded",
            faults.back());
}

TEST_F(DatabaseCheck, KeyWithoutAnIdentifierIsAFaultOfTheTrie) {
  const Faults faults = check({{kTail + 1 + 2, 0}});
  ASSERT_EQ(2U, faults.size());
  EXPECT_NE(std::string::npos, faults[0].find("cell 67"));
  EXPECT_EQ("URL ID 3 has a list but no key", faults[1]);
}

TEST_F(DatabaseCheck, TellsNoMoreFaultsThanAsked) {
  const std::vector<Patch> patches = {{kHierarchy + 8, 0x80010002},
                                      {kCheck + 4 * 69, 65},
                                      {kRepository + 4 * 4, 0x10001}};
  const std::size_t all = check(patches).size();
  EXPECT_LE(4U, all);
  for (std::size_t limit = 0; limit <= all; ++limit)
    EXPECT_EQ(limit, check(patches, false, limit).size());
}

TEST_F(DatabaseCheck, ListsThatAllShareTheirPositionsTakeLinearTime) {
  constexpr int kIds = 200000;
  std::string file = TinyDatabase::bytes();
  file.resize(kCounts);
  file += words({kIds + 1, kIds + 1, 0, kIds, 0});
  for (int i = 0; i < kIds; ++i) file += word(1);
  file += word(-1);
  for (int i = 1; i < kIds; ++i) file += word(0x18001);
  file += word(0x10001);
  file_.set(file);
  URLDB db;
  db.openFile(file_.path().c_str(), nullptr, 0, true);
  EXPECT_EQ(10U, checkDatabase(db, 10).size());
  EXPECT_EQ(std::size_t{kIds - 3 + kIds - 1},
            checkDatabase(db, std::size_t{kIds} * 10).size());
}

}  // namespace
}  // namespace urldb
