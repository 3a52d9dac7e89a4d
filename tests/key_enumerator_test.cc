#include "urldb/key_enumerator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tests/random_keys.h"
#include "tests/trie_section.h"
#include "urldb/double_array.h"

namespace urldb {
namespace {

using std::string_literals::operator""s;

using Pairs = std::vector<std::pair<std::string, int>>;

Pairs enumerated(const DoubleArray& trie) {
  Pairs pairs;
  for (KeyEnumerator all(trie); all.next();) {
    pairs.emplace_back(all.key(), all.id());
  }
  return pairs;
}

// Stores the keys in reverse order, each with its place as identifier.
void addBackwards(const std::vector<std::string>& keys, DoubleArray* trie) {
  for (std::size_t i = keys.size(); i > 0; --i) {
    ASSERT_EQ(0, trie->add(keys[i - 1].c_str(), static_cast<int>(i)));
  }
}

void expectInOrder(const std::vector<std::string>& keys) {
  DoubleArray trie(256, 0);
  addBackwards(keys, &trie);
  Pairs expected;
  for (const std::string& key : keys) {
    expected.emplace_back(key, static_cast<int>(expected.size()) + 1);
  }
  EXPECT_EQ(expected, enumerated(trie));
}

TEST(KeyEnumerator, EmptyTrieHasNoKey) {
  const DoubleArray trie(64, 0);
  KeyEnumerator all(trie);
  EXPECT_FALSE(all.next());
  EXPECT_FALSE(all.next());
}

TEST(KeyEnumerator, OneKey) {
  expectInOrder({""});
  expectInOrder({"a"});
  expectInOrder({"\xFF\x01"});
}

TEST(KeyEnumerator, StaysAtTheEnd) {
  DoubleArray trie(64, 0);
  trie.add("a", 1);
  KeyEnumerator all(trie);
  EXPECT_TRUE(all.next());
  EXPECT_FALSE(all.next());
  EXPECT_FALSE(all.next());
}

TEST(KeyEnumerator, ReadsInTheOrderOfUnsignedBytes) {
  expectInOrder({"\x01", "0", "A", "a", "z", "\x7E", "\x80", "\xA5", "\xFF"});
  expectInOrder({"a\x01", "a\x7E", "a\x80", "a\xFF"});
}

// The terminal byte, 127, is a label between others, but stands for the end.
TEST(KeyEnumerator, KeyComesBeforeThoseThatItBegins) {
  expectInOrder({"", "\x01", "\x7E", "\x80"});
  expectInOrder({"a", "a\x01", "a\x7E", "a\x7E\x7E", "a\x80", "a\x80z", "b"});
  expectInOrder({"a", "aa", "aaa", "aaaa", "aaab", "aab", "ab"});
  expectInOrder({"a\x7E", "a\x7E\x01", "a\x7E\xFF", "a\x80", "a\x80\x01"});
}

TEST(KeyEnumerator, JoinsBranchesAndRecords) {
  expectInOrder({"gro.elpmaxe", "gro.elpmaxe.www/", "gro.elpmaxe/",
                 "gro.elpmaxe/dir/file?query", "gro.elqmaxe/"});
}

TEST(KeyEnumerator, ReadsStoredFormsOfKeys) {
  DoubleArray trie(64, 3);
  trie.add("b\xA3\xE1", 1);
  trie.add("a", 2);
  EXPECT_EQ(Pairs({{"A", 2}, {"BA", 1}}), enumerated(trie));
}

TEST(KeyEnumerator, ReadsNegativeIdentifiers) {
  DoubleArray trie(64, 0);
  trie.add("a", -1);
  trie.add("ab", INT32_MIN);
  EXPECT_EQ(Pairs({{"a", -1}, {"ab", INT32_MIN}}), enumerated(trie));
}

TEST(KeyEnumerator, SeveralReadOneTrieAtOnce) {
  DoubleArray trie(64, 0);
  for (const char* key : {"a", "b", "c"}) trie.add(key, 1);
  KeyEnumerator first(trie);
  ASSERT_TRUE(first.next());
  KeyEnumerator second(trie);
  ASSERT_TRUE(second.next());
  ASSERT_TRUE(first.next());
  EXPECT_EQ("b", first.key());
  EXPECT_EQ("a", second.key());
}

TEST(KeyEnumerator, AgreesWithAMapOnRandomKeys) {
  const std::string alphabets[] = {"ab", "\x01\x7E\x80\xFF", "abcde/.",
                                   everyKeyByte()};
  for (unsigned seed = 1; seed <= 10; ++seed) {
    for (const std::string& alphabet : alphabets) {
      RandomKeys random(seed);
      DoubleArray trie(256, 0);
      Keys model;  // std::string compares unsigned bytes
      for (int id = 1; id <= 1000; ++id) {
        const std::string key = random.key(alphabet, 12);
        if (trie.add(key.c_str(), id) == 0) model[key] = id;
      }
      const Pairs expected(model.begin(), model.end());
      ASSERT_EQ(expected, enumerated(trie));
      sectionOf(trie);  // compacts
      ASSERT_EQ(expected, enumerated(trie));
    }
  }
}

TEST(KeyEnumerator, LongKeysAreWhole) {
  const std::string longest(std::size_t{1} << 20, 'k');
  expectInOrder({longest.substr(0, 1000), longest, longest + "a"});
}

// What hangs together from the root is read once, whatever the cells say.
TEST(KeyEnumerator, EndsOnCellsThatLoop) {
  TrieSection section;
  section.size = 4;
  section.posTail = 7;
  section.tail = "\0\x7F\0\0\0\0\5\0"s;
  const struct {
    std::vector<int32_t> base;
    std::vector<int32_t> check;
  } cases[] = {
      {{4, 1, 1, 1, 1}, {0, -2, 2, 2, 2}},     // a cell is its own parent
      {{4, 1, 1, 2, 1}, {0, -2, 1, 4, 3}},     // two cells, each other's
      {{4, 0, 0, 0, 0}, {0, 1, 1, 1, 1}},      // the root, too
      {{4, 1, -1, 1, 1}, {0, 3, 1, 2, 3}},     // the root below others
      {{4, -1, -1, -1, -1}, {0, 1, 1, 1, 1}},  // a leaf as root
      {{4, 1, 1, 1, 1}, {0, 0, 0, 0, 0}},      // nothing in use
      {{4, 1, -9, -7, -6}, {0, 1, 1, 1, 1}},   // records outside TAIL
      {{4, 1, -3, -2, -1}, {0, 1, 1, 1, 1}},   // records that overlap
      {{4, INT32_MAX, 1, 1, 1}, {0, 1, 1, 1, 1}},
      {{4, INT32_MIN, 1, 1, 1}, {0, 1, 1, 1, 1}},
      {{4, 1, INT32_MIN, INT32_MIN, 1}, {0, INT32_MIN, 1, 1, INT32_MAX}},
  };
  for (const auto& c : cases) {
    section.base = c.base;
    section.check = c.check;
    DoubleArray trie(16, 0);
    readSection(&trie, section.bytes());
    EXPECT_LE(enumerated(trie).size(), 4U);
  }
}

// Its keys are those below the terminal arc of a sound trie only.
TEST(KeyEnumerator, NothingHangsBelowATerminalArc) {
  TrieSection section;
  section.size = 129;
  section.base.assign(130, 0);
  section.check.assign(130, 0);
  section.base[0] = 129;
  section.base[1] = 1;
  section.check[128] = 1;  // 1 + 127
  section.base[128] = 128;
  section.check[129] = 128;
  section.base[129] = -1;
  section.posTail = 7;
  section.tail = "\0\x7F\0\0\0\0\5\0"s;
  DoubleArray trie(16, 0);
  readSection(&trie, section.bytes());
  EXPECT_EQ(Pairs(), enumerated(trie));
}

}  // namespace
}  // namespace urldb
