#include "urldb/category_names.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <random>
#include <set>
#include <sstream>
#include <string>

#include "common/file_descriptor.h"
#include "tests/temporary_folder.h"
#include "tests/thrown_by.h"
#include "tests/tiny_database.h"

namespace urldb {
namespace {

std::string listing(const CategoryNames& names) {
  std::ostringstream os;
  names.outputNames(os);
  return os.str();
}

std::string hierarchy(const CategoryNames& names) {
  std::ostringstream os;
  names.outputHierarchical(os);
  return os.str();
}

// A file that a section is written to or read from.
class CategoryNamesFile : public testing::Test {
 protected:
  FileDescriptor holding(std::string_view bytes) {
    return FileDescriptor(
        ::open(folder_.write("section", bytes).c_str(), O_RDONLY | O_CLOEXEC));
  }
  int read(CategoryNames& names, std::string_view bytes) {
    return names.readFile(holding(bytes).get());
  }
  std::string written(const CategoryNames& names, int* measure = nullptr) {
    FileDescriptor fd(::creat(folder_.path("out").c_str(), 0600));
    const int answer = names.writeFile(fd.get());
    if (measure != nullptr) *measure = answer;
    return folder_.read("out");
  }

  TemporaryFolder folder_;
};

TEST(CategoryNames, NumbersNamesFromOne) {
  CategoryNames names;
  EXPECT_EQ(1, names.addCateogry("news"));
  EXPECT_EQ(2, names.addCateogry("sport"));
  EXPECT_EQ(3, names.addCateogry("news"));
  EXPECT_STREQ("news", names.getNames(1));
  EXPECT_STREQ("sport", names.getNames(2));
  EXPECT_STREQ("news", names.getNames(3));
  EXPECT_EQ("1:news\n2:sport\n3:news\n", listing(names));
}

TEST(CategoryNames, IdsWithoutNameAreRefused) {
  CategoryNames names;
  for (const int id : {0, 1, -1, INT_MIN, INT_MAX}) {
    EXPECT_EQ("38/3001 No such a Element",
              thrownBy([&] { names.getNames(id); }))
        << id;
  }
  names.addCateogry("one");
  EXPECT_STREQ("one", names.getNames(1));
  for (const int id : {0, 2}) {
    EXPECT_EQ("38/3001 No such a Element",
              thrownBy([&] { names.getNames(id); }));
  }
}

TEST(CategoryNames, EmptyNamesAreRefused) {
  CategoryNames names;
  EXPECT_EQ("22/3001 Invalid Argument: add()",
            thrownBy([&] { names.addCateogry(nullptr); }));
  EXPECT_EQ("22/3001 Invalid Argument: add()",
            thrownBy([&] { names.addCateogry(""); }));
  EXPECT_EQ(1, names.addCateogry("x"));
}

TEST(CategoryNames, FoldsFullWidthFormsAndKeepsCase) {
  CategoryNames names;
  names.addCateogry(
      "\xA3\xC1\xA3\xE2"
      "c\xA1\xA1"
      "D\xA5\xC6");
  EXPECT_STREQ("Abc D\xA5\xC6", names.getNames(1));
}

TEST(CategoryNames, LongNamesStayWhole) {
  CategoryNames names;
  const std::string longName(100000, 'x');
  names.addCateogry(longName.c_str());
  names.addCateogry("short");
  EXPECT_EQ(longName, names.getNames(1));
  EXPECT_STREQ("short", names.getNames(2));
}

TEST(CategoryNames, TheNameBehind32767IsRefused) {
  CategoryNames names;
  for (int id = 1; id <= 32767; ++id)
    ASSERT_EQ(id, names.addCateogry(("name" + std::to_string(id)).c_str()));
  EXPECT_EQ("31/3001 Invalid Status: CategoryID too LARGE!!!",
            thrownBy([&] { names.addCateogry("one more"); }));
  EXPECT_STREQ("name1", names.getNames(1));
  EXPECT_STREQ("name501", names.getNames(501));
  EXPECT_STREQ("name32767", names.getNames(32767));
}

TEST(CategoryNames, EmptyTableFindsNoLevel1) {
  EXPECT_EQ(0, CategoryNames().searchLevel1(0x10000));
}

TEST(CategoryNames, SearchLevel1TellsIndexOrPlace) {
  CategoryNames names;
  for (const int id : {10, 20, 30}) names.setHierarchical(pairOf(id, 0));
  const struct {
    int id, answer;
  } cases[] = {{5, 0}, {10, 1}, {15, -1}, {20, 2}, {25, -2}, {30, 3}, {35, -3}};
  for (const auto& c : cases)
    EXPECT_EQ(c.answer, names.searchLevel1(c.id << 16)) << c.id;
}

TEST(CategoryNames, HierarchyPrintsChainsInTheOrderOfRecording) {
  CategoryNames names;
  names.setHierarchical(pairOf(2, 9));
  names.setHierarchical(pairOf(1, 4));
  names.setHierarchical(pairOf(2, 3));
  names.setHierarchical(pairOf(2, 7));
  EXPECT_EQ("1:4\n2:9,3,7\n", hierarchy(names));
}

TEST(CategoryNames, SamePairTwiceChangesNothing) {
  CategoryNames names;
  for (const int pair : {pairOf(2, 9), pairOf(2, 3), pairOf(1, 0)})
    names.setHierarchical(pair);
  const auto level1 = names.view().level1;
  const std::vector<int32_t> before1(level1.begin(), level1.end());
  const auto level2 = names.view().level2;
  const std::vector<int32_t> before2(level2.begin(), level2.end());
  for (const int pair : {pairOf(2, 9), pairOf(2, 3), pairOf(1, 0)})
    names.setHierarchical(pair);
  const CategoryView after = names.view();
  EXPECT_EQ(before1,
            std::vector<int32_t>(after.level1.begin(), after.level1.end()));
  EXPECT_EQ(before2,
            std::vector<int32_t>(after.level2.begin(), after.level2.end()));
}

TEST(CategoryNames, Level2IdZeroOnlyRecordsLevel1) {
  CategoryNames names;
  names.setHierarchical(pairOf(7, 0));
  EXPECT_EQ(1, names.searchLevel1(7 << 16));
  EXPECT_EQ("", hierarchy(names));
  EXPECT_EQ(1U, names.view().level2.size());
  names.setHierarchical(pairOf(7, 5));
  EXPECT_EQ("7:5\n", hierarchy(names));
}

TEST(CategoryNames, BranchesListLevel1WithoutNodesToo) {
  CategoryNames names;
  names.setHierarchical(pairOf(7, 0));
  names.setHierarchical(pairOf(3, 4));
  const auto branches = names.view().branches();
  ASSERT_EQ(2U, branches.size());
  EXPECT_EQ(3, branches[0].level1);
  EXPECT_EQ(std::vector<int>{4}, branches[0].level2);
  EXPECT_EQ(7, branches[1].level1);
  EXPECT_TRUE(branches[1].level2.empty());
}

TEST(CategoryNames, Level1StaysSortedWhateverTheOrder) {
  const unsigned seed = 20240131;
  std::mt19937 random(seed);
  CategoryNames names;
  std::set<int> ids;
  for (int i = 0; i < 3000; ++i) {
    const int id = static_cast<int>(random() % 32768);
    ids.insert(id);
    names.setHierarchical(pairOf(id, 1 + i % 3));
  }
  const auto branches = names.view().branches();
  ASSERT_EQ(ids.size(), branches.size()) << "seed " << seed;
  std::size_t i = 0;
  for (const int id : ids)
    EXPECT_EQ(id, branches[i++].level1) << "seed " << seed;
}

TEST(CategoryNames, The32768thLevel1IdIsRefused) {
  CategoryNames names;
  for (int id = 0; id < 32767; ++id) names.setHierarchical(id << 16);
  EXPECT_EQ("37/3001 Overflow: too much Category(1)",
            thrownBy([&] { names.setHierarchical(32767 << 16); }));
  names.setHierarchical(pairOf(5, 6));
  EXPECT_EQ("5:6\n", hierarchy(names));
}

TEST(CategoryNames, The65536thLevel2NodeIsRefused) {
  CategoryNames names;
  for (int i = 0; i < 65535; ++i)
    names.setHierarchical(pairOf(1 + i / 100, 1 + i % 100));
  EXPECT_EQ("37/3001 Overflow: too much Category(2)",
            thrownBy([&] { names.setHierarchical(pairOf(1, 1000)); }));
  const auto branches = names.view().branches();
  ASSERT_EQ(656U, branches.size());
  EXPECT_EQ(100U, branches[0].level2.size());
  EXPECT_EQ(35U, branches[655].level2.size());
}

TEST_F(CategoryNamesFile, ClearHierarchicalAlsoClearsWhatWasReadForNodeZero) {
  CategoryNames names;
  read(names, words({0, 0, 0, 0, 7}));
  names.clearHierarchical();
  EXPECT_EQ(words({0, 0, 0, 0, 0}), written(names));
}

TEST(CategoryNames, ClearHierarchicalForgetsAllPairs) {
  CategoryNames names;
  names.addCateogry("kept");
  names.setHierarchical(pairOf(1, 1));
  names.clearHierarchical();
  EXPECT_EQ("", hierarchy(names));
  EXPECT_EQ(0, names.searchLevel1(1 << 16));
  EXPECT_STREQ("kept", names.getNames(1));
  names.setHierarchical(pairOf(1, 2));
  EXPECT_EQ("1:2\n", hierarchy(names));
}

TEST_F(CategoryNamesFile, WritesTheSectionByteForByte) {
  CategoryNames names;
  names.addCateogry("ab");
  names.addCateogry("c");
  names.setHierarchical(pairOf(2, 1));
  names.setHierarchical(pairOf(1, 2));
  names.setHierarchical(pairOf(2, 2));
  int measure = 0;
  EXPECT_EQ(words({2, 5, 0, 3}) + std::string("ab\0c\0", 5) + words({2, 3}) +
                words({0x10002, 0x20001}) + words({0, 0x30001, 2, 2}),
            written(names, &measure));
  EXPECT_EQ(5 + 4 * (2 + 2 + 3) + 4, measure);
}

TEST_F(CategoryNamesFile, EmptyTableIsFiveWords) {
  EXPECT_EQ(words({0, 0, 0, 0, 0}), written(CategoryNames()));
  CategoryNames names;
  EXPECT_EQ(4, read(names, words({0, 0, 0, 0, 0})));
  EXPECT_EQ("", listing(names));
  EXPECT_EQ(1, names.addCateogry("first"));
}

TEST_F(CategoryNamesFile, ReadsWhatWasWritten) {
  CategoryNames names;
  for (int i = 1; i <= 1200; ++i) {
    names.addCateogry(("name" + std::to_string(i)).c_str());
    names.setHierarchical(pairOf(1 + i % 40, i));
  }
  int measure = 0;
  const std::string section = written(names, &measure);
  CategoryNames loaded;
  loaded.addCateogry("replaced");
  loaded.setHierarchical(pairOf(9, 9));
  EXPECT_EQ(measure, read(loaded, section));
  EXPECT_EQ(listing(names), listing(loaded));
  EXPECT_EQ(hierarchy(names), hierarchy(loaded));
  EXPECT_EQ(1201, loaded.addCateogry("next"));
  EXPECT_STREQ("next", loaded.getNames(1201));
  EXPECT_STREQ("name1200", loaded.getNames(1200));
}

TEST_F(CategoryNamesFile, EachLoadAddsAnUnusedLevel2Node) {
  CategoryNames names;
  names.setHierarchical(pairOf(1, 2));
  CategoryNames loaded;
  read(loaded, written(names));
  EXPECT_EQ(words({0, 0, 1, 2}) + words({0x10001}) + words({0, 2, 0}),
            written(loaded));
  loaded.setHierarchical(pairOf(1, 5));
  EXPECT_EQ(words({0, 0, 1, 3}) + words({0x10001}) + words({0, 0x30002, 0, 5}),
            written(loaded));
  EXPECT_EQ("1:2,5\n", hierarchy(loaded));
}

TEST_F(CategoryNamesFile, LeavesTheDescriptorBehindTheSection) {
  TinyDatabase tiny;
  const std::string section = written(tiny.names);
  const FileDescriptor fd = holding(section + section + "rest");
  CategoryNames one;
  CategoryNames two;
  one.readFile(fd.get());
  two.readFile(fd.get());
  EXPECT_EQ(listing(one), listing(two));
  char rest[5] = {};
  EXPECT_EQ(4, ::read(fd.get(), rest, 4));
  EXPECT_STREQ("rest", rest);
}

TEST_F(CategoryNamesFile, SectionCutAnywhereKeepsTheOldTable) {
  TinyDatabase tiny;
  const std::string section = written(tiny.names);
  for (std::size_t size = 0; size < section.size(); ++size) {
    CategoryNames names;
    names.addCateogry("old");
    names.setHierarchical(pairOf(1, 1));
    EXPECT_EQ("4/3001 Can't Read File",
              thrownBy([&] { read(names, section.substr(0, size)); }))
        << size;
    EXPECT_EQ("1:old\n", listing(names));
    EXPECT_EQ("1:1\n", hierarchy(names));
  }
}

TEST_F(CategoryNamesFile, RefusesWhatCannotBe) {
  const std::string text("ab\0c\0", 5);
  const struct {
    const char* what;
    std::string section;
    const char* error;
  } cases[] = {
      {"negative number of names", words({-1, 0, 0, 0, 0}),
       "25/3001 Invalid Data: count of names"},
      {"negative text size", words({0, -1, 0, 0, 0}),
       "25/3001 Invalid Data: count of names"},
      {"name behind the text", words({1, 5, 5}) + text + words({0, 0, 0}),
       "25/3001 Invalid Data: position of a name"},
      {"name before the text", words({1, 5, -1}) + text + words({0, 0, 0}),
       "25/3001 Invalid Data: position of a name"},
      {"name without a text", words({1, 0, 0}) + words({0, 0, 0}),
       "25/3001 Invalid Data: position of a name"},
      {"negative number of level-1 entries", words({0, 0, -1, 0, 0}),
       "25/3001 Invalid Data: count of categories"},
      {"negative number of level-2 nodes", words({0, 0, 0, -1, 0}),
       "25/3001 Invalid Data: count of categories"},
      {"first node outside the table", words({0, 0, 1, 1, 0x10002, 0, 1}),
       "25/3001 Invalid Data: link of a category"},
      {"link outside the table", words({0, 0, 1, 1, 0x10001, 0, 0x20001}),
       "25/3001 Invalid Data: link of a category"},
      {"chain that is a loop",
       words({0, 0, 1, 2, 0x10001, 0, 0x20001, 0x10002}),
       "25/3001 Invalid Data: link of a category"},
      {"chain that meets another",
       words({0, 0, 2, 2, 0x10001, 0x20002, 0, 0x20001, 2}),
       "25/3001 Invalid Data: link of a category"},
      {"names that the file cannot hold", words({INT_MAX, 0, 0, 0, 0}),
       "4/3001 Can't Read File"},
      {"text that the file cannot hold", words({0, INT_MAX, 0, 0, 0}),
       "4/3001 Can't Read File"},
      {"entries that the file cannot hold", words({0, 0, INT_MAX, 0, 0}),
       "4/3001 Can't Read File"},
      {"nodes that the file cannot hold", words({0, 0, 0, INT_MAX, 0}),
       "4/3001 Can't Read File"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    CategoryNames names;
    names.addCateogry("old");
    EXPECT_EQ(c.error, thrownBy([&] { read(names, c.section); }));
    EXPECT_EQ("1:old\n", listing(names));
  }
}

TEST_F(CategoryNamesFile, AcceptsWhatIsOddButSafe) {
  // Two names share bytes, the last one has no NUL, the level-1 table is not
  // sorted, and nobody links to node 1.
  CategoryNames names;
  read(names, words({3, 5, 0, 1, 3}) + "ab" + std::string(1, '\0') + "cd" +
                  words({2, 2, 0x50000, 0x10002, 7, 0x90009, 3}));
  EXPECT_EQ("1:ab\n2:b\n3:cd\n", listing(names));
  EXPECT_EQ("1:3\n", hierarchy(names));
}

TEST_F(CategoryNamesFile, NamesThatOverlapWithoutMeasureAreRefused) {
  // A million bytes of file would print as 250 GB of names.
  constexpr int kNames = 100000;
  constexpr int kText = 2500000;
  std::string section = words({kNames, kText});
  for (int i = 0; i < kNames; ++i) section += word(i);
  section += std::string(kText, 'x') + words({0, 0, 0});
  CategoryNames names;
  EXPECT_EQ("25/3001 Invalid Data: names overlap",
            thrownBy([&] { read(names, section); }));
}

TEST_F(CategoryNamesFile, FailedWriteIsCode5AndHarmless) {
  TinyDatabase tiny;
  const std::string before = written(tiny.names);
  const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
  ASSERT_TRUE(full.valid());
  EXPECT_EQ("5/3001 Can't Write File",
            thrownBy([&] { tiny.names.writeFile(full.get()); }));
  EXPECT_EQ(before, written(tiny.names));
}

TEST(CategoryNames, SwapExchangesEverything) {
  CategoryNames one;
  CategoryNames two;
  one.addCateogry("one");
  one.setHierarchical(pairOf(1, 1));
  const char* const text = one.getNames(1);
  one.swap(two);
  EXPECT_EQ("", listing(one));
  EXPECT_EQ("1:one\n", listing(two));
  EXPECT_EQ("1:1\n", hierarchy(two));
  EXPECT_EQ(text, two.getNames(1));
}

}  // namespace
}  // namespace urldb
