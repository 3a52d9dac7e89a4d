#include "tools/database_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "tests/temporary_folder.h"
#include "tools/list_entry.h"
#include "tools/lookup_key.h"
#include "tools/name_codec.h"
#include "tools/program_error.h"
#include "urldb/database_check.h"
#include "urldb/database_lookup.h"
#include "urldb/database_view.h"

namespace urldb {
namespace {

using Names = std::vector<std::string>;
using NameSet = std::set<std::string>;

const char* const kNoBase = nullptr;

std::string numbered(const char* text, int64_t number) {
  return std::string(text).append(std::to_string(number));
}

// "level1/name" or "name".
Category categoryOf(const std::string& text) {
  return parseCategory(text).value();
}

// A builder, and the database that comes of it.
class TestDatabase {
 public:
  DatabaseBuilder builder;
  KeyTotals totals;

  void add(const std::string& entry, const std::vector<Category>& categories) {
    builder.add(parseListEntry(entry).keys, categories);
  }
  void add(const std::string& entry, const std::string& category) {
    add(entry, std::vector<Category>{categoryOf(category)});
  }
  void addKey(const std::string& key, const std::string& category) {
    builder.add(std::vector<std::string>{key},
                std::vector<Category>{categoryOf(category)});
  }

  void build(const char* base = kNoBase) {
    totals = builder.finish();
    builder.build(&db_, &names_, base, [](std::size_t) {});
    db_.checkData();
    EXPECT_EQ(Names{}, checkDatabase(db_, 10));
    EXPECT_EQ(builder.categories(), viewOf(db_).names->view().names.size());
  }

  // Writes it, as the base of another one.
  void save(const std::string& path) {
    ASSERT_EQ(0, db_.writeFile(path.c_str()));
  }

  // The categories that a lookup of the URL answers, in their order.
  Names find(const std::string& url) const {
    return textOf(
        urldb::lookupKey(db_, urldb::lookupKey(url).c_str(), MatchMode::kEdge));
  }

  // The categories of exactly this key.
  Names stored(const std::string& key) const {
    return textOf(db_.search(key.c_str()));
  }

  // All names, in the order of their IDs.
  Names names() const {
    const auto names = names_.view().names;
    return {names.begin(), names.end()};
  }

 private:
  Names textOf(int* values) const {
    const std::unique_ptr<int[]> list(values);
    Names names;
    if (list == nullptr) return names;
    const auto count = static_cast<std::size_t>(list[0]);
    for (const int value : std::span(list.get() + 1, count)) {
      const std::string level1 = names_.getNames(value >> 16);
      const std::string level2 = names_.getNames(value & 0xFFFF);
      names.push_back(level1 == level2 ? level1 : level1 + "/" + level2);
    }
    return names;
  }

