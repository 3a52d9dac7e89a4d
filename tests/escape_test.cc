#include "tools/escape.h"

#include <gtest/gtest.h>

#include <string>

namespace urldb {
namespace {

std::string everyByte() {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  return bytes;
}

TEST(Escape, StoredKeysKeepOnlyPrintableAsciiButPercent) {
  const std::string text = escapeKey(everyByte());
  EXPECT_EQ("%00%01", text.substr(0, 6));
  EXPECT_EQ("%20!\"#$%25&'", text.substr(96, 12));
  for (const char c : text) EXPECT_TRUE(c >= 0x21 && c <= 0x7E) << int{c};
  // 93 bytes stay, the others take three.
  EXPECT_EQ(93U + 163U * 3U, text.size());
}

TEST(Escape, EachFormWritesItsOwnBytes) {
  constexpr struct {
    const char *bytes, *key, *shownKey, *name, *shownName, *text;
  } cases[] = {
      {"a/b", "a/b", "a/b", "a%2Fb", "a%2Fb", "a/b"},
      {"a,b", "a,b", "a,b", "a%2Cb", "a%2Cb", "a,b"},
      {"50%", "50%25", "50%25", "50%25", "50%25", "50%"},
      {"a b", "a%20b", "a%20b", "a%20b", "a b", "a b"},
      {"a\tb", "a%09b", "a%09b", "a%09b", "a%09b", "a%09b"},
      {"a\x7F", "a%7F", "a%7F", "a%7F", "a%7F", "a%7F"},
      {"\xA5\xC6", "%A5%C6", "\xA5\xC6", "%A5%C6", "\xA5\xC6", "\xA5\xC6"},
      {"", "", "", "", "", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.bytes);
    EXPECT_EQ(c.key, escapeKey(c.bytes));
    EXPECT_EQ(c.shownKey, escapeShownKey(c.bytes));
    EXPECT_EQ(c.name, escapeName(c.bytes));
    EXPECT_EQ(c.shownName, escapeShownName(c.bytes));
    EXPECT_EQ(c.text, escapeText(c.bytes));
  }
}

TEST(Escape, UnescapeGivesEveryByteBack) {
  EXPECT_EQ(everyByte(), unescape(escapeKey(everyByte())));
  EXPECT_EQ(everyByte(), unescape(escapeShownKey(everyByte())));
  EXPECT_EQ(everyByte(), unescape(escapeName(everyByte())));
  EXPECT_EQ(everyByte(), unescape(escapeShownName(everyByte())));
}

TEST(Escape, UnescapeTakesDigitsOfEitherCase) {
  EXPECT_EQ("\xAB\xAB", unescape("%aB%Ab"));
}

TEST(Escape, UnescapeRefusesBrokenEscapes) {
  for (const char* broken : {"%", "a%", "%4", "%4g", "%g4", "%%41", "% 41"})
    EXPECT_FALSE(unescape(broken)) << broken;
}

}  // namespace
}  // namespace urldb
