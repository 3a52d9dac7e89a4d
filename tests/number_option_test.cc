#include "tools/number_option.h"

#include <gtest/gtest.h>

namespace urldb {
namespace {

TEST(ParseDecimal, TakesDigitsWithinTheLimits) {
  constexpr struct {
    const char* text;
    int value;
  } cases[] = {{"0", 0}, {"010", 10}, {"7", 7}, {"36500", 36500}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(c.value, parseDecimal(c.text, 0, 36500));
  }
  EXPECT_EQ(2147483647, parseDecimal("2147483647", 0, 2147483647));
}

TEST(ParseDecimal, RefusesEverythingElse) {
  for (const char* text :
       {"", "0x10", " 3", "3 ", "+3", "-1", "3.0", "1e2", "1'000", "0b1",
        "36501", "2147483648", "99999999999999999999999", "\xEF\xBC\x93"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(std::nullopt, parseDecimal(text, 0, 36500));
  }
  EXPECT_EQ(std::nullopt, parseDecimal("0", 1, 4));
  EXPECT_EQ(std::nullopt, parseDecimal(std::string_view("3\0", 2), 0, 9));
}

// What an option makes of "--number TEXT".
int parsed(const char* text) {
  CLI::App app;
  int number = -1;
  addNumberOption(&app, "--number", &number, 1, 30, "A number");
  app.parse(std::vector<std::string>{text, "--number"});
  return number;
}

TEST(NumberOption, IsWrongUsageWhenItIsNoNumber) {
  EXPECT_EQ(10, parsed("010"));
  try {
    parsed("0x10");
    FAIL();
  } catch (const CLI::ParseError& error) {
    EXPECT_STREQ("--number: '0x10' is no number from 1 to 30", error.what());
  }
}

TEST(NumberOption, HelpShowsTheDescriptionAlone) {
  CLI::App app;
  int number = 0;
  addNumberOption(&app, "--number", &number, 1, 30, "A number");
  EXPECT_NE(std::string::npos, app.help().find("--number N "));
  EXPECT_EQ(std::string::npos, app.help().find("[1"));
  EXPECT_EQ(std::string::npos, app.help().find("INT"));
}

}  // namespace
}  // namespace urldb
