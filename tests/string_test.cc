#include "common/string.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "tests/failing_new.h"

namespace urldb {
namespace {

const char* const kNull = nullptr;

TEST(String, IsNullFromNothingAndFromNull) {
  for (const String& s : {String(), String(kNull)}) {
    EXPECT_EQ(nullptr, static_cast<char*>(s));
    EXPECT_EQ(0, s.length());
    EXPECT_TRUE(s.isEmpty());
    EXPECT_EQ(0, s.hashCode());
  }
}

TEST(String, AnEmptyTextIsEmptyButNotNull) {
  const String s("");
  EXPECT_STREQ("", s);
  EXPECT_EQ(0, s.length());
  EXPECT_TRUE(s.isEmpty());
  EXPECT_EQ(0, s.hashCode());
}

TEST(String, OwnsACopyOfTheText) {
  char text[] = "abc";
  const String s(text);
  text[0] = 'x';
  EXPECT_STREQ("abc", s);
  EXPECT_EQ(3, s.length());
  EXPECT_FALSE(s.isEmpty());
}

TEST(String, CopiesStandAlone) {
  const String s("abc");
  String copy(s);
  EXPECT_EQ(3, copy.length());
  copy.append("x");
  static_cast<char*>(copy)[0] = 'x';
  EXPECT_STREQ("xbcx", copy);
  EXPECT_STREQ("abc", s);
  EXPECT_EQ(nullptr, static_cast<char*>(String(String())));
}

TEST(String, AssignmentReplacesTheText) {
  String s("old text");
  s = "new";
  EXPECT_STREQ("new", s);
  EXPECT_EQ(3, s.length());
  const String other("another");
  s = other;
  EXPECT_STREQ("another", s);
  EXPECT_EQ(7, s.length());
  EXPECT_NE(static_cast<char*>(other), static_cast<char*>(s));
}

TEST(String, AssigningNullOrANullStringEmpties) {
  String s("text");
  s = kNull;
  EXPECT_EQ(nullptr, static_cast<char*>(s));
  EXPECT_EQ(0, s.length());
  s = "text";
  s = String();
  EXPECT_EQ(nullptr, static_cast<char*>(s));
  EXPECT_EQ(0, s.length());
}

TEST(String, AssignmentToItselfKeepsTheArray) {
  String s("text");
  const char* const array = s;
  const String& same = s;
  s = same;
  EXPECT_EQ(array, static_cast<char*>(s));
  EXPECT_STREQ("text", s);
}

TEST(String, MayBeAssignedAPartOfItself) {
  String s("abcdef");
  s = static_cast<const char*>(s) + 2;
  EXPECT_STREQ("cdef", s);
  EXPECT_EQ(4, s.length());
}

TEST(String, Equality) {
  EXPECT_TRUE(String() == String());
  EXPECT_TRUE(String() == kNull);
  EXPECT_TRUE(String("") == String(""));
  EXPECT_TRUE(String("") == "");
  EXPECT_TRUE(String("ab") == String("ab"));
  EXPECT_TRUE(String("ab") == "ab");
  EXPECT_TRUE("ab" == String("ab"));
  EXPECT_TRUE(String("\xE0") == "\xE0");

  EXPECT_FALSE(String() == String(""));
  EXPECT_FALSE(String("") == String());
  EXPECT_FALSE(String() == "");
  EXPECT_FALSE(String("") == kNull);
  EXPECT_FALSE(String("ab") == String());
  EXPECT_FALSE(String("ab") == kNull);
  EXPECT_FALSE(String("ab") == "a");
  EXPECT_FALSE(String("a") == "ab");
  EXPECT_FALSE(String("ab") == "aB");
  EXPECT_TRUE(String("ab") != "aB");
}

TEST(String, HashReadsBytesAsSigned) {
  EXPECT_EQ(97, String("a").hashCode());
  EXPECT_EQ(97 * 31 + 98, String("ab").hashCode());
  EXPECT_EQ(-32, String("\xE0").hashCode());
  EXPECT_EQ(-128, String("\x80").hashCode());
  EXPECT_EQ(127, String("\x7F").hashCode());
  EXPECT_EQ(-32 * 31 - 1, String("\xE0\xFF").hashCode());
}

TEST(String, HashWrapsAroundIn32Bits) {
  std::mt19937 random(5);
  for (int i = 0; i < 100; ++i) {
    std::string text;
    // The same by exact arithmetic modulo 2 to the 32nd.
    int64_t hash = 0;
    for (int n = 0; n < 40; ++n) {
      const auto byte = static_cast<int>(1 + random() % 255);
      text.push_back(static_cast<char>(byte));
      hash = (hash * 31 + (byte < 128 ? byte : byte - 256)) & 0xFFFFFFFF;
    }
    if (hash > INT_MAX) hash -= int64_t{1} << 32;
    EXPECT_EQ(hash, String(text.c_str()).hashCode());
  }
}

TEST(String, AppendJoins) {
  String s("ab");
  s.append("cde");
  EXPECT_STREQ("abcde", s);
  EXPECT_EQ(5, s.length());
  s.append("");
  EXPECT_STREQ("abcde", s);
  s.append(kNull);
  EXPECT_STREQ("abcde", s);
  EXPECT_EQ(5, s.length());
}

TEST(String, AppendToANullStringMakesAText) {
  String s;
  s.append(kNull);
  EXPECT_EQ(nullptr, static_cast<char*>(s));
  s.append("");
  EXPECT_STREQ("", s);
  s.append("x");
  EXPECT_STREQ("x", s);
}

TEST(String, MayAppendItself) {
  String s("ab");
  s.append(s);
  EXPECT_STREQ("abab", s);
  s.append(static_cast<const char*>(s) + 3);
  EXPECT_STREQ("ababb", s);
}

TEST(String, PrefixCuts) {
  String s("abc");
  EXPECT_STREQ("a", s.prefix(1));
  EXPECT_EQ(1, s.prefix(1).length());
  EXPECT_STREQ("ab", s.prefix(2));
  EXPECT_STREQ("abc", s);
}

TEST(String, PrefixOfNothingIsEmptyAndNotNull) {
  String s("abc");
  for (const int n : {0, -1, INT_MIN}) {
    const String none = s.prefix(n);
    EXPECT_STREQ("", none);
    EXPECT_EQ(0, none.length());
  }
}

TEST(String, PrefixBeyondTheEndIsACopyOfTheWhole) {
  String s("abc");
  for (const int n : {3, 10, INT_MAX}) {
    const String whole = s.prefix(n);
    EXPECT_STREQ("abc", whole);
    EXPECT_EQ(3, whole.length());
    EXPECT_NE(static_cast<char*>(s), static_cast<char*>(whole));
  }
  EXPECT_EQ(nullptr, static_cast<char*>(String().prefix(0)));
  EXPECT_EQ(nullptr, static_cast<char*>(String().prefix(5)));
}

TEST(String, SetbufTakesTheLengthFromTheCaller) {
  String s("old");
  s.setbuf("abcdef", 4);
  EXPECT_STREQ("abcd", s);
  EXPECT_EQ(4, s.length());
  s.setbuf("abc", 3);
  EXPECT_STREQ("abc", s);
  EXPECT_EQ(3, s.length());
}

TEST(String, SetbufFillsAShorterTextWithNuls) {
  String s;
  s.setbuf("ab", 5);
  EXPECT_EQ(5, s.length());
  EXPECT_EQ(0, std::memcmp("ab\0\0\0", s, 6));
  const String copy(s);
  EXPECT_EQ(5, copy.length());
  EXPECT_TRUE(copy == s);
  EXPECT_FALSE(s == "ab");
  EXPECT_FALSE(s == String("ab"));
  // Every character counts: 97, 98 and three zeros.
  EXPECT_EQ((97 * 31 + 98) * 31 * 31 * 31, s.hashCode());
}

TEST(String, SetbufReadsNoMoreThanTheLength) {
  const std::string text = "abcdef";
  const std::unique_ptr<char[]> exact(new char[4]);
  std::memcpy(exact.get(), text.data(), 4);  // no NUL behind it
  String s;
  s.setbuf(exact.get(), 4);
  EXPECT_STREQ("abcd", s);
}

TEST(String, SetbufOfNullOrOfNothing) {
  String s("old");
  s.setbuf("abc", 0);
  EXPECT_STREQ("", s);
  EXPECT_EQ(0, s.length());
  s.setbuf("abc", -7);
  EXPECT_STREQ("", s);
  EXPECT_EQ(0, s.length());
  s.setbuf(kNull, 7);
  EXPECT_EQ(nullptr, static_cast<char*>(s));
  EXPECT_EQ(0, s.length());
}

TEST(String, SetbufMayTakeAPartOfItself) {
  String s("abcdef");
  s.setbuf(static_cast<const char*>(s) + 1, 2);
  EXPECT_STREQ("bc", s);
}

TEST(String, OutOfMemoryLeavesTheFormerText) {
  String s("kept");
  const String other("other");
  const auto fails = [](auto&& change) {
    const FailingNew failing(1);
    try {
      change();
      return false;
    } catch (const std::bad_alloc&) {
      return true;
    }
  };
  EXPECT_TRUE(fails([&] { s = "text"; }));
  EXPECT_TRUE(fails([&] { s = other; }));
  EXPECT_TRUE(fails([&] { s.append("text"); }));
  EXPECT_TRUE(fails([&] { s.setbuf("text", 2); }));
  EXPECT_TRUE(fails([&] { s.prefix(2); }));
  EXPECT_STREQ("kept", s);
  EXPECT_EQ(4, s.length());
}

}  // namespace
}  // namespace urldb
