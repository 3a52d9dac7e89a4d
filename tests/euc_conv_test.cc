#include "url/euc_conv.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <string>

namespace urldb {
namespace {

// Converts a copy in a block of exactly its size.
std::string converted(const std::string& text, bool upper, bool zen2han) {
  const auto block = std::make_unique<char[]>(text.size() + 1);
  std::memcpy(block.get(), text.c_str(), text.size() + 1);
  const int length = EUCConv().convert(block.get(), upper, zen2han);
  EXPECT_EQ(static_cast<std::size_t>(length), std::strlen(block.get()));
  EXPECT_LE(static_cast<std::size_t>(length), text.size());
  return block.get();
}

// The characters that are folded, by what JIS X 0208 says of their places: the
// digits and letters of row 3 lie as in ASCII, and of row 1 there are the
// ideographic space (cell 1), '!' (cell 10) and '"' (cell 41).
std::map<unsigned, char> foldedCharacters() {
  std::map<unsigned, char> folded = {
      {0xA1A0 + 1, ' '}, {0xA1A0 + 10, '!'}, {0xA1A0 + 41, '"'}};
  for (const char c : std::string("0123456"
                                  "ABCDEFGHIJKLMN"
                                  "abcdefghijklmnopqrstuvwx"))
    folded[0xA380u + static_cast<unsigned>(c)] = c;
  return folded;
}

// The conversion said once more, slowly: cut into characters, then each by
// itself.
std::string modelOf(const std::string& text, bool upper, bool zen2han) {
  static const std::map<unsigned, char> kFolded = foldedCharacters();
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const auto first = static_cast<unsigned char>(text[at]);
    const std::size_t size = first == 0x8F ? 3 : first >= 0x80 ? 2 : 1;
    std::string character = text.substr(at, size);
    at += character.size();
    if (zen2han && character.size() == 2) {
      const unsigned code =
          first * 256u + static_cast<unsigned char>(character[1]);
      const auto found = kFolded.find(code);
      if (found != kFolded.end()) character = std::string(1, found->second);
    }
    if (upper && character.size() == 1 && character[0] >= 'a' &&
        character[0] <= 'z')
      character[0] = static_cast<char>(character[0] - 32);
    result += character;
  }
  return result;
}

void expectLikeModel(const std::string& text) {
  for (const bool upper : {false, true})
    for (const bool zen2han : {false, true})
      ASSERT_EQ(modelOf(text, upper, zen2han), converted(text, upper, zen2han))
          << "upper " << upper << ", zen2han " << zen2han << ", text "
          << testing::PrintToString(text);
}

TEST(EUCConv, FoldsAsciiToUpperCaseOnlyWhenAsked) {
  EXPECT_EQ("WWW.EXAMPLE.COM", converted("www.Example.COM", true, false));
  EXPECT_EQ("WWW.EXAMPLE.COM", converted("www.Example.COM", true, true));
  EXPECT_EQ("www.Example.COM", converted("www.Example.COM", false, false));
  EXPECT_EQ("www.Example.COM", converted("www.Example.COM", false, true));
}

TEST(EUCConv, TurnsFullWidthFormsIntoOneByte) {
  const std::string abc123 = "\xA3\xC1\xA3\xC2\xA3\xC3\xA3\xB1\xA3\xB2\xA3\xB3";
  EXPECT_EQ("ABC123", converted(abc123, false, true));
  EXPECT_EQ(abc123, converted(abc123, false, false));
  EXPECT_EQ(abc123, converted(abc123, true, false));
}

TEST(EUCConv, FullWidthSmallLettersFoldToUpperCase) {
  const std::string abc = "\xA3\xE1\xA3\xE2\xA3\xE3";
  EXPECT_EQ("ABC", converted(abc, true, true));
  EXPECT_EQ("abc", converted(abc, false, true));
}

TEST(EUCConv, CharactersThatTheSearchMissesStayTwoBytes) {
  for (const char* text : {"\xA3\xB7", "\xA3\xDA", "\xA3\xF9", "\xA1\xBF"}) {
    EXPECT_EQ(text, converted(text, false, true));
    EXPECT_EQ(text, converted(text, true, true));
  }
}

TEST(EUCConv, TextThatEndsInsideACharacterKeepsItsBytes) {
  for (const char* text : {"\xA4", "\xA1", "\xA3", "\x8E", "\xFF", "a\xA3",
                           "\x8F", "\x8F\xB0", "\xA4\xA2\x8F", "\x80"}) {
    EXPECT_EQ(text, converted(text, false, true));
    EXPECT_EQ(text, converted(text, false, false));
  }
  EXPECT_EQ("A\xA3", converted("\xA3\xC1\xA3", true, true));
}

TEST(EUCConv, BytesInsideLongerCharactersAreNotFolded) {
  constexpr struct {
    const char *text, *expected;
  } kCases[] = {
      {"\xA4z\xC1z", "\xA4z\xC1z"},  // second bytes
      {"\x8F\x62zz", "\x8F\x62zZ"},  // second and third
      {"\x8F\xA3\xC1\xA3\xC1",
       "\x8F\xA3\xC1"
       "A"},                               // JIS X 0212
      {"\x8E\xB1z", "\x8E\xB1Z"},          // half-width katakana
      {"\xA4\xA3\xC1z", "\xA4\xA3\xC1z"},  // A3 C1 across two
      {"\xA2\xA3\xA3\xC1",
       "\xA2\xA3"
       "A"},
      {"\xA1\xA1\xA1\xAA\xA1\xC9", " !\""},
  };
  for (const auto& c : kCases)
    EXPECT_EQ(c.expected, converted(c.text, true, true));
}

TEST(EUCConv, EmptyTextStaysEmpty) { EXPECT_EQ("", converted("", true, true)); }

TEST(EUCConv, KnowsExactly48Characters) {
  const std::map<unsigned, char> folded = foldedCharacters();
  ASSERT_EQ(48u, folded.size());
  const EUCConv conv;
  for (unsigned code = 0; code <= 0xFFFF; ++code) {
    const auto found = folded.find(code);
    ASSERT_EQ(found == folded.end() ? 0 : found->second,
              conv.hankaku(static_cast<unsigned short>(code)))
        << std::hex << code;
  }
}

TEST(EUCConv, TableHoldsEveryPrintableCharacterOnce) {
  std::map<unsigned, unsigned> asciiByCode;
  unsigned ascii = 0x20;
  for (const EUCConv::Row& row : EUCConv::ZenEUC) {
    EXPECT_EQ(ascii++, row.ascii);
    const bool alphanumeric = std::isalnum(row.ascii) != 0;
    EXPECT_EQ(alphanumeric ? 0xA3 : 0xA1, row.code >> 8);
    if (alphanumeric) {
      EXPECT_EQ(row.ascii + 0x80, row.code & 0xFF);
    }
    asciiByCode[row.code] = row.ascii;
  }
  EXPECT_EQ(0x7Fu, ascii);
  EXPECT_EQ(95u, asciiByCode.size());
  // The symbols of row 1 in the order of their cells.
  std::string symbols;
  for (const auto& [code, character] : asciiByCode)
    if (code >> 8 == 0xA1) symbols += static_cast<char>(character);
  EXPECT_EQ(" ,.:;?!`^~_/|'\"()[]{}+-=<>\\$%#&*@", symbols);
}

TEST(EUCConv, EveryTextOfOneOrTwoBytesIsLikeTheModel) {
  for (int first = 1; first < 256; ++first) {
    std::string text(1, static_cast<char>(first));
    expectLikeModel(text);
    text += ' ';
    for (int second = 1; second < 256; ++second) {
      text[1] = static_cast<char>(second);
      expectLikeModel(text);
      if (HasFatalFailure()) return;
    }
  }
}

TEST(EUCConv, RandomTextsAreLikeTheModel) {
  const std::string likely =
      "\xA1\xA3\x8F\x8E\xA1\xA1\xA3\xC1\xA3\xE1\xA3\xF9\xA1\xAA\xA4\xA2"
      "aZ09./\x7F\x80\xFF";
  for (unsigned seed = 1; seed <= 20000; ++seed) {
    std::mt19937 random(seed);
    std::string text(random() % 48, ' ');
    const bool any = seed % 4 == 0;
    for (char& c : text)
      c = any ? static_cast<char>(random() % 255 + 1)
              : likely[random() % likely.size()];
    SCOPED_TRACE(seed);
    expectLikeModel(text);
    if (HasFatalFailure()) return;
  }
}

TEST(EUCConv, EveryBeginningOfATextIsLikeTheModel) {
  const std::string text =
      "www.example\xA3\xC1\x8F\xB0\xA1"
      "a\xA1\xBF\x8E\xB1\xA3\xB7\xA1\xC9z";
  for (std::size_t length = 0; length <= text.size(); ++length)
    expectLikeModel(text.substr(0, length));
}

TEST(EUCConv, LongTextsShrinkInPlace) {
  constexpr std::size_t kCharacters = 500000;
  std::string wide = "z";
  for (std::size_t i = 0; i < kCharacters; ++i) wide += "\xA3\xE1";
  EXPECT_EQ("Z" + std::string(kCharacters, 'A'), converted(wide, true, true));
}

}  // namespace
}  // namespace urldb