  CategoryNames names_;
  URLDB db_;
};

TEST(DatabaseBuilder, DomainAnswersForAllItsHostsAndNoOthers) {
  TestDatabase db;
  db.add("example.com", "news");
  db.build();
  for (const char* url :
       {"example.com", "http://example.com:8080/a/b?c", "www.example.com/x",
        "a.b.EXAMPLE.com", "https://example.com/#f"}) {
    SCOPED_TRACE(url);
    EXPECT_EQ(Names{"news"}, db.find(url));
  }
  for (const char* url :
       {"notexample.com", "example.com.evil.org", "com", "example.co"}) {
    SCOPED_TRACE(url);
    EXPECT_EQ(Names{}, db.find(url));
  }
}

TEST(DatabaseBuilder, PlaceAnswersForWhatLiesBelowIt) {
  TestDatabase db;
  db.add("example.com/dir", "news");
  db.build();
  for (const char* url :
       {"example.com/dir", "www.example.com/dir/x", "example.com/DIR?q",
        "example.com/dir.html", "example.com/dir#f"}) {
    SCOPED_TRACE(url);
    EXPECT_EQ(Names{"news"}, db.find(url));
  }
  for (const char* url : {"example.com/", "example.com/dirty",
                          "a.example.com/dir", "example.com:81/dir"}) {
    SCOPED_TRACE(url);
    EXPECT_EQ(Names{}, db.find(url));
  }
}

TEST(DatabaseBuilder, KeyHasTheCategoriesOfWhatCoversIt) {
  TestDatabase db;
  db.add("example.com", "a");
  db.add(".com", "tld");
  db.add("example.com/dir/deep", "b");
  db.add("example.com/dir", "c");
  db.add("example.com/dirty", "d");
  db.build();
  EXPECT_EQ((Names{"a", "tld"}), db.find("example.com/"));
  EXPECT_EQ((Names{"c", "a", "tld"}), db.find("example.com/dir"));
  EXPECT_EQ((Names{"b", "c", "a", "tld"}), db.find("example.com/dir/deep/x"));
  EXPECT_EQ((Names{"d", "a", "tld"}), db.find("example.com/dirty"));
  EXPECT_EQ(Names{"tld"}, db.find("other.com"));
  // Six keys of example.com's own categories, six of the three places.
  EXPECT_EQ(12U, db.totals.keys);
  EXPECT_EQ(3U + 2 * (2 + 3 + 2), db.totals.inherited);
}

TEST(DatabaseBuilder, OwnCategoriesComeFirstInTheOrderOfTheirLists) {
  TestDatabase db;
  db.add("a.com", "x");
  db.add("sub.a.com", "y");
  db.add("sub.a.com", "x");
  db.add("sub.a.com", "w");
  db.add("a.com", "v");
  db.build();
  EXPECT_EQ((Names{"y", "x", "w", "v"}), db.find("sub.a.com"));
}

TEST(DatabaseBuilder, KeysAreComparedAsTheTrieStoresThem) {
  TestDatabase db;
  db.add("Example.com/Dir", "a");
  db.add("eXAMPLE.com/dIR", "a");
  db.addKey("\xA3\xC1/", "b");  // full-width A
  db.addKey("a/x", "c");
  db.build();
  EXPECT_EQ(1U, db.builder.keptEntries(0, 2));
  EXPECT_EQ((Names{"c", "b"}), db.stored("A/X"));
}

TEST(DatabaseBuilder, EntryThatSaysNothingNewIsADuplicate) {
  TestDatabase db;
  const auto kept = [&db](std::size_t entry) {
    return db.builder.keptEntries(entry, entry + 1) == 1;
  };
  const std::vector<Category> both = {categoryOf("a"), categoryOf("b")};
  db.add("x.com", "a");
  db.add("X.com", "a");   // the same
  db.add("x.com", "b");   // another category
  db.add("x.com/", "a");  // its second key, with www., is new
  db.add("x.com", both);  // both are known
  db.add("y.com", both);  // both are new
  db.add("y.com", std::vector<Category>{both[1], both[1]});
  db.add("z.com", std::vector<Category>{both[0], both[0]});  // new once
  db.add("sub.x.com", "a");  // covered is not the same as given
  db.build();
  const bool expected[] = {true, false, true, true, false,
                           true, false, true, true};
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(expected[i], kept(i));
  }
  EXPECT_EQ(6U, db.builder.keptEntries(0, std::size(expected)));
  EXPECT_EQ(0U, db.builder.keptEntries(3, 3));
}

TEST(DatabaseBuilder, NameHasOneIdWhereverItOccurs) {
  TestDatabase db;
  db.add("x.com", "ball");
  db.add("x.com", "sport/ball");
  db.add("x.com", "sport");
  db.add("x.com", "\xEF\xBC\xA1");  // full-width A
  db.add("x.com", "A");
  db.build();
  EXPECT_EQ(3U, db.builder.categories());
  EXPECT_EQ((Names{"ball", "sport/ball", "sport", "A"}), db.find("x.com"));
}

TEST(DatabaseBuilder, HierarchyPutsAPlainCategoryUnderItsLevel1) {
  Hierarchy hierarchy;
  hierarchy.add("sport", "ball");
  hierarchy.add("money", "bank");
  TestDatabase db;
  db.builder.setHierarchy(std::move(hierarchy));
  db.add("x.com", "ball");
  db.add("y.com", "dance/ball");  // what is written stands
  db.add("z.com", "sport");
  db.build();
  EXPECT_EQ(Names{"sport/ball"}, db.find("x.com"));
  EXPECT_EQ(Names{"dance/ball"}, db.find("y.com"));
  EXPECT_EQ(Names{"sport"}, db.find("z.com"));
  // Names that no entry uses have no ID.
  EXPECT_EQ(3U, db.builder.categories());
}

TEST(DatabaseBuilder, ValuesInUseAreRecordedInTheHierarchy) {
  TestDatabase db;
  db.add("x.com", "sport/ball");
  db.add("x.com", "sport/golf");
  db.add("x.com", "news");
  CategoryNames names;
  URLDB out;
  db.builder.finish();
  db.builder.build(&out, &names, kNoBase, [](std::size_t) {});
  const std::vector<CategoryBranch> branches = names.view().branches();
  ASSERT_EQ(2U, branches.size());
  EXPECT_EQ(1, branches[0].level1);
  EXPECT_EQ((std::vector<int>{2, 3}), branches[0].level2);
  EXPECT_EQ(4, branches[1].level1);
  EXPECT_EQ(std::vector<int>{4}, branches[1].level2);
}

TEST(DatabaseBuilder, NameTableTakesItsLastNameAndNoMore) {
  TestDatabase db;
  for (int i = 1; i <= 32767; ++i)
    db.add(numbered("x", i) + ".com", numbered("name", i));
  db.add("again.com", "name1");
  try {
    db.add("x.com", "one-too-many");
    FAIL();
  } catch (const ProgramError& error) {
    EXPECT_STREQ(
        "category one-too-many: a database has room for 32767 category names, "
        "and all are taken",
        error.what());
  }
  db.build();
  EXPECT_EQ(Names{"name32767"}, db.find("x32767.com"));
}

TEST(DatabaseBuilder, ManyCategoriesOfOneKeyDoNotOverflowTheQueue) {
  TestDatabase db;
  Names expected;
  for (int i = 0; i < 300; ++i) {
    expected.push_back(numbered("name", i));
    db.addKey("key", expected.back());
  }
  db.build();
  EXPECT_EQ(300U * 299 / 2, db.totals.freed);
  EXPECT_EQ(expected, db.stored("key"));
}

TEST(DatabaseBuilder, EmptyDatabaseIsSound) {
  TestDatabase db;
  db.build();
  EXPECT_EQ(0U, db.totals.keys);
  EXPECT_EQ(Names{}, db.find("example.com"));
}

TEST(DatabaseBuilder, LongKeysAreNoMatter) {
  TestDatabase db;
  const std::string path(1U << 20, 'x');
  db.add("example.com/" + path, "a");
  db.add("example.com/" + path + "/y", "b");
  db.build();
  EXPECT_EQ((Names{"b", "a"}), db.find("example.com/" + path + "/y/z"));
  EXPECT_EQ(Names{}, db.find("example.com/" + path + "x"));
}

class WithBase : public testing::Test {
 protected:
  std::string save(TestDatabase* db, const std::string& name) {
    db->build();
    std::string path = folder_.path(name);
    db->save(path);
    return path;
  }

