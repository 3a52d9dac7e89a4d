#include "urldb/double_array.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/expect_error.h"
#include "tests/failing_new.h"
#include "tests/random_keys.h"
#include "tests/trie_section.h"
#include "urldb/trie_check.h"

namespace urldb {
namespace {

using std::string_literals::operator""s;

constexpr int kGain = 64;

std::string dumpOf(const DoubleArray& trie) {
  std::ostringstream os;
  os << trie;
  return os.str();
}

// A number of the dump's heading.
int dumped(const DoubleArray& trie, const std::string& name) {
  const std::string text = dumpOf(trie);
  const std::size_t at = text.find(' ' + name + " = ");
  if (at == std::string::npos) return -1;
  return std::stoi(text.substr(at + name.size() + 4));
}

std::vector<int> childrenOf(const DoubleArray& trie, int s) {
  NodeList list;
  const int size = trie.getList(s, &list);
  EXPECT_EQ(size, list.getSize());
  std::vector<int> labels;
  list.rewind();
  while (list.hasNext()) labels.push_back(list.next());
  return labels;
}

// The cells from 1 on.
using Row = std::vector<int>;
Row baseOf(const DoubleArray& trie) {
  const TrieView view = trie.view();
  return {view.base + 1, view.base + view.size + 1};
}
Row checkOf(const DoubleArray& trie) {
  const TrieView view = trie.view();
  return {view.check + 1, view.check + view.size + 1};
}

// TAIL up to posTail.
std::string tailOf(const DoubleArray& trie) {
  const TrieView view = trie.view();
  return {view.tail, view.tail + view.posTail};
}

// What is behind a record's string: its NUL and the identifier in host order.
std::string endOf(int id) {
  std::string bytes(5, '\0');
  std::memcpy(&bytes[1], &id, sizeof id);
  return bytes;
}

// The identifier of the longest key that is a prefix of `asked`.
int longestPrefix(const Keys& keys, const std::string& asked) {
  for (std::size_t n = asked.size() + 1; n > 0; --n) {
    const auto found = keys.find(asked.substr(0, n - 1));
    if (found != keys.end()) return found->second;
  }
  return 0;
}

TEST(DoubleArray, EmptyTrieIsItsRoot) {
  const DoubleArray trie(10240, 3);
  EXPECT_EQ(5120, dumped(trie, "szBC"));
  EXPECT_EQ(1, dumped(trie, "DA_SIZE"));
  EXPECT_EQ(10240, dumped(trie, "szGain"));
  EXPECT_EQ(1, dumped(trie, "emptyHead"));
  EXPECT_EQ(1, dumped(trie, "emptyTail"));
  EXPECT_EQ(20480, dumped(trie, "szTail"));
  EXPECT_EQ(1, dumped(trie, "posTail"));
  EXPECT_EQ(Row({1}), baseOf(trie));
  EXPECT_EQ(Row({-2}), checkOf(trie));
  EXPECT_EQ(0, trie.search(""));
  EXPECT_EQ(0, trie.search("a"));
  EXPECT_EQ(0, trie.searchMaxPrefix(""));
  EXPECT_EQ(0, trie.searchMaxPrefix("a"));
  EXPECT_TRUE(childrenOf(trie, 1).empty());
}

TEST(DoubleArray, DumpShowsCellsAndTailInRowsOfTen) {
  DoubleArray trie(kGain, 0);
  trie.add("\x01\x02", 0x01010101);
  trie.add("\x0B", 0x02020202);
  EXPECT_EQ(
      "--- Double Array Info. ---\n"
      "      szBC = 274\n"  // 2 + 256 + 16
      "   DA_SIZE = 12\n"
      "    szGain = 64\n"
      " emptyHead = 1\n"
      " emptyTail = 11\n"
      "    szTail = 128\n"
      "   posTail = 14\n"
      "--------------------------\n"
      "    BASE:  +01 +02 +03 +04 +05 +06 +07 +08 +09 +10\n"
      "0: 12 1 -1 0 0 0 0 0 0 0\n"
      "10: 0 0 -8\n"
      "   CHECK:  +01 +02 +03 +04 +05 +06 +07 +08 +09 +10\n"
      "0: 0 -3 1 -4 -5 -6 -7 -8 -9 -10\n"
      "10: -11 -13 1\n"
      "    TAIL: +01 +02 +03 +04 +05 +06 +07 +08 +09 +10\n"
      "0: 0 2 127 0 1 1 1 1 127 0\n"
      "10: 2 2 2 2 0\n",
      dumpOf(trie));
}

TEST(DoubleArray, NegativeGrowthStepIsRefused) {
  expectError(ERR_INVALID_ARGUMENT, 60, "Invalid Argument: szGain = -1",
              [] { const DoubleArray trie(-1, 0); });
}

TEST(DoubleArray, EmptyTrieCanBeDumpedWithoutAGrowthStep) {
  EXPECT_EQ(1, dumped(DoubleArray(0, 0), "posTail"));
}

// Whatever the step, nothing is read or written outside the arrays.
TEST(DoubleArray, SmallestGrowthStepsServeAsWell) {
  for (int gain = 0; gain <= 16; ++gain) {
    SCOPED_TRACE(gain);
    DoubleArray trie(gain, 0);
    Keys keys;
    RandomKeys random(5);
    for (int id = 1; id <= 300; ++id) {
      const std::string key = random.key("ab\xFF", 7);
      if (trie.add(key.c_str(), id) == 0) keys[key] = id;
      // Also from positions amid the records.
      const int end = trie.view().posTail;
      for (int p = end - 10; p < end + 10; ++p) trie.getObject(p);
    }
    EXPECT_FALSE(dumpOf(trie).empty());
    EXPECT_EQ(keys, keysOf(trie));
    for (const auto& [key, id] : keys) EXPECT_EQ(id, trie.search(key.c_str()));
    sectionOf(trie);
    EXPECT_FALSE(dumpOf(trie).empty());
    EXPECT_EQ(keys, keysOf(trie));
  }
}

TEST(DoubleArray, EmptyKeyIsAKeyLikeAnyOther) {
  DoubleArray trie(kGain, 0);
  EXPECT_EQ(0, trie.add("a", 2));
  EXPECT_EQ(0, trie.search(""));
  EXPECT_EQ(0, trie.searchMaxPrefix("b"));
  EXPECT_EQ(0, trie.add("", 1));
  EXPECT_EQ(1, trie.search(""));
  EXPECT_EQ(1, trie.searchMaxPrefix(""));
  EXPECT_EQ(1, trie.searchMaxPrefix("b"));
  EXPECT_EQ(2, trie.searchMaxPrefix("ab"));
  EXPECT_EQ(1, trie.add("", 7));
  // Alone its record is a NUL and the identifier.
  DoubleArray alone(kGain, 0);
  alone.add("", 9);
  EXPECT_EQ("\0"s + endOf(9), tailOf(alone));
  EXPECT_EQ(9, alone.search(""));
  EXPECT_EQ(0, alone.search("a"));
  EXPECT_EQ(9, alone.searchMaxPrefix("a"));
}

TEST(DoubleArray, KeyWithTheTerminalByteIsRefused) {
  DoubleArray trie(kGain, 3);
  trie.add("a", 1);
  const std::string before = sectionOf(trie);
  for (const char* key : {"\x7F", "a\x7F", "a\x7F\x7F", "\x7F z"}) {
    const std::string message = "Invalid Argument: "s + key;
    const char* text = message.c_str();
    expectError(ERR_INVALID_ARGUMENT, 61, text, [&] { trie.search(key); });
    expectError(ERR_INVALID_ARGUMENT, 61, text,
                [&] { trie.searchMaxPrefix(key); });
    expectError(ERR_INVALID_ARGUMENT, 61, text, [&] { trie.add(key, 5); });
  }
  EXPECT_EQ(before, sectionOf(trie));
}

TEST(DoubleArray, NullKeyIsRefused) {
  DoubleArray trie(kGain, 0);
  constexpr char kText[] = "Invalid Argument: key is NULL";
  expectError(ERR_INVALID_ARGUMENT, 60, kText, [&] { trie.search(nullptr); });
  expectError(ERR_INVALID_ARGUMENT, 60, kText,
              [&] { trie.searchMaxPrefix(nullptr); });
  expectError(ERR_INVALID_ARGUMENT, 60, kText, [&] { trie.add(nullptr, 1); });
}

TEST(DoubleArray, IdentifierZeroIsRefused) {
  DoubleArray trie(kGain, 0);
  expectError(ERR_INVALID_ARGUMENT, 60, "Invalid Argument: ID is 0",
              [&] { trie.add("a", 0); });
  EXPECT_EQ(Row({1}), baseOf(trie));
}

TEST(DoubleArray, AnyOtherIdentifierIsKept) {
  DoubleArray trie(kGain, 0);
  int n = 0;
  for (const int id : {1, -1, 0x7F007F00, INT32_MIN, INT32_MAX, 256, 1 << 24}) {
    const std::string key = "key" + std::to_string(++n);
    EXPECT_EQ(0, trie.add(key.c_str(), id));
    EXPECT_EQ(id, trie.search(key.c_str()));
    EXPECT_EQ(id, trie.searchMaxPrefix((key + "/x").c_str()));
    EXPECT_EQ(id, trie.add(key.c_str(), 77));
  }
}

TEST(DoubleArray, OneKeyAnswersForItselfAndForLongerKeysByPrefix) {
  DoubleArray trie(kGain, 0);
  trie.add("ab", 5);
  EXPECT_EQ(5, trie.search("ab"));
  EXPECT_EQ(0, trie.search("a"));
  EXPECT_EQ(0, trie.search("abc"));
  EXPECT_EQ(0, trie.search("b"));
  EXPECT_EQ(5, trie.searchMaxPrefix("abcdef"));
  EXPECT_EQ(5, trie.searchMaxPrefix("ab"));
  EXPECT_EQ(0, trie.searchMaxPrefix("a"));
  EXPECT_EQ(0, trie.searchMaxPrefix("ac"));
  EXPECT_EQ(0, trie.searchMaxPrefix(""));
}

TEST(DoubleArray, LongestStoredPrefixWins) {
  DoubleArray trie(kGain, 0);
  trie.add("a", 1);
  trie.add("abc", 3);
  EXPECT_EQ(1, trie.searchMaxPrefix("abx"));
  EXPECT_EQ(3, trie.searchMaxPrefix("abcx"));
  EXPECT_EQ(3, trie.searchMaxPrefix("abc"));
  EXPECT_EQ(1, trie.searchMaxPrefix("ab"));
  EXPECT_EQ(1, trie.searchMaxPrefix("a"));
  EXPECT_EQ(0, trie.searchMaxPrefix("b"));
}

TEST(DoubleArray, StoredPrefixIsFoundAtANodeAndInARecord) {
  DoubleArray trie(kGain, 0);
  trie.add("abc", 3);
  trie.add("ab", 2);
  EXPECT_EQ(2, trie.searchMaxPrefix("abd"));
  EXPECT_EQ(2, trie.searchMaxPrefix("ab"));
  EXPECT_EQ(3, trie.searchMaxPrefix("abcd"));
  EXPECT_EQ(0, trie.searchMaxPrefix("a"));
}

TEST(DoubleArray, ModeZeroComparesByteForByte) {
  DoubleArray trie(kGain, 0);
  trie.add("aB\xA3\xC1", 1);
  EXPECT_EQ(1, trie.search("aB\xA3\xC1"));
  EXPECT_EQ(0, trie.search("AB\xA3\xC1"));
  EXPECT_EQ(0, trie.search("aBA"));
  EXPECT_EQ(Keys({{"aB\xA3\xC1", 1}}), keysOf(trie));
}

TEST(DoubleArray, OtherModesNormaliseStoredAndAskedKeysAlike) {
  constexpr struct {
    int convMode;
    const char* stored;
    const char* hit;
    const char* miss;
  } cases[] = {
      {1, "AB\xA3\xC1", "ab\xA3\xC1", "aba"},
      {2, "aBA", "aBA", "ABA"},
      {3, "ABA", "aba", "ab"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.convMode);
    DoubleArray trie(kGain, c.convMode);
    trie.add("aB\xA3\xC1", 1);
    EXPECT_EQ(Keys({{c.stored, 1}}), keysOf(trie));
    EXPECT_EQ(1, trie.search("aB\xA3\xC1"));
    EXPECT_EQ(1, trie.search(c.hit));
    EXPECT_EQ(1, trie.add(c.hit, 2));
    EXPECT_EQ(0, trie.search(c.miss));
    EXPECT_EQ(1, trie.searchMaxPrefix((c.hit + "/x"s).c_str()));
  }
}

TEST(DoubleArray, ObjectOfAPositionIsBehindTheNextNul) {
  DoubleArray trie(kGain, 0);
  trie.add("xab", 0x01010101);  // "ab" and the terminal byte at 1, NUL at 4
  EXPECT_EQ(9, trie.view().posTail);
  for (int p = 1; p <= 4; ++p) EXPECT_EQ(0x01010101, trie.getObject(p)) << p;
  for (const int p : {INT32_MIN, -1, 0, 5, 8, 9, 10, INT32_MAX}) {
    EXPECT_EQ(0, trie.getObject(p)) << p;
  }
}

TEST(DoubleArray, ListsTheChildrenOfACell) {
  DoubleArray trie(kGain, 0);
  for (int c = 1; c < 256; ++c) {
    if (c == 127) continue;
    const char key[] = {'a', static_cast<char>(c), 0};
    trie.add(key, c);
  }
  trie.add("a", 127);
  const int a = trie.view().child(1, 'a');
  ASSERT_GT(a, 0);
  std::vector<int> all;
  for (int c = 1; c < 256; ++c) all.push_back(c);
  EXPECT_EQ(all, childrenOf(trie, a));
  EXPECT_EQ(std::vector<int>({'a'}), childrenOf(trie, 1));

  // What the list holds already stays in it.
  NodeList list;
  list.add(3);
  EXPECT_EQ(2, trie.getList(1, &list));
  EXPECT_TRUE(list.contains('a'));
}

TEST(DoubleArrayInsertion, ExistingKeyKeepsItsIdentifierAndTheTrie) {
  DoubleArray trie(kGain, 0);
  for (const char* key : {"", "ab", "abc", "b", "bcd"}) trie.add(key, 100);
  const std::string before = dumpOf(trie);
  for (const char* key : {"", "ab", "abc", "b", "bcd"}) {
    EXPECT_EQ(100, trie.add(key, 100)) << key;
    EXPECT_EQ(100, trie.add(key, 200)) << key;
  }
  EXPECT_EQ(before, dumpOf(trie));
}

TEST(DoubleArrayInsertion, SplitLeavesTheTerminalByteInBothRecords) {
  DoubleArray trie(kGain, 0);
  trie.add("abc", 11);
  EXPECT_EQ("\0bc\x7F"s + endOf(11), tailOf(trie));
  trie.add("abd", 22);
  // The old remainder is rewritten in place; the two bytes that it lost are
  // the rest of its old identifier.
  const std::string hole = endOf(11).substr(3);
  EXPECT_EQ("\0\x7F"s + endOf(11) + hole + "\x7F"s + endOf(22), tailOf(trie));
  const TrieView view = trie.view();
  const int ab = view.child(view.child(1, 'a'), 'b');
  ASSERT_GT(ab, 0);
  EXPECT_EQ(std::vector<int>({'c', 'd'}), childrenOf(trie, ab));
  EXPECT_EQ(-1, view.base[view.child(ab, 'c')]);
  EXPECT_EQ(-9, view.base[view.child(ab, 'd')]);
}

TEST(DoubleArrayInsertion, PrefixOfAStoredKeyBranchesByTheTerminalByte) {
  DoubleArray trie(kGain, 0);
  trie.add("abc", 1);
  trie.add("ab", 2);
  const TrieView view = trie.view();
  const int ab = view.child(view.child(1, 'a'), 'b');
  ASSERT_GT(ab, 0);
  EXPECT_EQ(std::vector<int>({'c', 127}), childrenOf(trie, ab));
  // The record of "ab" is a NUL and the identifier.
  const int record = view.recordOf(view.child(ab, 127));
  EXPECT_EQ(endOf(2), tailOf(trie).substr(static_cast<std::size_t>(record)));
}

// Keys 01 02, 03, 01 03, 02 and, when asked for, 06. The root has base 1 and
// the children 2, 3, 4 (and 7) by the labels 1, 2, 3 (and 6); cell 2 has base
// 3 and the children 5, 6 by the labels 2, 3.
DoubleArray* competing(DoubleArray* trie, bool fourChildren) {
  trie->add("\x01\x02", 1);
  trie->add("\x03", 2);
  trie->add("\x01\x03", 3);
  trie->add("\x02", 4);
  if (fourChildren) trie->add("\x06", 5);
  return trie;
}

// Now 01 01 wants cell 3 + 1 = 4, a child of the root. Cell 2 would have three
// children then, as many as the root has: the root's move to base 6.
TEST(DoubleArrayInsertion, OnATieTheOtherNodeMoves) {
  DoubleArray trie(kGain, 0);
  competing(&trie, false);
  ASSERT_EQ(Row({1, 3, -20, -8, -1, -14}), baseOf(trie));
  ASSERT_EQ(Row({-7, 1, 1, 1, 2, 2}), checkOf(trie));
  EXPECT_EQ(0, trie.add("\x01\x01", 6));
  EXPECT_EQ(Row({6, 0, 0, -26, -1, -14, 3, -20, -8}), baseOf(trie));
  EXPECT_EQ(Row({-2, -3, -10, 7, 7, 7, 1, 1, 1}), checkOf(trie));
  EXPECT_EQ(3, trie.view().emptyTail);
  EXPECT_EQ(6, trie.search("\x01\x01"));
}

// With one child more the root stays: cell 2 moves its own to base 7.
TEST(DoubleArrayInsertion, NodeWithFewerChildrenMoves) {
  DoubleArray trie(kGain, 0);
  competing(&trie, true);
  ASSERT_EQ(Row({1, 3, -20, -8, -1, -14, -26}), baseOf(trie));
  ASSERT_EQ(Row({-8, 1, 1, 1, 2, 2, 1}), checkOf(trie));
  EXPECT_EQ(0, trie.add("\x01\x01", 6));
  EXPECT_EQ(Row({1, 7, -20, -8, 0, 0, -26, -32, -1, -14}), baseOf(trie));
  EXPECT_EQ(Row({-5, 1, 1, 1, -6, -11, 1, 2, 2, 2}), checkOf(trie));
  EXPECT_EQ(6, trie.view().emptyTail);
  EXPECT_EQ(6, trie.search("\x01\x01"));
}

TEST(DoubleArrayInsertion, FirstByteOneGivesTheRootBaseOne) {
  DoubleArray trie(kGain, 0);
  trie.add("\x01", 1);
  EXPECT_EQ(Row({1, -1}), baseOf(trie));
  EXPECT_EQ(Row({-3, 1}), checkOf(trie));
  EXPECT_EQ(1, trie.view().emptyHead);
  EXPECT_EQ(1, trie.view().emptyTail);
}

TEST(DoubleArrayInsertion, CompactionWithoutSplitsKeepsTheLength) {
  DoubleArray trie(kGain, 0);
  for (const char* key : {"q", "a", "zebra", "m"}) trie.add(key, 5);
  const int before = trie.view().posTail;
  EXPECT_EQ(before, trie.garbageTail());
  EXPECT_EQ(before, trie.view().posTail);
  EXPECT_EQ(Keys({{"q", 5}, {"a", 5}, {"zebra", 5}, {"m", 5}}), keysOf(trie));
}

TEST(DoubleArrayInsertion, CompactionAfterSplitsShrinksTail) {
  DoubleArray trie(kGain, 0);
  trie.add("b12345678", 1);
  trie.add("a", 3);
  trie.add("b12345679", 2);
  EXPECT_EQ(15 + 6 + 6, trie.view().posTail);
  EXPECT_EQ(1 + 3 * 6, trie.garbageTail());
  EXPECT_EQ(1, trie.search("b12345678"));
  EXPECT_EQ(2, trie.search("b12345679"));
  EXPECT_EQ(3, trie.search("a"));
  // Now in the order of the cells, without holes.
  const TrieView view = trie.view();
  int expected = 1;
  for (int s = 1; s <= view.size; ++s) {
    if (!view.isLeaf(s)) continue;
    EXPECT_EQ(expected, view.recordOf(s));
    expected += 6;
  }
  EXPECT_EQ(expected, view.posTail);
  EXPECT_EQ(expected, trie.garbageTail());  // again: nothing to do
}

TEST(DoubleArrayInsertion, CellsGrowByAQuarterOfTheStep) {
  constexpr int kStep = 400;
  DoubleArray trie(kStep, 0);
  int size = kStep / 2;
  ASSERT_EQ(size, dumped(trie, "szBC"));
  RandomKeys random(1);
  int steps = 0;
  for (int id = 1; id < 1200; ++id) {
    trie.add(random.key("abcdefgh", 9).c_str(), id);
    const int now = dumped(trie, "szBC");
    const int highest = trie.view().size;
    ASSERT_GE(now, highest + 256) << "spare cells";
    if (now != size) {
      // Grown for some cell not above the highest one, as it was needed.
      ASSERT_GE(now, size + kStep / 4);
      ASSERT_LE(now, highest + 256 + kStep / 4);
      size = now;
      ++steps;
    }
  }
  EXPECT_GT(steps, 3);
}

TEST(DoubleArrayInsertion, CapacitiesAreWhatWasAskedForAndTheStep) {
  DoubleArray trie(kGain, 0);
  ASSERT_EQ(32, dumped(trie, "szBC"));
  ASSERT_EQ(128, dumped(trie, "szTail"));
  trie.add("a", 1);  // cell 98
  EXPECT_EQ(98 + 256 + kGain / 4, dumped(trie, "szBC"));
  EXPECT_EQ(128, dumped(trie, "szTail"));
  // A record that ends just below the capacity, and one that reaches it.
  const int posTail = trie.view().posTail;
  trie.add(("b" + std::string(static_cast<std::size_t>(127 - posTail - 6), 'x'))
               .c_str(),
           2);
  EXPECT_EQ(127, trie.view().posTail);
  EXPECT_EQ(128, dumped(trie, "szTail"));
  trie.add("c", 3);
  EXPECT_EQ(127 + 6 + kGain, dumped(trie, "szTail"));
  trie.allocBC(1000);
  EXPECT_EQ(1000 + kGain / 4, dumped(trie, "szBC"));
  trie.allocBC(1000 + kGain / 4 - 1);  // is there already
  EXPECT_EQ(1000 + kGain / 4, dumped(trie, "szBC"));
  trie.allocTail(5000);
  EXPECT_EQ(5000 + kGain, dumped(trie, "szTail"));
  EXPECT_EQ(Keys({{"a", 1}, {"b" + std::string(114, 'x'), 2}, {"c", 3}}),
            keysOf(trie));
}

TEST(DoubleArrayInsertion, RecordThatReachesTheCapacityGrowsTail) {
  DoubleArray trie(kGain, 0);
  trie.add(std::string(127 - 5, 'x').c_str(), 1);  // ends at 1 + 127
  EXPECT_EQ(128, trie.view().posTail);
  EXPECT_EQ(128 + kGain, dumped(trie, "szTail"));
}

TEST(DoubleArrayInsertion, CapacitiesStayTrueAcrossACompaction) {
  DoubleArray trie(kGain, 0);
  Keys keys;
  RandomKeys random(9);
  for (int id = 1; id <= 500; ++id) {
    const std::string key = random.key("abc", 10);
    if (trie.add(key.c_str(), id) == 0) keys[key] = id;
    if (id % 7 == 0) trie.garbageTail();
    ASSERT_GT(dumped(trie, "szTail"), trie.view().posTail);
    ASSERT_GE(dumped(trie, "szBC"), trie.view().size + 256);
  }
  EXPECT_EQ(keys, keysOf(trie));
}

TEST(DoubleArrayInsertion, StepsServeOnTheirOwn) {
  DoubleArray trie(kGain, 0);
  trie.add("\x01\x02", 1);
  NodeList labels;
  labels.add(200);
  EXPECT_EQ(1, trie.xCheck(&labels));  // beyond the highest cell: base 1
  labels.clear();
  labels.add(1);
  labels.add(2);
  EXPECT_EQ(2, trie.xCheck(&labels));  // cells 3 and 4
  InnerString text(reinterpret_cast<const unsigned char*>("\x05z"), 0);
  EXPECT_EQ(6, trie.insertString(1, trie.view().posTail, &text, 9));
  EXPECT_EQ(9, trie.search("\x05z"));
  EXPECT_EQ(std::vector<std::string>(), checkTrie(trie, 1));
}

TEST(DoubleArray, KeysOfAllByteValues) {
  DoubleArray trie(1024, 0);
  const std::string bytes = everyKeyByte();
  Keys keys;
  for (const char a : bytes) {
    for (const char b : bytes) {
      if (static_cast<unsigned char>(a) % 16 != 0 &&
          static_cast<unsigned char>(b) % 16 != 1) {
        continue;
      }
      const std::string key = {a, b};
      const int id = static_cast<int>(keys.size()) + 1;
      ASSERT_EQ(0, trie.add(key.c_str(), id));
      keys[key] = id;
    }
  }
  keys[bytes] = -5;
  ASSERT_EQ(0, trie.add(bytes.c_str(), -5));
  for (const auto& [key, id] : keys) {
    ASSERT_EQ(id, trie.search(key.c_str()));
    ASSERT_EQ(id, trie.searchMaxPrefix((key + "\xFF").c_str()));
  }
  EXPECT_EQ(0, trie.search("\x02\x02"));
  EXPECT_EQ(keys, keysOf(trie));
}

TEST(DoubleArray, KeysAreSplitAnywhereInALongText) {
  for (const std::size_t length : {505U, 512U, 513U, 2000U, 1U << 20}) {
    SCOPED_TRACE(length);
    DoubleArray trie(1024, 0);
    const std::string key(length, 'k');
    EXPECT_EQ(0, trie.add(key.c_str(), 1));
    EXPECT_EQ(1, trie.search(key.c_str()));
    EXPECT_EQ(0, trie.search((key + 'k').c_str()));
    EXPECT_EQ(0, trie.search(key.substr(1).c_str()));
    EXPECT_EQ(1, trie.searchMaxPrefix((key + "kk").c_str()));
    // Splits the long record near its begin, in the middle and at its end.
    const std::string begin = key.substr(0, 3) + 'x';
    const std::string middle = key.substr(0, length / 2) + 'x';
    EXPECT_EQ(0, trie.add(begin.c_str(), 2));
    EXPECT_EQ(0, trie.add(middle.c_str(), 3));
    EXPECT_EQ(0, trie.add((key + 'x').c_str(), 4));
    EXPECT_EQ(0, trie.add(key.substr(0, length - 1).c_str(), 5));
    EXPECT_EQ(1, trie.search(key.c_str()));
    EXPECT_EQ(2, trie.search(begin.c_str()));
    EXPECT_EQ(3, trie.search(middle.c_str()));
    EXPECT_EQ(4, trie.searchMaxPrefix((key + "xy").c_str()));
    EXPECT_EQ(5, trie.search(key.substr(0, length - 1).c_str()));
    EXPECT_EQ(std::vector<std::string>(), checkTrie(trie, 3));
  }
}

TEST(DoubleArray, SearchOfAShortKeyAllocatesNothing) {
  DoubleArray trie(1024, 3);
  const std::string longest(510, 'q');  // with its end 512 bytes
  trie.add(longest.c_str(), 4);
  trie.add("gro.elpmaxe/", 5);
  trie.add("gro.elpmaxe/dir", 6);
  const std::vector<std::pair<std::string, int>> asked = {
      {"gro.elpmaxe/dir", 6}, {"gro.elpmaxe/", 5}, {longest, 4}};
  std::vector<int> found;
  found.reserve(2 * asked.size());
  {
    const FailingNew noMemory(1);
    for (const auto& [key, id] : asked) {
      found.push_back(trie.search(key.c_str()));
      found.push_back(trie.searchMaxPrefix(key.c_str()));
    }
  }
  EXPECT_EQ(std::vector<int>({6, 6, 5, 5, 4, 4}), found);
}

TEST(DoubleArray, SearchOfALongKeyWithoutMemoryIsCode1) {
  const DoubleArray trie(1024, 3);
  const std::string key(511, 'q');
  int codes[2] = {0, 0};
  for (int& code : codes) {
    try {
      const FailingNew noMemory(1);
      &code == codes ? trie.search(key.c_str())
                     : trie.searchMaxPrefix(key.c_str());
    } catch (const ErrException& error) {
      code = error.getErrCode() * 100 + error.getSection();
    }
  }
  EXPECT_EQ(161, codes[0]);
  EXPECT_EQ(161, codes[1]);
}

TEST(DoubleArray, AgreesWithAMapOnRandomKeys) {
  const std::string alphabets[] = {"ab", "abc/.", "\x01\x7E\x80\xFF",
                                   everyKeyByte()};
  for (unsigned seed = 1; seed <= 12; ++seed) {
    for (const std::string& alphabet : alphabets) {
      SCOPED_TRACE("seed " + std::to_string(seed) + ", " +
                   std::to_string(alphabet.size()) + " bytes");
      RandomKeys random(seed);
      DoubleArray trie(256, 0);
      Keys model;
      for (int id = 1; id <= 800; ++id) {
        const std::string key = random.key(alphabet, 9);
        const auto [at, fresh] = model.emplace(key, id);
        ASSERT_EQ(fresh ? 0 : at->second, trie.add(key.c_str(), id));
        const std::string asked = random.key(alphabet, 11);
        const auto found = model.find(asked);
        ASSERT_EQ(found == model.end() ? 0 : found->second,
                  trie.search(asked.c_str()));
        ASSERT_EQ(longestPrefix(model, asked),
                  trie.searchMaxPrefix(asked.c_str()));
      }
      for (const auto& [key, id] : model) {
        ASSERT_EQ(id, trie.search(key.c_str()));
        ASSERT_EQ(id, trie.searchMaxPrefix(key.c_str()));
      }
      ASSERT_EQ(model, keysOf(trie));
    }
  }
}

}  // namespace
}  // namespace urldb
