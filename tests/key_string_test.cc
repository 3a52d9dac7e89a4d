#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/expect_error.h"
#include "tests/failing_new.h"
#include "urldb/inner_string.h"
#include "urldb/tail_record.h"
#include "urldb/tail_string.h"

namespace urldb {
namespace {

using std::string_literals::operator""s;

// A NUL-terminated text in a heap block of exactly its size, so that a reader
// beyond its end is caught.
class ExactText {
 public:
  explicit ExactText(std::string_view text)
      : bytes_(new unsigned char[text.size() + 1]) {
    std::memcpy(bytes_.get(), text.data(), text.size());
    bytes_[text.size()] = 0;
  }
  const unsigned char* get() const { return bytes_.get(); }

 private:
  std::unique_ptr<unsigned char[]> bytes_;
};

InnerString inner(std::string_view key, int convMode = 0) {
  return {ExactText(key).get(), convMode};
}

TailString tail(std::string_view text) {
  return TailString(ExactText(text).get());
}

std::string restOf(const InnerString& text) {
  return reinterpret_cast<const char*>(text.rest());
}

// The record that `copyTo` writes, from a block of exactly `length` bytes that
// starts at an odd address.
std::string recordOf(const BaseString& text, int id) {
  const auto size = static_cast<std::size_t>(text.length());
  std::vector<unsigned char> room(size + 1);
  text.copyTo(room.data() + 1, id);
  return {room.begin() + 1, room.end()};
}

std::string inHostOrder(int id) {
  std::string bytes(sizeof id, '\0');
  std::memcpy(bytes.data(), &id, sizeof id);
  return bytes;
}

std::vector<int> walk(BaseString* text) {
  std::vector<int> bytes;
  for (; int{*text} != 0; ++*text) bytes.push_back(*text);
  return bytes;
}

TEST(InnerString, IsTheKeyWithItsTerminalByte) {
  InnerString text = inner("ab\xFF\x80\x01");
  EXPECT_EQ(std::vector<int>({'a', 'b', 255, 128, 1, 127}), walk(&text));
  EXPECT_EQ(0, int{text});
}

TEST(InnerString, EmptyKeyIsTheTerminalByteAlone) {
  InnerString text = inner("");
  EXPECT_TRUE(text.isTerm());
  EXPECT_EQ(0U, text.keyLength());
  EXPECT_EQ(6, text.length());
  EXPECT_EQ(std::vector<int>({127}), walk(&text));
}

TEST(InnerString, TextPointerFollowsTheCursor) {
  InnerString text = inner("abc");
  EXPECT_STREQ("abc\x7F", static_cast<char*>(text));
  ++text;
  ++text;
  EXPECT_STREQ("c\x7F", static_cast<char*>(text));
  EXPECT_EQ("c\x7F", restOf(text));
  EXPECT_EQ(3U, text.keyLength());  // of the whole key still
}

TEST(InnerString, KnowsTheTerminalByte) {
  InnerString text = inner("a");
  EXPECT_FALSE(text.isTerm());
  ++text;
  EXPECT_TRUE(text.isTerm());
  ++text;
  EXPECT_FALSE(text.isTerm());
  EXPECT_EQ(127, InnerString::getTerm());
}

TEST(InnerString, SkipsManyBytesAtOnce) {
  InnerString text = inner("abcdef");
  text.skip(0);
  EXPECT_EQ('a', int{text});
  text.skip(4);
  EXPECT_EQ('e', int{text});
  text.skip(3);
  EXPECT_EQ(0, int{text});
}

TEST(InnerString, RecordHoldsTheRestAndTheIdentifierInHostOrder) {
  InnerString text = inner("ab");
  EXPECT_EQ(8, text.length());
  EXPECT_EQ("ab\x7F\0"s + inHostOrder(0x01020304), recordOf(text, 0x01020304));
  ++text;
  EXPECT_EQ(7, text.length());
  EXPECT_EQ("b\x7F\0"s + inHostOrder(-2), recordOf(text, -2));
  ++text;
  ++text;  // on the NUL: what follows the terminal arc
  EXPECT_EQ(5, text.length());
  EXPECT_EQ("\0"s + inHostOrder(7), recordOf(text, 7));
}

TEST(InnerString, RefusesTheTerminalByteInAKey) {
  for (const std::string& key : {"\x7F"s, "a\x7F"s, "\x7F z"s, "a\x7F z"s}) {
    const std::string message = "Invalid Argument: " + key;
    for (const int convMode : {0, 1, 2, 3}) {
      expectError(ERR_INVALID_ARGUMENT, 61, message.c_str(),
                  [&] { inner(key, convMode); });
    }
  }
}

TEST(InnerString, RefusedKeyIsNoFormat) {
  expectError(ERR_INVALID_ARGUMENT, 61, "Invalid Argument: %s%n%d\x7F",
              [] { inner("%s%n%d\x7F"); });
}

TEST(InnerString, RefusedLongKeyIsCutInTheMessage) {
  const std::string key(100000, 'k');
  const std::string message =
      ("Invalid Argument: " + key).substr(0, 511);  // the room of a message
  expectError(ERR_INVALID_ARGUMENT, 61, message.c_str(),
              [&] { inner(key + '\x7F'); });
}

TEST(InnerString, NormalisesAsTheModeSays) {
  constexpr struct {
    const char* key;
    int convMode;
    const char* stored;
  } cases[] = {
      {"aZ/\xA3\xC1\xA3\xE1", 0, "aZ/\xA3\xC1\xA3\xE1"},
      {"aZ/\xA3\xC1\xA3\xE1", 1, "AZ/\xA3\xC1\xA3\xE1"},
      {"aZ/\xA3\xC1\xA3\xE1", 2, "aZ/Aa"},
      {"aZ/\xA3\xC1\xA3\xE1", 3, "AZ/AA"},
      {"aZ/\xA3\xC1\xA3\xE1", 4, "aZ/\xA3\xC1\xA3\xE1"},  // other bits: no fold
      {"aZ/\xA3\xC1\xA3\xE1", -1, "AZ/AA"},
      {"x\xA3", 3, "X\xA3"},  // a lone first byte stays
      {"\x8F\xA1\xA1z", 3, "\x8F\xA1\xA1Z"},
      {"", 3, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.key) + " in mode " + std::to_string(c.convMode));
    const InnerString text = inner(c.key, c.convMode);
    EXPECT_EQ(std::string(c.stored) + '\x7F', restOf(text));
    EXPECT_EQ(std::strlen(c.stored), text.keyLength());
    EXPECT_EQ(static_cast<int>(std::strlen(c.stored)) + 6, text.length());
  }
}

TEST(InnerString, ComparesTheRestAsStrcmp) {
  InnerString text = inner("zab");
  ++text;
  EXPECT_EQ(0, text.compare("ab\x7F"));
  EXPECT_GT(text.compare("ab"), 0);
  EXPECT_LT(text.compare("ab\x80"), 0);  // unsigned bytes
  EXPECT_GT(text.compare("aa\x7F"), 0);
  EXPECT_GT(text.compare(""), 0);
}

TEST(InnerString, ComparesPrefixesWithoutTheTerminalByteOfTheStoredText) {
  InnerString text = inner("xabc");
  ++text;
  constexpr struct {
    const char* stored;
    bool matches;
  } cases[] = {
      {"abc\x7F", true}, {"ab\x7F", true},    {"\x7F", true},   {"", true},
      {"ac\x7F", false}, {"abcd\x7F", false}, {"b\x7F", false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.matches, text.cmpPrefix(c.stored) == 0) << c.stored;
  }
}

TEST(InnerString, EmptyObjectHasNoLength) {
  const InnerString text(nullptr, 3);
  expectError(ERR_INVALID_DATA, 61, [&] { text.length(); });
}

// Around the size up to which a text is kept inside the object, and far beyond.
TEST(InnerString, TakesKeysOfAnyLength) {
  for (std::size_t n = 0; n < 1100; ++n) {
    const std::string key(n, 'q');
    const InnerString text = inner(key, 3);
    ASSERT_EQ(std::string(n, 'Q') + '\x7F', restOf(text)) << n;
    ASSERT_EQ(n, text.keyLength());
  }
  const std::string key(std::size_t{1} << 20, 'q');
  EXPECT_EQ(key + '\x7F', restOf(inner(key)));
}

// The code and section of the error that `action` ends with when no memory is
// left, as one number.
template <class Action>
int failureWithoutMemory(const Action& action) {
  try {
    const FailingNew noMemory(1);
    action();
  } catch (const ErrException& error) {
    return error.getErrCode() * 100 + error.getSection();
  }
  return 0;
}

TEST(InnerString, LongKeyWithoutMemoryIsCode1) {
  const ExactText key(std::string(600, 'k'));
  EXPECT_EQ(161, failureWithoutMemory([&] { InnerString(key.get(), 0); }));
}

TEST(TailString, WalksTheStringOfARecord) {
  TailString text = tail("ab\xFE\x7F");
  EXPECT_EQ(std::vector<int>({'a', 'b', 254, 127}), walk(&text));
  EXPECT_EQ(0, int{text});
}

TEST(TailString, CopiesNothingBehindTheNul) {
  const unsigned char record[] = {'x', 0x7F, 0, 'i', 'd', 'i', 'd'};
  TailString text(record);
  EXPECT_STREQ("x\x7F", static_cast<char*>(text));
  EXPECT_EQ(7, text.length());
}

TEST(TailString, TextPointerStaysAtTheStart) {
  TailString text = tail("abc\x7F");
  ++text;
  ++text;
  EXPECT_STREQ("abc\x7F", static_cast<char*>(text));
  EXPECT_EQ('c', int{text});
}

TEST(TailString, RecordHoldsWhatIsLeft) {
  TailString text = tail("abc\x7F");
  EXPECT_EQ(9, text.length());
  EXPECT_EQ("abc\x7F\0"s + inHostOrder(5), recordOf(text, 5));
  ++text;
  ++text;
  EXPECT_EQ(7, text.length());
  EXPECT_EQ("c\x7F\0"s + inHostOrder(0x7FFFFFFF), recordOf(text, 0x7FFFFFFF));
  ++text;
  ++text;
  EXPECT_EQ(5, text.length());
  EXPECT_EQ("\0"s + inHostOrder(1), recordOf(text, 1));
}

TEST(TailString, EmptyStringIsARecordOfFiveBytes) {
  const TailString text = tail("");
  EXPECT_EQ(0, int{text});
  EXPECT_EQ(5, text.length());
}

TEST(TailString, EmptyObjectHasNoLength) {
  const TailString text(nullptr);
  expectError(ERR_INVALID_DATA, 62, [&] { text.length(); });
}

TEST(TailString, TakesTextsOfAnyLength) {
  for (std::size_t n = 0; n < 1100; ++n) {
    const std::string bytes(n, 'q');
    TailString text = tail(bytes);
    ASSERT_EQ(bytes, static_cast<char*>(text));
    ASSERT_EQ(static_cast<int>(n) + 5, text.length());
  }
}

TEST(TailString, LongTextWithoutMemoryIsCode1) {
  const ExactText record(std::string(600, 'k'));
  EXPECT_EQ(162, failureWithoutMemory([&] { TailString(record.get()); }));
}

// The splitting of a record: both kinds of text through their common base.
TEST(BaseString, ServesKeysAndRemaindersAlike) {
  InnerString key = inner("abd");
  TailString old = tail("abc\x7F");
  BaseString* texts[] = {&key, &old};
  for (BaseString* text : texts) {
    ++*text;
    ++*text;
    EXPECT_EQ(7, text->length());
  }
  EXPECT_EQ("d\x7F\0"s + inHostOrder(9), recordOf(*texts[0], 9));
  EXPECT_EQ("c\x7F\0"s + inHostOrder(8), recordOf(*texts[1], 8));
}

TEST(TailRecord, SizeIsTheTextAndFiveBytes) {
  EXPECT_EQ(5, tailRecordSize(ExactText("").get()));
  EXPECT_EQ(8, tailRecordSize(ExactText("ab\x7F").get()));
}

TEST(TailRecord, IsWrittenToAnyAddress) {
  for (std::size_t offset = 0; offset < 8; ++offset) {
    std::vector<unsigned char> room(offset + 7);
    writeTailRecord(room.data() + offset, ExactText("z\x7F").get(), 0x0A0B0C0D);
    EXPECT_EQ("z\x7F\0"s + inHostOrder(0x0A0B0C0D),
              std::string(room.begin() + static_cast<std::ptrdiff_t>(offset),
                          room.end()));
  }
}

}  // namespace
}  // namespace urldb