  static void startFrom(TestDatabase* db, const std::string& path) {
    URLDB base;
    ASSERT_EQ(2, base.openFile(path.c_str(), nullptr, 0, true));
    db->builder.startFrom(base);
  }

  TemporaryFolder folder_;
};

TEST_F(WithBase, KeysAndNamesOfTheBaseTakePartInEverything) {
  TestDatabase old;
  old.add("example.com", "a");
  old.add("sub.other.org/dir", "b");
  const std::string base = save(&old, "old");

  TestDatabase db;
  startFrom(&db, base);
  db.add("example.com", "a");      // known
  db.add("sub.example.com", "c");  // covered by the base
  db.add("other.org", "a");        // covers the base
  db.add("example.com", "d");
  db.build(base.c_str());
  EXPECT_EQ(0U, db.builder.keptEntries(0, 1));
  EXPECT_EQ(3U, db.builder.keptEntries(1, 4));
  EXPECT_EQ((Names{"a", "d"}), db.find("example.com"));
  EXPECT_EQ((Names{"c", "a", "d"}), db.find("sub.example.com"));
  EXPECT_EQ((Names{"b", "a"}), db.find("sub.other.org/dir/x"));
  EXPECT_EQ(4U, db.builder.categories());
}

TEST_F(WithBase, AddingNothingChangesNothing) {
  TestDatabase old;
  old.add("example.com", "a");
  old.add("sub.example.com", "b");
  const std::string base = save(&old, "old");
  TestDatabase db;
  startFrom(&db, base);
  db.build(base.c_str());
  EXPECT_EQ(old.totals.keys, db.totals.keys);
  EXPECT_EQ(0U, db.totals.inherited);
  EXPECT_EQ(0U, db.totals.freed);
  EXPECT_EQ((Names{"b", "a"}), db.find("sub.example.com"));
}

TEST_F(WithBase, FreePositionsOfTheBaseFitTheQueue) {
  TestDatabase old;
  for (int i = 0; i < 100; ++i) old.addKey("key", numbered("name", i));
  const std::string base = save(&old, "old");
  TestDatabase db;
  startFrom(&db, base);
  for (int i = 0; i < 200; ++i) db.addKey("key", numbered("name", i));
  db.build(base.c_str());
  EXPECT_EQ(200U, db.stored("key").size());
}

TEST_F(WithBase, HierarchyMakesTheBaseAnew) {
  TestDatabase old;
  for (const char* name : {"ball", "news", "x/y", "golf"})
    old.addKey("key", name);
  old.addKey("key.more", "ball");
  const std::string base = save(&old, "old");

  TestDatabase db;
  Hierarchy hierarchy;
  hierarchy.add("sport", "ball");
  hierarchy.add("x", "golf");
  db.builder.setHierarchy(std::move(hierarchy));
  startFrom(&db, base);
  db.addKey("key", "x/golf");  // known, as the base is taken in
  db.addKey("key", "ball");    // likewise
  db.addKey("other", "ball");
  db.build(base.c_str());
  EXPECT_EQ((Names{"sport/ball", "news", "x/y", "x/golf"}), db.stored("key"));
  EXPECT_EQ(Names{"sport/ball"}, db.stored("other"));
  EXPECT_EQ(Names({"sport/ball", "news", "x/y", "x/golf"}),
            db.stored("key.more"));
  EXPECT_EQ(0U, db.builder.keptEntries(0, 2));
  EXPECT_EQ(1U, db.builder.keptEntries(2, 3));
  // The names of the base come first, under their IDs.
  EXPECT_EQ((Names{"ball", "news", "x", "y", "golf", "sport"}), db.names());
  // A base without a hierarchy is extended and keeps its values.
  TestDatabase plain;
  startFrom(&plain, base);
  plain.addKey("other", "ball");
  plain.build(base.c_str());
  EXPECT_EQ((Names{"ball", "news", "x/y", "golf"}), plain.stored("key"));
}

TEST(DatabaseBuilder, ListsThatWouldGrowWithoutMeasureAreRefused) {
  // An entry of three keys with n categories gives up 3 * n * (n - 1) / 2
  // positions: with 5774 of them 49999953, with one more 50017275.
  const auto addAll = [](TestDatabase* db, int count) {
    std::vector<Category> categories;
    for (int i = 0; i < count; ++i)
      categories.push_back({"", numbered("c", i)});
    db->add("small.com", "c1");
    db->add("large.com", categories);
  };
  TestDatabase most;
  addAll(&most, 5774);
  EXPECT_EQ(49999953U, most.builder.finish().freed);
  TestDatabase more;
  addAll(&more, 5775);
  try {
    more.builder.finish();
    FAIL();
  } catch (const ProgramError& error) {
    EXPECT_STREQ(
        "the keys have too many categories each for one database; most of all "
        "has MOC.EGRAL., 5775",
        error.what());
  }
}

// The whole against a model that goes through every list by itself and knows
// nothing of keys. One seed gives lists and URLs over so few hosts and paths
// that most of them meet.
class ListModel {
 public:
  struct Place {
    std::string host;
    int port = 0;      // 0: none
    std::string path;  // with its '/'; empty for a whole domain
  };

