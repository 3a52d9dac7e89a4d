#include "tools/list_reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "common/error.h"
#include "tests/recorded_list.h"
#include "tools/hierarchy_file.h"

namespace urldb {
namespace {

const Category kNews{"", "news"};
const std::string kNoCategory = "no tab and category behind the entry";

// The first key of each entry, which tells entries apart.
std::vector<std::string> firstKeys(const RecordedList& list) {
  std::vector<std::string> keys;
  for (const auto& entry : list.entries) keys.push_back(entry.keys.front());
  return keys;
}

using Keys = std::vector<std::string>;
using Names = std::vector<std::string>;

TEST(ListReader, CategoryListIsAnEntryALine) {
  const RecordedList list("a.com\nb.com/x\n", kNews);
  EXPECT_EQ((Keys{"moc.a/", "moc.b/x"}), firstKeys(list));
  EXPECT_EQ(Names{"news"}, list.entries[0].categories);
  EXPECT_EQ(2U, list.counts.lines);
  EXPECT_EQ(2U, list.counts.taken);
  EXPECT_EQ(0U, list.counts.refused);
}

TEST(ListReader, LineEndsBlanksAndByteOrderMark) {
  const RecordedList list(
      "\xEF\xBB\xBF"
      "a.com\r\n\r\n \t \n\t b.com \t\r\nc.com",
      kNews);
  EXPECT_EQ((Keys{"moc.a/", "moc.b/", "moc.c/"}), firstKeys(list));
  EXPECT_EQ(5U, list.counts.lines);
  EXPECT_EQ(0U, list.counts.refused);
}

TEST(ListReader, ByteOrderMarkOnlyCountsAtTheStart) {
  const RecordedList list("a.com\n\xEF\xBB\xBF#b\n", kNews);
  EXPECT_EQ(Keys{"moc.a/"}, firstKeys(list));
  ASSERT_EQ(1U, list.refusals.size());
  EXPECT_EQ(2U, list.refusals[0].line);
}

TEST(ListReader, CommentsEndAnEntryOnlyBehindABlank) {
  const RecordedList list(
      "# a.com\n! b.com\n  # c.com\nd.com # d\ne.com\t#\nf.com/x#y #z\n"
      "g.com/! h\n",
      kNews);
  EXPECT_EQ((Keys{"moc.d/", "moc.e/", "moc.f/x#y"}), firstKeys(list));
  ASSERT_EQ(1U, list.refusals.size());
  EXPECT_EQ((RecordedList::Refusal{7, "g.com/! h", "blank inside the entry"}),
            list.refusals[0]);
}

TEST(ListReader, HostsLineGivesAnEntryForEachName) {
  const RecordedList list("0.0.0.0 a.com  b.com localhost # x\n::1\tc.com\n",
                          kNews);
  EXPECT_EQ((Keys{"moc.a/", "moc.b/", "moc.c/"}), firstKeys(list));
  EXPECT_EQ(2U, list.counts.lines);
  EXPECT_EQ(3U, list.counts.taken);
  EXPECT_EQ(1U, list.counts.refused);
  EXPECT_EQ("localhost", list.refusals[0].entry);
}

TEST(ListReader, RefusedEntriesHaveLineAndReason) {
  const RecordedList list("a.com\nlabel\n\nb..c\n", kNews);
  const std::vector<RecordedList::Refusal> expected = {
      {2, "label", "single label, neither .tld nor http://label/"},
      {4, "b..c", "empty label in the host name"}};
  EXPECT_EQ(expected, list.refusals);
  EXPECT_EQ(4U, list.counts.lines);
  EXPECT_EQ(1U, list.counts.taken);
  EXPECT_EQ(2U, list.counts.refused);
}

TEST(ListReader, NulBytesRefuseAnEntryAndNoMore) {
  const RecordedList list(std::string("a.com\0x\n\0\nb.com\n", 16), kNews);
  EXPECT_EQ(Keys{"moc.b/"}, firstKeys(list));
  ASSERT_EQ(2U, list.refusals.size());
  EXPECT_EQ("control byte %00", list.refusals[0].reason);
  EXPECT_EQ((std::string("a.com\0x", 7)), list.refusals[0].entry);
}

TEST(ListReader, LinesHaveNoLimit) {
  const std::string path(10U << 20, 'x');
  const RecordedList list("a.com/" + path + "\nb.com\n" + path + "\n", kNews);
  EXPECT_EQ((Keys{"moc.a/" + path, "moc.b/"}), firstKeys(list));
  ASSERT_EQ(1U, list.refusals.size());
  EXPECT_EQ(path, list.refusals[0].entry);
}

TEST(ListReader, EmptyListGivesNothing) {
  for (const auto& category :
       {std::optional<Category>(kNews), std::optional<Category>()}) {
    const RecordedList list("", category);
    EXPECT_EQ(0U, list.counts.lines);
    EXPECT_TRUE(list.entries.empty());
    EXPECT_TRUE(list.refusals.empty());
  }
}

TEST(ListReader, LinesMayNameTheirCategories) {
  const RecordedList list(
      "a.com\tnews\n"
      "b.com\tnews, sport/ball ,news\n"
      "c.com \t \xE3\x83\x86 # comment\n"
      "0.0.0.0\td.com e.com\tnews\n",
      std::nullopt);
  ASSERT_TRUE(list.refusals.empty()) << list.refusals[0].reason;
  EXPECT_EQ((Keys{"moc.a/", "moc.b/", "moc.c/", "moc.d/", "moc.e/"}),
            firstKeys(list));
  EXPECT_EQ(Names{"news"}, list.entries[0].categories);
  EXPECT_EQ((Names{"news", "sport/ball", "news"}), list.entries[1].categories);
  EXPECT_EQ(Names{"\xA5\xC6"}, list.entries[2].categories);
}

TEST(ListReader, EntryWithoutUsableCategoriesIsRefused) {
  const struct {
    const char* line;
    std::string reason;
  } cases[] = {
      {"a.com", kNoCategory},
      {"a.com\t", kNoCategory},
      {"a.com\t#news", kNoCategory},
      {"a.com news", kNoCategory},
      {"\tnews", kNoCategory},
      {"a.com\tnews,", "unusable category"},
      {"a.com\t,news", "unusable category"},
      {"a.com\ta/b/c", "unusable category"},
      {"a.com\ta/", "unusable category"},
      {"a.com\t/a", "unusable category"},
      {"a.com\tn\x01", "unusable category"},
      {"a.com\t\xFF", "unusable category"},
      {"a.com\t\xF0\x9F\x98\x80", "unusable category"},  // not in EUC-JP
      {"label\tnews", "single label, neither .tld nor http://label/"},
      {"a.com\tnews\tsport", "blank inside the entry"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    const RecordedList list(c.line, std::nullopt);
    EXPECT_TRUE(list.entries.empty());
    ASSERT_EQ(1U, list.refusals.size());
    EXPECT_EQ(c.reason, list.refusals[0].reason);
  }
}

TEST(ListReader, HostsFileWithTabsAndNoCategoryIsNotMisread) {
  const RecordedList list(
      "0.0.0.0\tads.com\n127.0.0.1 \tads.com\n::1\tads.com\n"
      "::\tads.com tracker.com\n10.0.0.1\tnews\n0.0.0.0\tads.com\tnews\n",
      std::nullopt);
  ASSERT_EQ(4U, list.refusals.size());
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(i + 1, list.refusals[i].line);
    EXPECT_EQ("a hosts line: give the file as CATEGORY=FILE",
              list.refusals[i].reason);
  }
  EXPECT_EQ((Keys{"10.0.0.1/", "moc.sda/"}), firstKeys(list));
}

TEST(ListReader, BlanksAroundCommasAndSlashesDoNotCount) {
  const RecordedList list("a.com\tx , y / z,b /c\n", std::nullopt);
  ASSERT_EQ(0U, list.refusals.size());
  EXPECT_EQ((std::vector<std::string>{"x", "y/z", "b/c"}),
            list.entries.at(0).categories);
  // In a dump they are part of a name.
  const RecordedList dump("#key\nK/\tx ,y / z\n", std::nullopt);
  EXPECT_EQ((std::vector<std::string>{"x ", "y / z"}),
            dump.entries.at(0).categories);
}

TEST(ListReader, DumpHoldsStoredKeysAndEscapedNames) {
  const RecordedList list(
      "\xEF\xBB\xBF#key\r\n"
      "MOC.A/\tnews\r\n"
      "\r\n"
      "# a comment has no tab\r\n"
      "#X/%20%25\t#1,a%2Cb%2Fc/%E3%83%86\r\n"
      "! !\t!\r\n",
      std::nullopt);
  ASSERT_TRUE(list.refusals.empty()) << list.refusals[0].reason;
  ASSERT_EQ(3U, list.entries.size());
  EXPECT_EQ((RecordedList::Entry{{"MOC.A/"}, {"news"}}), list.entries[0]);
  EXPECT_EQ((RecordedList::Entry{{"#X/ %"}, {"#1", "a,b/c/\xA5\xC6"}}),
            list.entries[1]);
  EXPECT_EQ((RecordedList::Entry{{"! !"}, {"!"}}), list.entries[2]);
  EXPECT_EQ(6U, list.counts.lines);
}

TEST(ListReader, DumpRefusesWhatIsNoKeyAndNoName) {
  const struct {
    std::string line;
    const char* reason;
  } cases[] = {
      {"KEY", "no category"},
      {"KEY\t", "unusable category"},
      {"KEY\ta%2", "unusable category"},
      {"KEY\ta\tb", "unusable category"},
      {"KEY\ta/b/c", "unusable category"},
      {"\tnews", "empty key"},
      {"K%4\tnews", "broken escape in the key"},
      {"K%7F\tnews", "byte %7F in the key"},
      {std::string("K\0\tnews", 7), "byte %00 in the key"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    const RecordedList list("#key\n" + c.line + "\n", std::nullopt);
    EXPECT_TRUE(list.entries.empty());
    ASSERT_EQ(1U, list.refusals.size());
    EXPECT_EQ((RecordedList::Refusal{2, c.line, c.reason}), list.refusals[0]);
  }
}

TEST(ListReader, DumpMarkMustBeTheFirstLineOfAFileWithoutCategory) {
  EXPECT_EQ(
      kNoCategory,
      RecordedList("#x\n#key\nMOC.A/\n", std::nullopt).refusals[0].reason);
  EXPECT_EQ(Keys{"moc.a/"}, firstKeys(RecordedList("#key\na.com\n", kNews)));
}

TEST(ListReader, ReadingFailureIsAnError) {
  const FileDescriptor folder(::open("/", O_RDONLY | O_DIRECTORY));
  LineSource lines(folder.get());
  try {
    readHierarchy(lines, [](uint64_t, std::string_view, std::string_view) {});
    FAIL();
  } catch (const ErrException& error) {
    EXPECT_EQ(ERR_CANT_READ_FILE, error.getErrCode());
  }
}

class HierarchyTest : public testing::Test {
 protected:
  Hierarchy read(std::string_view text) {
    const FileDescriptor file = memoryFile(text);
    LineSource lines(file.get());
    return readHierarchy(lines, [this](uint64_t line, std::string_view entry,
                                       std::string_view reason) {
      refusals_.push_back({line, std::string(entry), std::string(reason)});
    });
  }

  std::vector<RecordedList::Refusal> refusals_;
};

TEST_F(HierarchyTest, LinesPutLevel2UnderLevel1) {
  const Hierarchy hierarchy = read(
      "\xEF\xBB\xBF# comment\nsport\tball\r\n sport \t golf #x\n"
      "a\ta\nsport\tball\n\xE3\x83\x86\tx");
  EXPECT_TRUE(refusals_.empty());
  EXPECT_EQ(4U, hierarchy.size());
  ASSERT_NE(nullptr, hierarchy.level1Of("ball"));
  EXPECT_EQ("sport", *hierarchy.level1Of("ball"));
  EXPECT_EQ("sport", *hierarchy.level1Of("golf"));
  EXPECT_EQ("a", *hierarchy.level1Of("a"));
  EXPECT_EQ("\xA5\xC6", *hierarchy.level1Of("x"));
  EXPECT_EQ(nullptr, hierarchy.level1Of("sport"));
}

TEST_F(HierarchyTest, MarkedFileHasEscapedNames) {
  const Hierarchy hierarchy = read(
      "\xEF\xBB\xBF#hierarchy\r\n# comment\n!\n \n#one #\t%20a%2Fb%20\r\n"
      "!two\t#x #y\nt%\tz\nball\n\tball\n%E3%83%86\t100%25\n");
  const std::vector<RecordedList::Refusal> expected = {
      {7, "t%\tz", "unusable category"},
      {8, "ball", "no tab between level 1 and level 2"},
      {9, "\tball", "unusable category"}};
  EXPECT_EQ(expected, refusals_);
  EXPECT_EQ(3U, hierarchy.size());
  ASSERT_NE(nullptr, hierarchy.level1Of(" a/b "));
  EXPECT_EQ("#one #", *hierarchy.level1Of(" a/b "));
  ASSERT_NE(nullptr, hierarchy.level1Of("#x #y"));
  EXPECT_EQ("!two", *hierarchy.level1Of("#x #y"));
  ASSERT_NE(nullptr, hierarchy.level1Of("100%"));
  EXPECT_EQ("\xA5\xC6", *hierarchy.level1Of("100%"));
}

TEST_F(HierarchyTest, MarkCountsInTheFirstLineOnly) {
  const Hierarchy hierarchy = read("\n#hierarchy\na%41\tb%41 #c\n#x\ty\n");
  EXPECT_TRUE(refusals_.empty());
  ASSERT_NE(nullptr, hierarchy.level1Of("b%41"));
  EXPECT_EQ("a%41", *hierarchy.level1Of("b%41"));
  EXPECT_EQ(1U, hierarchy.size());
}

TEST_F(HierarchyTest, MalformedLinesAreRefused) {
  const Hierarchy hierarchy = read("ball\nsport\t\n\tball\na\tb\tc\nx\ty\n");
  EXPECT_EQ(1U, hierarchy.size());
  // A line with one side empty has lost its tab with the blanks at its ends.
  const std::vector<RecordedList::Refusal> expected = {
      {1, "ball", "no tab between level 1 and level 2"},
      {2, "sport", "no tab between level 1 and level 2"},
      {3, "ball", "no tab between level 1 and level 2"},
      {4, "a\tb\tc", "unusable category"}};
  EXPECT_EQ(expected, refusals_);
}

TEST_F(HierarchyTest, OneLevel2UnderTwoLevel1IsRefused) {
  const Hierarchy hierarchy = read("sport\tball\ndance\tball\n");
  EXPECT_EQ("sport", *hierarchy.level1Of("ball"));
  ASSERT_EQ(1U, refusals_.size());
  EXPECT_EQ(
      (RecordedList::Refusal{2, "dance\tball", "stands under sport already"}),
      refusals_[0]);
}

}  // namespace
}  // namespace urldb
