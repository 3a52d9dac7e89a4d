#include "tools/name_codec.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace urldb {
namespace {

TEST(NameCodec, NamesTravelThroughEucJp) {
  constexpr struct {
    const char *utf8, *euc;
  } cases[] = {
      {"news", "news"},
      {"News & more", "News & more"},
      {"\xE3\x83\x86\xE3\x82\xB9\xE3\x83\x88", "\xA5\xC6\xA5\xB9\xA5\xC8"},
      {"\xEF\xBD\xB1", "\x8E\xB1"},      // half-width katakana
      {"\xE4\xB8\x82", "\x8F\xB0\xA1"},  // JIS X 0212
      {"\xC3\xA9", "\x8F\xAB\xB1"},      // e with acute, JIS X 0212 as well
      {"\xEF\xBC\xBA", "\xA3\xDA"},      // full-width Z, which is not folded
      {"\xEF\xBC\x8F", "\xA1\xBF"},      // nor is the full-width slash
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.utf8);
    EXPECT_EQ(c.euc, toEucName(c.utf8));
    EXPECT_EQ(c.utf8, toUtf8Name(c.euc));
  }
}

TEST(NameCodec, FullWidthFormsAreFoldedAndLettersKeepTheirCase) {
  EXPECT_EQ("ABC123", toEucName("\xEF\xBC\xA1\xEF\xBC\xA2\xEF\xBC\xA3"
                                "\xEF\xBC\x91\xEF\xBC\x92\xEF\xBC\x93"));
  EXPECT_EQ("abc", toEucName("\xEF\xBD\x81\xEF\xBD\x82\xEF\xBD\x83"));
}

TEST(NameCodec, LongNamesAreConvertedWhole) {
  std::string utf8;
  std::string euc;
  for (int i = 0; i < 10000; ++i) {
    utf8 += i % 3 == 0 ? "x" : "\xE3\x83\x86";
    euc += i % 3 == 0 ? "x" : "\xA5\xC6";
  }
  EXPECT_EQ(euc, toEucName(utf8));
  EXPECT_EQ(utf8, toUtf8Name(euc));
}

TEST(NameCodec, NamesThatCannotBeStoredAreRefused) {
  constexpr struct {
    const char *what, *utf8;
  } cases[] = {
      {"empty", ""},
      {"TAB", "a\tb"},
      {"line end", "a\n"},
      {"DEL", "a\x7F"},
      {"C1 control", "a\xC2\x85"},
      {"no EUC-JP form", "\xF0\x9F\x98\x80"},
      {"not UTF-8", "caf\xE9"},
      {"cut UTF-8", "\xE3\x83"},
      {"surrogate", "\xED\xA0\x80"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(std::nullopt, toEucName(c.utf8)) << c.what;
  }
  EXPECT_EQ(std::nullopt, toEucName(std::string_view("a\0b", 3)));
}

TEST(NameCodec, BytesThatAreNoEucJpBecomeReplacementCharacters) {
  constexpr struct {
    const char *euc, *utf8;
  } cases[] = {
      {"", ""},
      {"\xFFnews", "\xEF\xBF\xBDnews"},
      {"news\xA5", "news\xEF\xBF\xBD"},  // half a character at the end
      {"\xA5 x", "\xEF\xBF\xBD x"},
      {"\xFF\xA5\xC6\xFF", "\xEF\xBF\xBD\xE3\x83\x86\xEF\xBF\xBD"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.utf8, toUtf8Name(c.euc));
}

TEST(NameCodec, AFailureLeavesNoTraceInTheNextName) {
  EXPECT_FALSE(toEucName("\xE3\x83"));
  EXPECT_EQ("\xA5\xC6", toEucName("\xE3\x83\x86"));
  EXPECT_EQ("\xEF\xBF\xBD", toUtf8Name("\xA5"));
  EXPECT_EQ("\xE3\x83\x86", toUtf8Name("\xA5\xC6"));
}

}  // namespace
}  // namespace urldb