  explicit ListModel(unsigned seed) : random_(seed) {}

  Place randomPlace() {
    Place place;
    place.host = randomHost();
    if (oneIn(5)) place.port = pick({80, 443, 8080, 81});
    place.path = std::string("/").append(randomPath());
    return place;
  }

  // An entry, also in one of the ways in which people write it.
  std::string randomEntry(Place* place) {
    *place = randomPlace();
    if (oneIn(2)) {
      place->port = 0;
      place->path.clear();
      const std::string& name = place->host;
      if (name.find('.') == std::string::npos && !isLocalhost(name))
        return pick({"." + name, "*." + name, "||" + name + "^"});
      return withRandomCase(
          pick({name, name, "." + name, "||" + name + "^", name + "."}));
    }
    return withRandomCase(
        (oneIn(3) || place->host.find('.') == std::string::npos ? "http://"
                                                                : "") +
        textOf(*place));
  }

  static std::string textOf(const Place& place) {
    return place.host + (place.port == 0 ? "" : numbered(":", place.port)) +
           place.path;
  }

  static bool covers(const Place& entry, const Place& asked) {
    if (entry.path.empty()) {
      if (asked.host == entry.host) return true;
      const std::string tail = "." + entry.host;
      return !isAlone(entry.host) && asked.host.size() > tail.size() &&
             asked.host.substr(asked.host.size() - tail.size()) == tail;
    }
    const bool sameHost =
        asked.host == entry.host ||
        (!isAlone(entry.host) && entry.host.substr(0, 4) != "www." &&
         asked.host == "www." + entry.host);
    if (!sameHost || portOf(asked) != portOf(entry)) return false;
    const std::string& prefix = entry.path;
    const std::string& path = asked.path;
    if (path.substr(0, prefix.size()) != prefix) return false;
    constexpr std::string_view kEdges = "/.:?#&=;";
    return path.size() == prefix.size() ||
           kEdges.find(prefix.back()) != std::string_view::npos ||
           kEdges.find(path[prefix.size()]) != std::string_view::npos;
  }

