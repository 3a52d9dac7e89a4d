#ifndef URLDB_TESTS_CLI_FIXTURE_H_
#define URLDB_TESTS_CLI_FIXTURE_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tests/run_program.h"
#include "tests/temporary_folder.h"
#include "tests/tiny_database.h"
#include "urldb/category_names.h"
#include "urldb/urldb.h"

namespace urldb {

inline constexpr const char* kTest =
    "\xE3\x83\x86\xE3\x82\xB9\xE3\x83\x88";  // UTF-8

// A small database in a folder of its own.
class CliFixture : public testing::Test {
 protected:
  using Arguments = std::vector<std::string>;

  void SetUp() override {
    const int news = names_.addCateogry("news");
    const int sport = names_.addCateogry("sport");
    const int ball = names_.addCateogry("ball");
    const int test = names_.addCateogry("\xA5\xC6\xA5\xB9\xA5\xC8");
    const int odd = names_.addCateogry("50% a,b/c");
    db_.openFile(database().c_str(), &names_, 100, false);
    add("moc.elpmaxe/", {pairOf(news, news)});
    add("moc.elpmaxe.", {pairOf(news, news)});
    add("moc.elpmaxe:", {pairOf(news, news)});
    add("pj.tset/\xA5\xC6", {pairOf(test, test)});
    add("gro.ddo/50%", {pairOf(odd, odd)});
    // The last list of the file; its first place becomes a free position.
    add("moc.elpmaxe.www/dir", {pairOf(news, news), pairOf(sport, ball)});
    db_.writeFile(nullptr);
  }

  void add(const char* key, const std::vector<int>& values) {
    for (const int value : values) {
      db_.add(key, value);
      names_.setHierarchical(value);
    }
  }

  std::string database() const { return folder_.path("test.db"); }

  static ProgramResult urldb(Arguments arguments, std::string_view input = {}) {
    arguments.insert(arguments.begin(), URLDB_PROGRAM);
    return runProgram(arguments, input);
  }

  // `urldb COMMAND -d DATABASE ARGUMENT...`
  ProgramResult command(const char* name, const Arguments& arguments = {},
                        std::string_view input = {}) const {
    Arguments all = {name, "-d", database()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return urldb(all, input);
  }

  // The program and the database as words of a shell line.
  std::string shellLookup() const {
    return std::string("'" URLDB_PROGRAM "' lookup -d '") + database() + "'";
  }

  // Changes the last byte but `fromEnd` of the database.
  void damage(std::size_t fromEnd, char value) const {
    std::string bytes = folder_.read("test.db");
    bytes.at(bytes.size() - 1 - fromEnd) = value;
    folder_.write("test.db", bytes);
  }

  // Its last byte stands before one free position of 4 bytes.
  static constexpr std::size_t kLastValue = 4;

  // Makes the last value of the last list a free position.
  void clearLastValue() const {
    for (std::size_t i = 0; i < 4; ++i) damage(kLastValue + i, '\xFF');
  }

  static bool contains(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
  }

  TemporaryFolder folder_;
  CategoryNames names_;
  URLDB db_;
};

}  // namespace urldb

#endif  // URLDB_TESTS_CLI_FIXTURE_H_
