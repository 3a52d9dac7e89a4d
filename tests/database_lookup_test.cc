#include "urldb/database_lookup.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "tests/thrown_by.h"
#include "tests/tiny_database.h"
#include "urldb/database_view.h"

namespace urldb {
namespace {

// A database with one key for each way in which a key can answer for another.
class DatabaseLookup : public testing::Test {
 protected:
  DatabaseLookup() {
    for (const char* name : {"bare", "folder", "page"})
      names_.addCateogry(name);
    db_.openFile("x", &names_, 10, false);
    db_.add("H", pairOf(1, 1));
    db_.add("H/DIR", pairOf(2, 2));
    db_.add("H/DIR/PAGE?Q=1", pairOf(3, 3));
  }
  Values lookup(const char* key, MatchMode mode, KeyMatch* match = nullptr) {
    return valuesOf(lookupKey(db_, key, mode, match));
  }

  CategoryNames names_;
  URLDB db_;
};

TEST(DatabaseLookupMode, WordsNameModes) {
  EXPECT_EQ(MatchMode::kExact, matchModeOf(1));
  EXPECT_EQ(MatchMode::kAnyByte, matchModeOf(4));
  for (const int word : {2, 3, 0, 5, -1, INT_MAX, INT_MIN, 0x101})
    EXPECT_EQ(MatchMode::kEdge, matchModeOf(word)) << word;
}

TEST_F(DatabaseLookup, AnswersByMode) {
  const Values bare = {pairOf(1, 1)};
  const Values folder = {pairOf(2, 2)};
  const Values page = {pairOf(3, 3)};
  const struct {
    const char* key;
    Values exact, edge, anyByte;
  } cases[] = {
      {"h", bare, bare, bare},
      {"h/", {}, bare, bare},
      {"hx", {}, {}, bare},
      {"h/dir", folder, folder, folder},
      {"h/dir/", {}, folder, folder},
      {"h/dir?q", {}, folder, folder},
      {"h/dirty", {}, bare, folder},
      {"h/dir/page?q=1", page, page, page},
      {"h/dir/page?q=1&r", {}, page, page},
      {"h/dir/page?q=12", {}, folder, page},
      {"g", {}, {}, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.key);
    EXPECT_EQ(c.exact, lookup(c.key, MatchMode::kExact));
    EXPECT_EQ(c.edge, lookup(c.key, MatchMode::kEdge));
    EXPECT_EQ(c.anyByte, lookup(c.key, MatchMode::kAnyByte));
  }
}

TEST_F(DatabaseLookup, TellsWhichKeyAnswered) {
  KeyMatch match{99, 99};
  lookup("h/dir/other", MatchMode::kEdge, &match);
  EXPECT_EQ(2, match.id);
  EXPECT_EQ(5U, match.length);
  EXPECT_EQ(
      "H/DIR",
      normalisedKey(*viewOf(db_).trie, "h/dir/other").substr(0, match.length));
  EXPECT_EQ(nullptr, lookupKey(db_, "none", MatchMode::kEdge, &match));
  EXPECT_EQ(0, match.id);
  EXPECT_EQ(0U, match.length);
}

TEST_F(DatabaseLookup, AgreesWithTheFixedInterface) {
  for (const char* key : {"h", "hx", "h/dirty", "h/dir/page?q=1", "g"}) {
    EXPECT_EQ(valuesOf(db_.search(key)), lookup(key, MatchMode::kExact));
    EXPECT_EQ(valuesOf(db_.searchMaxPrefix(key)),
              lookup(key, MatchMode::kAnyByte));
  }
}

TEST_F(DatabaseLookup, EmptyKeysAreRefused) {
  for (const char* key : {static_cast<const char*>(nullptr), ""}) {
    EXPECT_EQ("22/3004 Invalid Argument: lookupKey()",
              thrownBy([&] { lookupKey(db_, key, MatchMode::kEdge); }));
  }
}

TEST_F(DatabaseLookup, KeysWithTheTerminalByteAreRefused) {
  for (const auto mode :
       {MatchMode::kExact, MatchMode::kEdge, MatchMode::kAnyByte}) {
    EXPECT_EQ("22/61 Invalid Argument: h\x7F",
              thrownBy([&] { lookupKey(db_, "h\x7F", mode); }));
  }
}

TEST(DatabaseLookupMode, DatabaseThatIsNotOpenKnowsNothing) {
  KeyMatch match{1, 1};
  EXPECT_EQ(nullptr, lookupKey(URLDB(), "h", MatchMode::kEdge, &match));
  EXPECT_EQ(0, match.id);
}

}  // namespace
}  // namespace urldb