  bool oneIn(unsigned n) { return random_() % n == 0; }

  std::string withRandomCase(std::string text) {
    for (char& c : text) {
      if (c >= 'a' && c <= 'z' && oneIn(8)) c = static_cast<char>(c - 32);
    }
    return text;
  }

  template <class T>
  T pick(const std::vector<T>& choices) {
    return choices[random_() % choices.size()];
  }
  std::string pick(std::initializer_list<std::string> choices) {
    return pick(std::vector<std::string>(choices));
  }
  int pick(std::initializer_list<int> choices) {
    return pick(std::vector<int>(choices));
  }

 private:
  static bool isLocalhost(const std::string& host) {
    return host == "localhost";
  }
  static bool isAlone(const std::string& host) {
    return isLocalhost(host) ||
           host.find_first_not_of("0123456789.") == std::string::npos;
  }
  static int portOf(const Place& place) {
    return place.port == 80 || place.port == 443 ? 0 : place.port;
  }

  std::string randomHost() {
    if (oneIn(8))
      return pick({"10.0.0.1", "10.0.0.10", "localhost", "1.2.3.4"});
    std::string host = pick({"a", "ba", "b"});
    while (!oneIn(3)) host = pick({"a", "b", "ab", "www", "wwwa"}) + "." + host;
    return host;
  }

