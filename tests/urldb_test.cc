#include "urldb/urldb.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <ctime>
#include <filesystem>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/temporary_folder.h"
#include "tests/thrown_by.h"
#include "tests/tiny_database.h"
#include "urldb/database_freshness.h"
#include "urldb/database_view.h"

namespace urldb {
namespace {

// The local date `days` from now. A test that needs today asks before and
// after.
FreshDate dateIn(int days) {
  return localDate(std::time(nullptr) + days * std::time_t{86400});
}

// A database file that the tests open.
class URLDBLife : public testing::Test {
 protected:
  URLDBLife() : file_(folder_.path("db")) {}
  const char* file() const { return file_.c_str(); }
  void writeTiny() { TinyDatabase().db.writeFile(file()); }

  TemporaryFolder folder_;
  std::string file_;
};

TEST(URLDB, NewObjectIsEmpty) {
  const FreshDate before = dateIn(31);
  const URLDB db;
  const DatabaseView view = viewOf(db);
  const FreshDate date = unpackDate(view.freshDate);
  EXPECT_LE(before, date);
  EXPECT_LE(date, dateIn(31));
  EXPECT_STREQ("", view.fileName);
  EXPECT_EQ(2, view.version);
  EXPECT_STREQ("", view.timeStamp);
  EXPECT_EQ(1, view.urlID);
  EXPECT_EQ(0, view.numIdxURLID);
  EXPECT_EQ(0, view.numRepCateIDs);
  EXPECT_EQ(1, view.writeRepCateIDs);
  EXPECT_EQ(0, view.maxCategoryChain);
  EXPECT_FALSE(view.finalized);
  EXPECT_EQ(0, view.freePositions);
  EXPECT_EQ(nullptr, view.names);
  EXPECT_EQ(nullptr, view.trie);
  EXPECT_TRUE(freePositionsOf(db).empty());
}

TEST(URLDB, SearchWithoutTrieIsNullWithoutALookAtItsArgument) {
  const URLDB db;
  EXPECT_EQ(nullptr, db.search(nullptr));
  EXPECT_EQ(nullptr, db.search(""));
  EXPECT_EQ(nullptr, db.search("key"));
  EXPECT_EQ(nullptr, db.searchMaxPrefix(nullptr));
  EXPECT_EQ(nullptr, db.searchMaxPrefix("key"));
}

TEST(URLDB, ObjectThatIsNotOpenRefusesChanges) {
  URLDB db;
  EXPECT_EQ("31/3004 Invalid Status: no database is open",
            thrownBy([&] { db.add("key", pairOf(1, 1)); }));
  EXPECT_EQ(1, db.writeFile("/nonexistent/db"));
  db.addRepository(1, pairOf(1, 1));
  EXPECT_EQ("31/3004 Invalid Status: no database is open",
            thrownBy([&] { db.writeFile("/nonexistent/db"); }));
}

TEST(URLDB, AddGivesIdsInOrderAndZeroForAKnownValue) {
  CategoryNames names;
  names.addCateogry("a");
  names.addCateogry("b");
  URLDB db;
  EXPECT_EQ(0, db.openFile("x", &names, 100, false));
  EXPECT_EQ(1, db.add("one", pairOf(1, 1)));
  EXPECT_EQ(2, db.add("two", pairOf(1, 1)));
  EXPECT_EQ(0, db.add("one", pairOf(1, 1)));
  EXPECT_EQ(1, db.add("one", pairOf(1, 2)));
  EXPECT_EQ(0, db.add("one", pairOf(1, 2)));
  EXPECT_EQ(3, db.add("three", pairOf(2, 2)));
  EXPECT_EQ((Values{pairOf(1, 1), pairOf(1, 2)}), valuesOf(db.search("one")));
  EXPECT_EQ(4, viewOf(db).urlID);
}

TEST(URLDB, AddRefusesBadArgumentsInOrder) {
  CategoryNames names;
  names.addCateogry("only");
  URLDB db;
  db.openFile("x", &names, 10, false);
  const struct {
    const char* url;
    int value;
    const char* error;
  } cases[] = {
      {nullptr, pairOf(1, 1), "22/3004 Invalid Argument: add()"},
      {"", pairOf(1, 1), "22/3004 Invalid Argument: add()"},
      {"key", 0, "22/3004 Invalid Argument: add()"},
      {"key", pairOf(1, 0), "38/3001 No such a Element"},
      {"key", pairOf(0, 1), "38/3001 No such a Element"},
      {"key", pairOf(1, 2), "38/3001 No such a Element"},
      {"key", pairOf(2, 1), "38/3001 No such a Element"},
      {"key", pairOf(1, 1) | 0x8000, "38/3001 No such a Element"},
      {"key", INT_MIN | pairOf(1, 1), "38/3001 No such a Element"},
      {"a\x7F", pairOf(1, 1), "22/61 Invalid Argument: a\x7F"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.error);
    EXPECT_EQ(c.error, thrownBy([&] { db.add(c.url, c.value); }));
  }
  EXPECT_EQ(1, viewOf(db).urlID);
  EXPECT_EQ(nullptr, db.search("key"));
}

TEST(URLDB, SearchesRefuseEmptyKeys) {
  TinyDatabase tiny;
  for (const char* key : {static_cast<const char*>(nullptr), ""}) {
    EXPECT_EQ("22/3004 Invalid Argument: search()",
              thrownBy([&] { tiny.db.search(key); }));
    EXPECT_EQ("22/3004 Invalid Argument: searchMaxPrefix()",
              thrownBy([&] { tiny.db.searchMaxPrefix(key); }));
  }
}

TEST(URLDB, SearchesExactlyAndByTheLongestPrefix) {
  CategoryNames names;
  names.addCateogry("n");
  names.addCateogry("m");
  URLDB db;
  db.openFile("x", &names, 10, false);
  db.add("moc.elpmaxe/", pairOf(1, 1));
  db.add("moc.elpmaxe/dir/", pairOf(2, 2));
  EXPECT_EQ(Values{pairOf(1, 1)}, valuesOf(db.search("moc.elpmaxe/")));
  EXPECT_EQ(nullptr, db.search("moc.elpmaxe/x"));
  EXPECT_EQ(Values{pairOf(1, 1)},
            valuesOf(db.searchMaxPrefix("moc.elpmaxe/x")));
  EXPECT_EQ(Values{pairOf(2, 2)},
            valuesOf(db.searchMaxPrefix("moc.elpmaxe/dir/f")));
  EXPECT_EQ(nullptr, db.searchMaxPrefix("moc.elpmax"));
}

TEST(URLDB, KeysAreComparedInUpperCaseWithFullWidthFormsFolded) {
  TinyDatabase tiny;
  const Values expected = {pairOf(1, 1), pairOf(2, 2), pairOf(3, 3)};
  EXPECT_EQ(expected, valuesOf(tiny.db.search("AB")));
  EXPECT_EQ(expected, valuesOf(tiny.db.search("aB")));
  EXPECT_EQ(expected, valuesOf(tiny.db.search("\xA3\xE1\xA3\xC2")));
}

TEST(URLDB, AgreesWithAMapOverRandomKeys) {
  const unsigned seed = 271828;
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  CategoryNames names;
  for (int i = 1; i <= 20; ++i) names.addCateogry("name");
  URLDB db;
  db.openFile("x", &names, 100000, false);
  std::map<std::string, Values> model;
  for (int i = 0; i < 20000; ++i) {
    std::string key;
    for (std::size_t n = 1 + random() % 6; n > 0; --n)
      key += static_cast<char>('A' + random() % 4);
    const int value = pairOf(1 + static_cast<int>(random() % 20),
                             1 + static_cast<int>(random() % 2));
    Values& values = model[key];
    const bool isNew =
        std::find(values.begin(), values.end(), value) == values.end();
    ASSERT_EQ(isNew, db.add(key.c_str(), value) != 0) << key;
    if (isNew) values.push_back(value);
  }
  for (const auto& [key, values] : model)
    ASSERT_EQ(values, valuesOf(db.search(key.c_str()))) << key;
  db.checkData();
}

TEST_F(URLDBLife, OpenForBuildingTakesNamesAndQueue) {
  writeTiny();
  CategoryNames names;
  URLDB db;
  EXPECT_EQ(2, db.openFile(file(), &names, 10, true));
  EXPECT_STREQ("ball", names.getNames(3));
  EXPECT_EQ(&names, viewOf(db).names);
  EXPECT_FALSE(viewOf(db).finalized);
  EXPECT_EQ((std::vector<int32_t>{4, 3, 2}), freePositionsOf(db));
  EXPECT_EQ((std::vector<int32_t>{4, 3, 2}), freePositionsOf(db));
}

TEST_F(URLDBLife, OpenForLookupsIsReadOnly) {
  writeTiny();
  URLDB db;
  EXPECT_EQ(2, db.openFile(file(), nullptr, 0, true));
  EXPECT_TRUE(viewOf(db).finalized);
  EXPECT_STREQ("sport", viewOf(db).names->getNames(2));
  EXPECT_EQ(Values{pairOf(1, 1)}, valuesOf(db.search("b")));
  EXPECT_EQ("31/3004 Invalid Status: URLDB has finalized",
            thrownBy([&] { db.add(nullptr, 0); }));
  EXPECT_EQ(1, db.writeFile(folder_.path("other").c_str()));
  EXPECT_EQ("31/3004 Invalid Status: URLDB has finalized",
            thrownBy([&] { db.add("b", pairOf(1, 1)); }));
  EXPECT_FALSE(std::filesystem::exists(folder_.path("other")));
}

TEST_F(URLDBLife, FileThatCannotBeOpenedIsMinusOneAndAnEmptyDatabase) {
  const std::string missing = folder_.path("missing");
  CategoryNames names;
  names.addCateogry("kept");
  URLDB db;
  EXPECT_EQ(-1, db.openFile(missing.c_str(), &names, 10, true));
  EXPECT_STREQ("kept", names.getNames(1));
  EXPECT_EQ(missing, viewOf(db).fileName);
  EXPECT_EQ(nullptr, db.search("ab"));
  EXPECT_EQ(1, db.add("key", pairOf(1, 1)));
  EXPECT_EQ(0, db.writeFile(nullptr));
  EXPECT_EQ(2, URLDB().openFile(missing.c_str(), nullptr, 0, true));

  URLDB lookup;
  EXPECT_EQ(-1, lookup.openFile(folder_.path("no").c_str(), nullptr, 0, true));
  EXPECT_TRUE(viewOf(lookup).finalized);
  EXPECT_EQ(nullptr, lookup.search("ab"));
  EXPECT_EQ(-1, lookup.openFile(nullptr, nullptr, 0, true));
}

TEST_F(URLDBLife, QueueSizeBelowOneIsRefused) {
  CategoryNames names;
  URLDB db;
  EXPECT_EQ("22/6 Invalid Argument: 0",
            thrownBy([&] { db.openFile(file(), &names, 0, false); }));
  EXPECT_EQ(nullptr, viewOf(db).trie);
}

TEST_F(URLDBLife, OpeningAgainBeginsLikeAFreshObject) {
  writeTiny();
  TinyDatabase tiny;
  CategoryNames names;
  EXPECT_EQ(0, tiny.db.openFile("other", &names, 5, false));
  DatabaseView view = viewOf(tiny.db);
  EXPECT_EQ(1, view.urlID);
  EXPECT_EQ(0, view.numIdxURLID);
  EXPECT_EQ(1, view.writeRepCateIDs);
  EXPECT_EQ(0, view.maxCategoryChain);
  EXPECT_EQ(0, view.freePositions);
  EXPECT_EQ(1, tiny.db.writeFile(nullptr));  // nothing has changed since
  EXPECT_STREQ("news", tiny.names.getNames(1));

  tiny.db.openFile(file(), nullptr, 0, true);
  EXPECT_TRUE(viewOf(tiny.db).finalized);
  EXPECT_EQ(0, viewOf(tiny.db).freePositions);
  tiny.db.openFile(file(), &names, 5, true);
  EXPECT_FALSE(viewOf(tiny.db).finalized);
  EXPECT_EQ(3, viewOf(tiny.db).freePositions);
  EXPECT_NE(0, tiny.db.add("new", pairOf(1, 1)));
}

TEST_F(URLDBLife, OpeningThatFailsKeepsWhatWasHeld) {
  writeTiny();
  const std::string bytes = folder_.read("db");
  const std::string bad =
      folder_.write("bad", bytes.substr(0, bytes.size() - 1));
  TinyDatabase tiny;
  const std::string error = "4/3004 Can't Read File in reading \"" + bad + "\"";
  EXPECT_EQ(error, thrownBy([&] {
              tiny.db.openFile(bad.c_str(), &tiny.names, 9, true);
            }));
  EXPECT_STREQ("news", tiny.names.getNames(1));
  EXPECT_EQ(3U, valuesOf(tiny.db.search("ab")).size());
  EXPECT_EQ((std::vector<int32_t>{2, 3, 4}), freePositionsOf(tiny.db));
  EXPECT_EQ(0, tiny.db.writeFile(file()));
  EXPECT_EQ(withoutDates(bytes), withoutDates(folder_.read("db")));

  const std::string shorter = folder_.write("shorter", bytes.substr(0, 700));
  URLDB lookup;
  lookup.openFile(file(), nullptr, 0, true);
  EXPECT_NE("", thrownBy([&] {
              lookup.openFile(shorter.c_str(), nullptr, 0, true);
            }));
  EXPECT_EQ(Values{pairOf(1, 1)}, valuesOf(lookup.search("b")));
}

TEST_F(URLDBLife, CloseGivesAnEmptyObjectAndLeavesTheNames) {
  TinyDatabase tiny;
  tiny.db.close();
  EXPECT_EQ(nullptr, tiny.db.search("ab"));
  EXPECT_EQ(1, viewOf(tiny.db).urlID);
  EXPECT_EQ(1, tiny.db.writeFile(file()));
  EXPECT_STREQ("news", tiny.names.getNames(1));
  tiny.db.close();

  writeTiny();
  URLDB lookup;
  lookup.openFile(file(), nullptr, 0, true);
  lookup.close();
  EXPECT_FALSE(viewOf(lookup).finalized);
  EXPECT_EQ(nullptr, viewOf(lookup).names);
}

TEST_F(URLDBLife, SaveAndLoadSkipsOneId) {
  TinyDatabase tiny;
  EXPECT_EQ(4, viewOf(tiny.db).urlID);
  tiny.db.writeFile(file());
  CategoryNames names;
  URLDB db;
  db.openFile(file(), &names, 10, true);
  EXPECT_EQ(5, viewOf(db).urlID);
  EXPECT_EQ(5, db.add("new", pairOf(1, 1)));
}

TEST_F(URLDBLife, CanBeSavedExtendedAndSavedManyTimes) {
  writeTiny();
  std::map<std::string, Values> model;
  for (int round = 0; round < 10; ++round) {
    CategoryNames names;
    URLDB db;
    ASSERT_EQ(2, db.openFile(file(), &names, 100, true)) << round;
    const std::string key = "key" + std::to_string(round);
    ASSERT_EQ(5 + 2 * round, db.add(key.c_str(), pairOf(1, 1)));
    ASSERT_NE(0, db.add(key.c_str(), pairOf(2, 3)));
    model[key] = {pairOf(1, 1), pairOf(2, 3)};
    if (round > 0) {
      const std::string former = "key" + std::to_string(round - 1);
      ASSERT_NE(0, db.add(former.c_str(), pairOf(3, 3)));
      model[former].push_back(pairOf(3, 3));
    }
    ASSERT_EQ(0, db.writeFile(nullptr));
  }
  URLDB db;
  db.openFile(file(), nullptr, 0, true);
  for (const auto& [key, values] : model)
    EXPECT_EQ(values, valuesOf(db.search(key.c_str()))) << key;
  EXPECT_EQ(3U, valuesOf(db.search("ab")).size());
}

TEST_F(URLDBLife, NothingChangedIsNotWritten) {
  CategoryNames names;
  URLDB db;
  db.openFile(file(), &names, 10, false);
  EXPECT_EQ(1, db.writeFile(nullptr));
  EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(URLDBLife, EveryWriteAfterAChangeWritesAgain) {
  TinyDatabase tiny;
  EXPECT_EQ(0, tiny.db.writeFile(file()));
  EXPECT_EQ(0, tiny.db.writeFile(file()));
}

TEST_F(URLDBLife, WriteToNowhereIsCode2) {
  TinyDatabase tiny;
  const std::string path = folder_.path("no/such/folder");
  EXPECT_EQ("2/3004 Can't Create File: " + path,
            thrownBy([&] { tiny.db.writeFile(path.c_str()); }));
  EXPECT_EQ("2/3004 Can't Create File: ",
            thrownBy([&] { tiny.db.writeFile(nullptr); }));
}

TEST_F(URLDBLife, TimeStampIsTheLocalTimeOfWriting) {
  const std::time_t before = std::time(nullptr);
  TinyDatabase tiny;
  tiny.db.writeFile(file());
  const std::time_t after = std::time(nullptr);
  URLDB db;
  db.openFile(file(), nullptr, 0, true);
  std::tm local{};
  ASSERT_NE(nullptr,
            strptime(viewOf(db).timeStamp, "%Y/%m/%d %H:%M:%S", &local));
  local.tm_isdst = -1;
  const std::time_t stamped = std::mktime(&local);
  EXPECT_LE(before, stamped);
  EXPECT_LE(stamped, after);
  EXPECT_STREQ(viewOf(tiny.db).timeStamp, viewOf(db).timeStamp);
}

TEST(URLDBFreshness, DatesPackAsTheyLieInTheFile) {
  EXPECT_EQ((3U << 17) | (2005U << 5) | 31U, packDate({2005, 3, 31}));
  EXPECT_EQ((12U << 17) | (4095U << 5) | 1U, packDate({4095, 12, 1}));
  const FreshDate date = unpackDate(packDate({1999, 11, 30}));
  EXPECT_EQ(1999, date.year);
  EXPECT_EQ(11, date.month);
  EXPECT_EQ(30, date.day);
  EXPECT_EQ(0, unpackDate(0).year);
  EXPECT_EQ(4095, unpackDate(UINT32_MAX).year);
}

TEST(URLDBFreshness, DatesCompareYearThenMonthThenDay) {
  EXPECT_LT((FreshDate{2023, 12, 31}), (FreshDate{2024, 1, 1}));
  EXPECT_LT((FreshDate{2024, 1, 31}), (FreshDate{2024, 2, 1}));
  EXPECT_LT((FreshDate{2024, 2, 1}), (FreshDate{2024, 2, 2}));
  EXPECT_EQ((FreshDate{2024, 2, 2}), (FreshDate{2024, 2, 2}));
}

TEST(URLDBFreshness, TodayIsFreshYesterdayIsNot) {
  URLDB db;
  EXPECT_TRUE(db.isFreshed());
  setFreshDays(db, 1);
  EXPECT_TRUE(db.isFreshed());
  setFreshDays(db, -1);
  EXPECT_FALSE(db.isFreshed());
  // Midnight may fall between the two calls.
  const FreshDate today = dateIn(0);
  setFreshDays(db, 0);
  const bool fresh = db.isFreshed();
  if (today == dateIn(0)) {
    EXPECT_TRUE(fresh);
  }
}

TEST(URLDBFreshness, DatesBeyondTheWordAreRefused) {
  URLDB db;
  const uint32_t before = viewOf(db).freshDate;
  for (const int days : {INT_MAX, INT_MIN, 365 * 2200, -365 * 2100}) {
    EXPECT_EQ("22/3004 Invalid Argument: setFreshDays()",
              thrownBy([&] { setFreshDays(db, days); }))
        << days;
  }
  EXPECT_EQ(before, viewOf(db).freshDate);
}

TEST_F(URLDBLife, FreshnessTravelsWithTheFileAndIsAChange) {
  writeTiny();
  CategoryNames names;
  URLDB db;
  db.openFile(file(), &names, 10, true);
  EXPECT_EQ(1, db.writeFile(nullptr));
  const FreshDate before = dateIn(-5);
  setFreshDays(db, -5);
  const FreshDate after = dateIn(-5);
  EXPECT_EQ(0, db.writeFile(nullptr));
  URLDB lookup;
  lookup.openFile(file(), nullptr, 0, true);
  const FreshDate stored = unpackDate(viewOf(lookup).freshDate);
  EXPECT_LE(before, stored);
  EXPECT_LE(stored, after);
  EXPECT_FALSE(lookup.isFreshed());
}

TEST_F(URLDBLife, WithoutADateItIsAlwaysFresh) {
  writeTiny();
  std::string bytes = folder_.read("db");
  bytes.replace(84, 4, word(0));
  URLDB db;
  db.openFile(folder_.write("undated", bytes).c_str(), nullptr, 0, true);
  EXPECT_TRUE(db.isFreshed());
}

TEST(PackedDate, LastDayOfAMonthIsFreshTheNextDayIsNot) {
  const FreshDate last = unpackDate(packDate({2026, 1, 31}));
  EXPECT_TRUE(isFreshOn({2026, 1, 30}, last));
  EXPECT_TRUE(isFreshOn({2026, 1, 31}, last));
  EXPECT_FALSE(isFreshOn({2026, 2, 1}, last));
  EXPECT_FALSE(isFreshOn({2027, 1, 1}, last));
  EXPECT_TRUE(isFreshOn({2027, 1, 1}, unpackDate(0))) << "no date";
}

TEST_F(URLDBLife, FreshOnTheLastDayStaleOnTheNext) {
  writeTiny();
  std::string bytes = folder_.read("db");
  const FreshDate today = dateIn(0);
  // The last day itself, the 31st of a month that has passed, one to come.
  const struct {
    FreshDate date;
    bool fresh;
  } cases[] = {
      {today, true},
      {{today.year - 1, 12, 31}, false},
      {{today.year - 1, 1, 31}, false},
      {{today.year + 1, 1, 1}, true},
      {{2005, 3, 31}, false},
  };
  for (const auto& c : cases) {
    bytes.replace(84, 4, word(packDate(c.date)));
    URLDB db;
    db.openFile(folder_.write("dated", bytes).c_str(), nullptr, 0, true);
    const bool fresh = db.isFreshed();
    if (today == dateIn(0)) {
      EXPECT_EQ(c.fresh, fresh) << c.date.year;
    }
  }
}

TEST_F(URLDBLife, ReadCategoryNamesReadsHeaderAndNamesOnly) {
  writeTiny();
  CategoryNames names;
  URLDB db;
  EXPECT_EQ(2, db.readCategoryNames(file(), &names));
  EXPECT_STREQ("ball", names.getNames(3));
  EXPECT_NE(std::string(), viewOf(db).timeStamp);
  EXPECT_EQ(nullptr, viewOf(db).trie);
  EXPECT_EQ(0, viewOf(db).numIdxURLID);
  // What follows the names does not matter.
  const std::string cut =
      folder_.write("cut", folder_.read("db").substr(0, 88 + 68));
  CategoryNames again;
  EXPECT_EQ(2, URLDB().readCategoryNames(cut.c_str(), &again));
  EXPECT_STREQ("news", again.getNames(1));
}

TEST_F(URLDBLife, ReadCategoryNamesRefusesNullArguments) {
  CategoryNames names;
  URLDB db;
  EXPECT_EQ("22/3004 Invalid Argument: no file name",
            thrownBy([&] { db.readCategoryNames(nullptr, nullptr); }));
  EXPECT_EQ("22/3004 Invalid Argument: CategoryNames = NULL",
            thrownBy([&] { db.readCategoryNames(file(), nullptr); }));
  EXPECT_EQ(-1, db.readCategoryNames(file(), &names));
}

TEST_F(URLDBLife, OpaqueHeaderFieldsAreCarriedAlong) {
  writeTiny();
  std::string bytes = folder_.read("db");
  EXPECT_EQ(std::string(14, '\0'), bytes.substr(18, 14));
  bytes.replace(18, 14, "0123456789abcd");
  folder_.write("db", bytes);
  CategoryNames names;
  URLDB db;
  db.openFile(file(), &names, 10, true);
  db.add("new", pairOf(1, 1));
  db.writeFile(nullptr);
  EXPECT_EQ("0123456789abcd", folder_.read("db").substr(18, 14));
}

}  // namespace
}  // namespace urldb
