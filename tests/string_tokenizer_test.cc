#include "common/string_tokenizer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/failing_new.h"

namespace urldb {
namespace {

static_assert(!std::is_copy_constructible_v<StringTokenizer>);
static_assert(!std::is_copy_assignable_v<StringTokenizer>);

// All tokens; count() and hasNext() are held against them at every step.
std::vector<std::string> tokensOf(const char* text, const char* delimiters) {
  StringTokenizer tokenizer(text, delimiters);
  std::vector<std::string> tokens;
  std::vector<int> counts = {tokenizer.count()};
  while (const char* token = tokenizer.next()) {
    tokens.emplace_back(token);
    counts.push_back(tokenizer.count());
    EXPECT_EQ(counts.back() > 0, tokenizer.hasNext());
  }
  for (std::size_t i = 0; i < counts.size(); ++i)
    EXPECT_EQ(static_cast<int>(tokens.size() - i), counts[i]);
  EXPECT_FALSE(tokenizer.hasNext());
  EXPECT_EQ(nullptr, tokenizer.next());
  return tokens;
}

using Tokens = std::vector<std::string>;

TEST(StringTokenizer, SplitsAtRunsOfDelimiters) {
  const struct {
    const char *text, *delimiters;
    Tokens tokens;
  } cases[] = {
      {",,a,,b,", ",", {"a", "b"}},
      {"a", ",", {"a"}},
      {"a,", ",", {"a"}},
      {",a", ",", {"a"}},
      {"one two\tthree", " \t", {"one", "two", "three"}},
      {"key = value", " =", {"key", "value"}},
      {",,,", ",", {}},
      {"", ",", {}},
      {"a,b", "", {"a,b"}},
      {"\xA5\xC6,\xA5", ",", {"\xA5\xC6", "\xA5"}},
      {"a\xA5"
       "b",
       "\xA5",
       {"a", "b"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(c.tokens, tokensOf(c.text, c.delimiters));
  }
}

TEST(StringTokenizer, CountsBeforeTheFirstToken) {
  StringTokenizer tokenizer(",,a,,b,", ",");
  EXPECT_EQ(2, tokenizer.count());
  EXPECT_STREQ("a", tokenizer.next());
  EXPECT_STREQ("b", tokenizer.next());
  EXPECT_EQ(nullptr, tokenizer.next());
}

TEST(StringTokenizer, NullInputsMakeNoTokens) {
  EXPECT_EQ(Tokens(), tokensOf(nullptr, ","));
  EXPECT_EQ(Tokens(), tokensOf("a", nullptr));
  EXPECT_EQ(Tokens(), tokensOf(nullptr, nullptr));
  StringTokenizer tokenizer("a", nullptr);
  EXPECT_EQ(nullptr, tokenizer.next(","));
}

TEST(StringTokenizer, NewDelimitersHoldFromThenOn) {
  StringTokenizer tokenizer("key=a,b=c,d", "=");
  EXPECT_EQ(3, tokenizer.count());
  EXPECT_STREQ("key", tokenizer.next());
  EXPECT_STREQ("a", tokenizer.next(","));
  EXPECT_EQ(2, tokenizer.count());
  EXPECT_STREQ("b=c", tokenizer.next());
  EXPECT_STREQ("d", tokenizer.next(""));
  EXPECT_EQ(nullptr, tokenizer.next(","));
}

TEST(StringTokenizer, EmptyDelimitersGiveTheRest) {
  StringTokenizer tokenizer("key = a = b", " =");
  EXPECT_STREQ("key", tokenizer.next());
  EXPECT_STREQ("= a = b", tokenizer.next(""));
  EXPECT_FALSE(tokenizer.hasNext());
}

TEST(StringTokenizer, AskingDoesNotTakeATokenAway) {
  StringTokenizer tokenizer("  a b", " ");
  EXPECT_TRUE(tokenizer.hasNext());
  EXPECT_TRUE(tokenizer.hasNext());
  EXPECT_EQ(2, tokenizer.count());
  EXPECT_STREQ("a", tokenizer.next());
}

TEST(StringTokenizer, TokensStayValidAndLeaveTheCallersTextAlone) {
  const std::string text = "a,b,c";
  StringTokenizer tokenizer(text.c_str(), ",");
  const char* const a = tokenizer.next();
  const char* const b = tokenizer.next();
  const char* const c = tokenizer.next();
  EXPECT_STREQ("a", a);
  EXPECT_STREQ("b", b);
  EXPECT_STREQ("c", c);
  EXPECT_EQ(a + 2, b);
  EXPECT_EQ(b + 2, c);
  EXPECT_EQ("a,b,c", text);
}

TEST(StringTokenizer, SkipDelimitersStopsAtATokenOrAtTheCount) {
  const StringTokenizer tokenizer("x", " ,");
  char text[] = ", ,ab";
  char* cursor = text;
  int left = 5;
  tokenizer.skipDelimiters(cursor, left);
  EXPECT_EQ(text + 3, cursor);
  EXPECT_EQ(2, left);
  cursor = text;
  left = 2;
  tokenizer.skipDelimiters(cursor, left);
  EXPECT_EQ(text + 2, cursor);
  EXPECT_EQ(0, left);
  tokenizer.skipDelimiters(cursor, left);
  EXPECT_EQ(text + 2, cursor);
  EXPECT_EQ(0, left);
}

TEST(StringTokenizer, AgreesWithASlowSplitter) {
  std::mt19937 random(6);
  for (int i = 0; i < 3000; ++i) {
    std::string text;
    for (auto n = random() % 12; n > 0; --n)
      text.push_back("ab,; "[random() % 5]);
    const std::string delimiters = std::string(",; ").substr(random() % 3);
    Tokens expected;
    bool inside = false;
    for (const char c : text) {
      const bool delimiter = delimiters.find(c) != std::string::npos;
      if (!delimiter && !inside) expected.emplace_back();
      if (!delimiter) expected.back().push_back(c);
      inside = !delimiter;
    }
    SCOPED_TRACE(text);
    EXPECT_EQ(expected, tokensOf(text.c_str(), delimiters.c_str()));
  }
}

TEST(StringTokenizer, OutOfMemoryIsBadAlloc) {
  bool failed = false;
  try {
    const FailingNew failing(1);
    const StringTokenizer tokenizer("a", ",");
  } catch (const std::bad_alloc&) {
    failed = true;
  }
  EXPECT_TRUE(failed);
}

}  // namespace
}  // namespace urldb
