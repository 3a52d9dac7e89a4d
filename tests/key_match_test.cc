#include "urldb/key_match.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/expect_error.h"
#include "tests/failing_new.h"
#include "tests/random_keys.h"
#include "tests/trie_section.h"
#include "urldb/double_array.h"

namespace urldb {
namespace {

struct Expected {
  int id;
  std::size_t length;
};

void expectMatch(const Expected& expected, const KeyMatch& match) {
  EXPECT_EQ(expected.id, match.id);
  EXPECT_EQ(expected.length, match.length);
}

// As the database holds keys: reversed hosts in capitals.
class KeyMatchModes : public testing::Test {
 protected:
  KeyMatchModes() {
    int id = 0;
    for (const char* key :
         {"gro.h/", "gro.h/dir", "gro.h/dir/deep/", "gro.h/dir/deep/f?q=1"}) {
      trie_.add(key, ++id);
    }
  }

  DoubleArray trie_{1024, 3};
};

TEST_F(KeyMatchModes, AnswerAsTheyAreNamed) {
  constexpr struct {
    const char* asked;
    Expected exact, edge, anyByte;
  } cases[] = {
      {"gro.h/dir", {2, 9}, {2, 9}, {2, 9}},
      {"GRO.H/Dir", {2, 9}, {2, 9}, {2, 9}},
      {"gro.h/dir/x", {0, 0}, {2, 9}, {2, 9}},
      {"gro.h/dir?q", {0, 0}, {2, 9}, {2, 9}},
      {"gro.h/dirty", {0, 0}, {1, 6}, {2, 9}},
      {"gro.h/dirty/deep/", {0, 0}, {1, 6}, {2, 9}},
      {"gro.h/", {1, 6}, {1, 6}, {1, 6}},
      {"gro.h/di", {0, 0}, {1, 6}, {1, 6}},
      {"gro.h", {0, 0}, {0, 0}, {0, 0}},
      {"", {0, 0}, {0, 0}, {0, 0}},
      {"gro.h/dir/deep/file", {0, 0}, {3, 15}, {3, 15}},
      {"gro.h/dir/deep/f?q=12", {0, 0}, {3, 15}, {4, 20}},
      {"gro.h/dir/deep/f?q=1&r", {0, 0}, {4, 20}, {4, 20}},
      {"gro.h/dir/deep/f?q=1", {4, 20}, {4, 20}, {4, 20}},
      {"gro.hx/", {0, 0}, {0, 0}, {0, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.asked);
    expectMatch(c.exact, matchKey(trie_, c.asked, MatchMode::kExact));
    expectMatch(c.edge, matchKey(trie_, c.asked, MatchMode::kEdge));
    expectMatch(c.anyByte, matchKey(trie_, c.asked, MatchMode::kAnyByte));
  }
}

TEST_F(KeyMatchModes, LengthIsThatOfTheNormalisedKey) {
  // Two bytes become one each.
  const char* asked = "\xA3\xE7ro.h/dir/x";
  EXPECT_EQ("GRO.H/DIR/X", normalisedKey(trie_, asked));
  expectMatch({2, 9}, matchKey(trie_, asked, MatchMode::kEdge));
  expectMatch({2, 9}, matchKey(trie_, asked, MatchMode::kAnyByte));
  expectMatch({2, 9}, matchKey(trie_, "\xA3\xE7ro.h/dir", MatchMode::kExact));
}

TEST_F(KeyMatchModes, ThrowAsTheSearchDoes) {
  for (const MatchMode mode :
       {MatchMode::kExact, MatchMode::kEdge, MatchMode::kAnyByte}) {
    expectError(ERR_INVALID_ARGUMENT, 60, "Invalid Argument: key is NULL",
                [&] { matchKey(trie_, nullptr, mode); });
    expectError(ERR_INVALID_ARGUMENT, 61, "Invalid Argument: a\x7F",
                [&] { matchKey(trie_, "a\x7F", mode); });
  }
  expectError(ERR_INVALID_ARGUMENT, 60, "Invalid Argument: key is NULL",
              [&] { normalisedKey(trie_, nullptr); });
  expectError(ERR_INVALID_ARGUMENT, 61, "Invalid Argument: \x7F",
              [&] { normalisedKey(trie_, "\x7F"); });
}

TEST_F(KeyMatchModes, AllocateNothingForAShortKey) {
  int ids[3] = {};
  {
    const FailingNew noMemory(1);
    ids[0] = matchKey(trie_, "gro.h/dir", MatchMode::kExact).id;
    ids[1] = matchKey(trie_, "gro.h/dir/x", MatchMode::kEdge).id;
    ids[2] = matchKey(trie_, "gro.h/dirt", MatchMode::kAnyByte).id;
  }
  for (const int id : ids) EXPECT_EQ(2, id);
}

TEST(KeyMatch, EmptyKeyIsAPrefixThatEndsAtAnEdgeBeforeOne) {
  DoubleArray trie(64, 0);
  trie.add("", 7);
  expectMatch({7, 0}, matchKey(trie, "", MatchMode::kExact));
  expectMatch({7, 0}, matchKey(trie, "", MatchMode::kEdge));
  expectMatch({7, 0}, matchKey(trie, "/a", MatchMode::kEdge));
  expectMatch({0, 0}, matchKey(trie, "a/", MatchMode::kEdge));
  expectMatch({7, 0}, matchKey(trie, "a/", MatchMode::kAnyByte));
}

// The matching of the longest prefix does not stop at one that is no edge.
TEST(KeyMatch, ShorterEdgeAnswersWhereALongerPrefixDoesNot) {
  DoubleArray trie(64, 0);
  trie.add("a/", 1);
  trie.add("a/b", 2);
  trie.add("a/bc", 3);
  trie.add("a/bcd", 4);
  expectMatch({1, 2}, matchKey(trie, "a/bcde", MatchMode::kEdge));
  expectMatch({4, 5}, matchKey(trie, "a/bcd.e", MatchMode::kEdge));
  expectMatch({3, 4}, matchKey(trie, "a/bc/d", MatchMode::kEdge));
  expectMatch({4, 5}, matchKey(trie, "a/bcde", MatchMode::kAnyByte));
}

constexpr std::string_view kEdges = "/.:?#&=;";

TEST(EndsAtEdge, KnowsTheEightEdges) {
  for (int c = 1; c < 256; ++c) {
    const std::string next(1, static_cast<char>(c));
    const bool edge = kEdges.find(next[0]) != std::string_view::npos;
    SCOPED_TRACE(c);
    EXPECT_EQ(edge, endsAtEdge("ab", "ab" + next));
    EXPECT_EQ(edge, endsAtEdge("ab", "ab" + next + "z"));
    EXPECT_EQ(edge, endsAtEdge("ab" + next, "ab" + next + "z"));
    EXPECT_TRUE(endsAtEdge("ab" + next, "ab" + next));
    if (c == 127) continue;
    DoubleArray trie(64, 0);
    trie.add("ab", 1);
    EXPECT_EQ(edge ? 1 : 0,
              matchKey(trie, ("ab" + next + "z").c_str(), MatchMode::kEdge).id);
    trie.add(("cd" + next).c_str(), 2);
    EXPECT_EQ(edge ? 2 : 0,
              matchKey(trie, ("cd" + next + "z").c_str(), MatchMode::kEdge).id);
  }
}

TEST(EndsAtEdge, KeyThatIsUsedUpEndsAtAnEdge) {
  EXPECT_TRUE(endsAtEdge("", ""));
  EXPECT_TRUE(endsAtEdge("a", "a"));
  EXPECT_FALSE(endsAtEdge("", "a"));
  EXPECT_TRUE(endsAtEdge("", "/a"));
}

TEST(EndsAtEdge, SeparatesADirectoryFromAnotherOne) {
  EXPECT_TRUE(endsAtEdge("h/dir", "h/dir"));
  EXPECT_TRUE(endsAtEdge("h/dir", "h/dir/x"));
  EXPECT_TRUE(endsAtEdge("h/dir", "h/dir?q"));
  EXPECT_FALSE(endsAtEdge("h/dir", "h/dirty"));
  EXPECT_FALSE(endsAtEdge("h/dir", "h/dir-x"));
  EXPECT_FALSE(endsAtEdge("h/dir", "h/dir\xFF"));
}

// The longest stored key that is a prefix of `asked` and ends as `mode` wants.
KeyMatch plainMatch(const Keys& keys, const std::string& asked,
                    MatchMode mode) {
  KeyMatch best;
  for (const auto& [key, id] : keys) {
    if (asked.compare(0, key.size(), key) != 0) continue;
    if (mode == MatchMode::kExact && key != asked) continue;
    if (mode == MatchMode::kEdge && !endsAtEdge(key, asked)) continue;
    if (best.id == 0 || key.size() > best.length) best = {id, key.size()};
  }
  return best;
}

TEST(KeyMatch, AgreesWithAMapInEveryModeOnRandomKeys) {
  int atAShorterEdge = 0;
  for (unsigned seed = 1; seed <= 30; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomKeys random(seed);
    const std::string alphabet = seed % 2 == 0 ? "ab/" : "ab/.:?#&=;\x01\xFF";
    DoubleArray trie(256, 0);
    Keys keys;
    for (int id = 1; id <= 300; ++id) {
      const std::string key = random.key(alphabet, 8);
      if (trie.add(key.c_str(), id) == 0) keys[key] = id;
      const std::string asked = random.key(alphabet, 12);
      for (const MatchMode mode :
           {MatchMode::kExact, MatchMode::kEdge, MatchMode::kAnyByte}) {
        const KeyMatch expected = plainMatch(keys, asked, mode);
        const KeyMatch match = matchKey(trie, asked.c_str(), mode);
        ASSERT_EQ(expected.id, match.id) << asked;
        ASSERT_EQ(expected.length, match.length) << asked;
      }
      const KeyMatch edge = plainMatch(keys, asked, MatchMode::kEdge);
      const KeyMatch any = plainMatch(keys, asked, MatchMode::kAnyByte);
      atAShorterEdge += edge.id != 0 && edge.id != any.id ? 1 : 0;
    }
  }
  EXPECT_GT(atAShorterEdge, 50);
}

// A record whose string goes on behind a terminal byte is no key, and the asked
// key has ended there.
TEST(KeyMatch, IsNeverLongerThanTheKeyOnADamagedTrie) {
  for (const std::string text :
       {"a\x7F\x7F", "a\x7Fz", "a\x7Fz\x7F", "\x7Fz"}) {
    TrieSection section;
    section.size = 4;
    section.base = {4, 1, 0, 0, -1};
    section.check = {0, -2, -3, -5, 1};
    section.emptyTail = 3;
    section.tail = '\0' + text + '\0' + word(1) + '\0';
    section.posTail = static_cast<int>(section.tail.size()) - 1;
    DoubleArray trie(64, 0);
    readSection(&trie, section.bytes());
    for (const char* rest : {"", "a", "az", "aa"}) {
      const std::string asked = '\x03' + std::string(rest);
      for (const MatchMode mode :
           {MatchMode::kExact, MatchMode::kEdge, MatchMode::kAnyByte}) {
        EXPECT_LE(matchKey(trie, asked.c_str(), mode).length, asked.size());
      }
    }
  }
}

}  // namespace
}  // namespace urldb
