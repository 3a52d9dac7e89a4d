// The commands of `urldb` that look into databases: info, check, dump,
// categories, also where a database is damaged.

#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <sstream>
#include <string>

#include "tests/cli_fixture.h"
#include "tests/run_program.h"
#include "tests/tiny_database.h"
#include "urldb/database_freshness.h"

namespace urldb {
namespace {

class CliInspect : public CliFixture {
 protected:
  static std::multiset<std::string> sorted(const std::string& text) {
    std::istringstream stream(text);
    std::multiset<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.insert(line);
    return lines;
  }
};

TEST_F(CliInspect, InfoShowsHeaderCountersAndFreshness) {
  const ProgramResult result = command("info");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("", result.err);
  for (const char* line :
       {"format version:       2\n", "keys:                 6\n",
        "category values:      7\n", "longest list:         2\n",
        "category names:       5\n", "level-1 categories:   4\n",
        "category pairs:       4\n", "repository entries:   9\n",
        "free positions:       1\n", "fresh:                until "}) {
    EXPECT_TRUE(contains(result.out, line)) << line << result.out;
  }
}

TEST_F(CliInspect, InfoTellsHowLongADatabaseIsExpired) {
  setFreshDays(db_, -3);
  db_.writeFile(nullptr);
  const ProgramResult result = command("info");
  EXPECT_EQ(0, result.status);
  EXPECT_TRUE(contains(result.out, "fresh:                expired since "));
  EXPECT_TRUE(contains(result.out, " (3 days)\n")) << result.out;
}

TEST_F(CliInspect, CheckSaysSound) {
  const ProgramResult result = command("check");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ(0U, result.out.find("sound: 6 keys, 7 category values, "))
      << result.out;
  EXPECT_EQ("", result.err);
}

TEST_F(CliInspect, CheckNamesFaultsAndEndsWithOne) {
  damage(kLastValue, '\x99');  // an unknown ID
  const ProgramResult result = command("check");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "not sound: position 8, in the list of URL ID 6, has the category 153, "
      "which has no name\n",
      result.out);
  EXPECT_EQ("", result.err);
}

TEST_F(CliInspect, CategoryWithoutANameIsItsNumber) {
  damage(kLastValue, '\x99');
  const ProgramResult found =
      command("lookup", {}, "www.example.com/dir\nexample.com\n");
  EXPECT_EQ(0, found.status);
  EXPECT_EQ("www.example.com/dir\tnews,sport/153\nexample.com\tnews\n",
            found.out);
  const ProgramResult dump = command("dump");
  EXPECT_EQ(1, dump.status);
  EXPECT_TRUE(
      contains(dump.out, "MOC.ELPMAXE.WWW/DIR\tnews,sport/153\nMOC.ELPMAXE/"))
      << dump.out;
  EXPECT_TRUE(contains(dump.err, "urldb: " + database() +
                                     ": category 153 has no name, the dump "
                                     "holds its number instead\n"))
      << dump.err;
}

TEST_F(CliInspect, CheckOfWhatTheReaderRefusesIsNotSound) {
  const std::string bytes = folder_.read("test.db");
  const struct {
    const char* what;
    std::string bytes;
  } cases[] = {
      {"Invalid File", "this is no database at all"},
      {"Can't Read File", ""},
      {"Can't Read File", bytes.substr(0, bytes.size() - 20)},
      // A lookup would not miss the free positions; a build from it would.
      {"Can't Read File", bytes.substr(0, bytes.size() - 2)},
      {"Invalid Data: free position 255",
       bytes.substr(0, bytes.size() - 1) + '\xFF'},
  };
  for (const auto& c : cases) {
    folder_.write("test.db", c.bytes);
    const ProgramResult result = command("check");
    EXPECT_EQ(1, result.status);
    EXPECT_EQ(0U, result.out.find("not sound: " + std::string(c.what)))
        << result.out;
  }
}

TEST_F(CliInspect, CheckOfAFileThatCannotBeOpenedIsTwo) {
  const ProgramResult result =
      urldb({"check", "-d", folder_.path("missing.db")});
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("", result.out);
  EXPECT_TRUE(contains(result.err, "No such file or directory"));
}

TEST_F(CliInspect, DumpIsInKeyOrder) {
  const ProgramResult result = command("dump");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(
      "#key\n"
      "GRO.DDO/50%25\t50%25%20a%2Cb%2Fc\n"
      "MOC.ELPMAXE.\tnews\n"
      "MOC.ELPMAXE.WWW/DIR\tnews,sport/ball\n"
      "MOC.ELPMAXE/\tnews\n"
      "MOC.ELPMAXE:\tnews\n"
      "PJ.TSET/%A5%C6\t%E3%83%86%E3%82%B9%E3%83%88\n",
      result.out);
}

TEST_F(CliInspect, DumpOfADamagedDatabaseSaysSo) {
  clearLastValue();
  const ProgramResult result = command("dump");
  EXPECT_EQ(1, result.status);
  EXPECT_TRUE(contains(result.err, "not sound: ")) << result.err;
  EXPECT_TRUE(contains(result.out, "MOC.ELPMAXE/\tnews\n"));
  EXPECT_FALSE(contains(result.out, "WWW/DIR"));
}

TEST_F(CliInspect, DumpSaysWhichNamesDoNotComeBack) {
  const int bad = names_.addCateogry("\xFF\xFE");
  const int control = names_.addCateogry("a\tb");
  const int again = names_.addCateogry("news");
  names_.addCateogry("\xFE unused");
  add("gro.dab/1", {pairOf(bad, bad)});
  add("gro.dab/2", {pairOf(bad, bad), pairOf(again, again)});
  add("gro.dab/3", {pairOf(control, again)});
  db_.writeFile(nullptr);
  const ProgramResult result = command("dump");
  EXPECT_EQ(1, result.status);
  EXPECT_TRUE(contains(result.out, "\nGRO.DAB/2\t%EF%BF%BD%EF%BF%BD,news\n"))
      << result.out;
  // Each of them once, where it first comes up.
  const std::string start = "urldb: " + database() + ": ";
  EXPECT_EQ(start +
                "not sound: the name of category 7 holds a control byte; the "
                "dump holds what can be read, 'urldb check' says more\n" +
                start +
                "category 6 has the name \xEF\xBF\xBD\xEF\xBF\xBD, which "
                "'build' cannot read back\n" +
                start +
                "category 7 has the name a%09b, which 'build' cannot read "
                "back\n" +
                start +
                "category 1 has the same name as category 8, the dump makes "
                "one of them\n",
            result.err);
}

TEST_F(CliInspect,
       DumpOfASoundDatabaseWithANameThatDoesNotComeBackEndsWithOne) {
  const int bad = names_.addCateogry("\xFF\xFE");
  add("gro.dab/", {pairOf(bad, bad)});
  db_.writeFile(nullptr);
  EXPECT_EQ(0, command("check").status);
  EXPECT_EQ(1, command("dump").status);
}

TEST_F(CliInspect, DumpOfListsThatOverlapStaysSmall) {
  // Behind the index of 8 entries follow 9 repository entries and one free
  // position. All 6 keys get the list of two values at position 7.
  for (std::size_t id = 1; id <= 6; ++id) damage(4 * (7 - id + 10), '\x07');
  const ProgramResult result = command("dump");
  EXPECT_EQ(1, result.status);
  EXPECT_TRUE(contains(result.err, "not sound: ")) << result.err;
  // Four lists of two values are as much as nine entries can hold.
  EXPECT_EQ(
      "#key\n"
      "GRO.DDO/50%25\tnews,sport/ball\n"
      "MOC.ELPMAXE.\tnews,sport/ball\n"
      "MOC.ELPMAXE.WWW/DIR\tnews,sport/ball\n"
      "MOC.ELPMAXE/\tnews,sport/ball\n",
      result.out);
}

TEST_F(CliInspect, LookupGoesOnBehindADamagedList) {
  clearLastValue();
  const ProgramResult result =
      command("lookup", {}, "www.example.com/dir\nexample.com\n");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(0U, result.out.find(
                    "www.example.com/dir\t![ERROR(3004)] Invalid Status: "))
      << result.out;
  EXPECT_TRUE(contains(result.out, "\nexample.com\tnews\n"));
}

TEST_F(CliInspect, CategoriesPrintsNamesAndPairs) {
  const ProgramResult result = command("categories");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("", result.err);
  EXPECT_EQ("# names: ID<TAB>NAME\n1\tnews\n2\tsport\n3\tball\n4\t" +
                std::string(kTest) +
                "\n5\t50% a,b/c\n#hierarchy\nsport\tball\n",
            result.out);
}

TEST_F(CliInspect, CategoriesEscapesTheNamesOfPairs) {
  const int level1 = names_.addCateogry("# a,b/c%");
  const int level2 = names_.addCateogry(" \xA5\xC6 ");
  add("gro.ddo/", {pairOf(level1, level2)});
  db_.writeFile(nullptr);
  const std::string out = command("categories").out;
  EXPECT_TRUE(contains(out, "\n6\t# a,b/c%\n7\t \xE3\x83\x86 \n")) << out;
  EXPECT_TRUE(
      out.ends_with("#hierarchy\nsport\tball\n"
                    "#%20a%2Cb%2Fc%25\t%20%E3%83%86%20\n"))
      << out;
}

TEST_F(CliInspect, BuildingFromADumpGivesTheSameAnswers) {
  const std::string dump = command("dump").out;
  const std::string source = folder_.write("dump.txt", dump);
  const std::string copy = folder_.path("copy.db");
  const ProgramResult built = urldb({"build", "-o", copy, source});
  ASSERT_EQ(0, built.status) << built.err;
  EXPECT_EQ(dump, urldb({"dump", "-d", copy}).out);
  EXPECT_EQ(0, urldb({"check", "-d", copy}).status);
  const std::string urls =
      "example.com\nwww.example.com/dir/x\nwww.example.com/dirty\nh.org\n"
      "test.jp/\xA5\xC6\nodd.org/50%\n";
  EXPECT_EQ(command("lookup", {}, urls).out,
            urldb({"lookup", "-d", copy}, urls).out);
}

TEST_F(CliInspect, CategoriesGivesBackTheHierarchyToABuild) {
  const char* const names[] = {"a #b", "#c",    "!d",  "e,f",
                               "g/h",  "50%25", " i ", "\xA5\xC6"};
  int previous = names_.addCateogry("top");
  for (const char* name : names) {
    const int id = names_.addCateogry(name);
    add(("gro.elpmaxe/" + std::to_string(id)).c_str(), {pairOf(previous, id)});
    previous = id;
  }
  db_.writeFile(nullptr);
  const std::string before = command("categories").out;
  const std::string pairs = before.substr(before.find("#hierarchy\n"));
  const std::string hierarchy = folder_.write("hierarchy", pairs);
  // The same categories, without their levels.
  std::string source = "#key\n";
  std::istringstream lines(pairs);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t tab = line.find('\t');
    if (tab == std::string::npos) continue;
    const std::string name = line.substr(tab + 1);
    source += "gro.elpmaxe/" + name + "\t" + name + "\n";
  }
  const std::string copy = folder_.path("copy.db");
  const ProgramResult built =
      urldb({"build", "-o", copy, "--hierarchy", hierarchy,
             folder_.write("source.txt", source)});
  EXPECT_EQ(0, built.status) << built.err;
  const std::string after = urldb({"categories", "-d", copy}).out;
  EXPECT_EQ(sorted(pairs), sorted(after.substr(after.find("#hierarchy\n"))));
}

}  // namespace
}  // namespace urldb