  std::string randomPath() {
    std::string path;
    while (!oneIn(2)) path += pick({"a", "b", "ab", "a.b", "a-b", "a;b"}) + "/";
    if (!oneIn(4)) path += pick({"a", "ab", "aba", "a.b", "a;b", "a=b", "b.a"});
    if (oneIn(4))
      path += pick({"?a", "?a=b", "?a=bc&a", "?a#b", "?ab"});
    else if (oneIn(6))
      path += pick({"#a", "#ab", "#a?b"});
    return path;
  }

  std::mt19937 random_;
};

struct ModelEntry {
  ListModel::Place place;
  std::string text;
  std::string category;
};

NameSet askModel(const std::vector<ModelEntry>& entries,
                 const ListModel::Place& asked) {
  NameSet categories;
  for (const ModelEntry& entry : entries) {
    if (ListModel::covers(entry.place, asked))
      categories.insert(entry.category);
  }
  return categories;
}

class AgainstAModel : public WithBase {
 protected:
  // Asks for as many random URLs; counts those of which something is known.
  static int compare(const TestDatabase& db,
                     const std::vector<ModelEntry>& entries, ListModel* model) {
    int known = 0;
    for (int i = 0; i < 300; ++i) {
      const ListModel::Place asked = model->randomPlace();
      const std::string url =
          "http://" + model->withRandomCase(ListModel::textOf(asked));
      const Names found = db.find(url);
      const NameSet set(found.begin(), found.end());
      EXPECT_EQ(askModel(entries, asked), set) << url;
      EXPECT_EQ(set.size(), found.size()) << url;
      known += set.empty() ? 0 : 1;
    }
    return known;
  }

  static std::vector<ModelEntry> randomEntries(ListModel* model) {
    const std::size_t count =
        1 + static_cast<std::size_t>(model->pick({1, 5, 20, 60, 120}));
    std::vector<ModelEntry> entries(count);
    for (ModelEntry& entry : entries) {
      entry.text = model->randomEntry(&entry.place);
      entry.category = model->pick({"c1", "c2", "c3/c1", "c4/c5", "c6"});
    }
    return entries;
  }
};

constexpr unsigned kSeeds = 300;

TEST_F(AgainstAModel, EveryListStandsAlone) {
  int known = 0;
  for (unsigned seed = 1; seed <= kSeeds && !HasFailure(); ++seed) {
    SCOPED_TRACE(numbered("seed ", seed));
    ListModel model(seed);
    const std::vector<ModelEntry> entries = randomEntries(&model);
    TestDatabase db;
    for (const ModelEntry& entry : entries) {
      SCOPED_TRACE(entry.text);
      ASSERT_EQ("", parseListEntry(entry.text).refusal);
      db.add(entry.text, entry.category);
    }
    db.build();
    known += compare(db, entries, &model);
  }
  // Neither all nor none: the model must have something to tell apart.
  EXPECT_GT(known, static_cast<int>(kSeeds) * 300 / 10);
  EXPECT_LT(known, static_cast<int>(kSeeds) * 300 * 9 / 10);
}

TEST_F(AgainstAModel, ListsInTwoStepsAnswerAsInOne) {
  for (unsigned seed = 1; seed <= kSeeds / 3 && !HasFailure(); ++seed) {
    SCOPED_TRACE(numbered("seed ", seed));
    ListModel model(seed);
    const std::vector<ModelEntry> entries = randomEntries(&model);
    const std::size_t half = entries.size() / 2;
    TestDatabase first;
    for (std::size_t i = 0; i < half; ++i)
      first.add(entries[i].text, entries[i].category);
    // Something must be there for the first database to be written.
    first.add("base.example", "c1");
    const std::string base = save(&first, "base");
    TestDatabase db;
    startFrom(&db, base);
    for (std::size_t i = half; i < entries.size(); ++i)
      db.add(entries[i].text, entries[i].category);
    db.build(base.c_str());
    compare(db, entries, &model);
  }
}

}  // namespace
}  // namespace urldb
