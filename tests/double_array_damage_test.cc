#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <string>
#include <vector>

#include "tests/random_keys.h"
#include "tests/thrown_by.h"
#include "tests/trie_exercise.h"
#include "tests/trie_section.h"
#include "urldb/double_array.h"
#include "urldb/trie_check.h"

// Sections that no trie has written. Each is either refused or gives a trie
// that is safe to use.

namespace urldb {
namespace {

class DoubleArrayDamage : public testing::Test {
 protected:
  DoubleArrayDamage() {
    for (const char* key : {"\x01\x02", "\x03", "\x01\x03", "\x01", "\x05/\x06",
                            "\x05/\x06.\x07\x08", "\x05/\x02"}) {
      trie_.add(key, 0x01010101 * (++id_));
    }
    sound_ = TrieSection::of(trie_);
  }

  // Reads the section and, if that works, uses the trie in every way. Returns
  // the code of the error, 0 without one.
  static int tryOut(const std::string& bytes) {
    DoubleArray trie(16, 0);
    const int code = codeThrownBy([&] { readSection(&trie, bytes); });
    if (code == 0) {
      EXPECT_EQ("", TrieExercise(&trie).run());
    }
    return code;
  }

  // Every cell but the root is a leaf with the record at 1, whose NUL is at
  // `end`.
  static TrieSection sharedRecord(int cells, int posTail, int end) {
    TrieSection shared;
    shared.size = cells;
    shared.base.assign(static_cast<std::size_t>(cells) + 1, -1);
    shared.base[0] = cells;
    shared.base[1] = 1;
    shared.check.assign(static_cast<std::size_t>(cells) + 1, 1);
    shared.posTail = posTail;
    shared.tail.assign(static_cast<std::size_t>(posTail) + 1, 'x');
    shared.tail[static_cast<std::size_t>(end)] = '\0';
    return shared;
  }

  static double seconds(const std::chrono::steady_clock::time_point& since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() -
                                         since)
        .count();
  }

  DoubleArray trie_{64, 0};
  int id_ = 0;
  TrieSection sound_;
};

TEST_F(DoubleArrayDamage, UndamagedSectionPassesEveryUse) {
  EXPECT_EQ(0, tryOut(sound_.bytes()));
  EXPECT_EQ(0, tryOut(TrieSection().bytes()));
  DoubleArray trie(64, 3);
  RandomKeys random(2);
  for (int id = 1; id < 300; ++id) {
    trie.add(random.key("abc/.\xA3\xC1", 9).c_str(), id);
  }
  EXPECT_EQ(0, tryOut(sectionOf(trie)));
}

TEST_F(DoubleArrayDamage, EveryByteChangedIsSafe) {
  const std::string whole = sound_.bytes();
  int read = 0;
  int refused = 0;
  for (std::size_t i = 0; i < whole.size(); ++i) {
    for (const int mask : {1, 0x80, 0xFF}) {
      SCOPED_TRACE("byte " + std::to_string(i) + ", mask " +
                   std::to_string(mask));
      std::string damaged = whole;
      damaged[i] = static_cast<char>(damaged[i] ^ mask);
      const int code = tryOut(damaged);
      const bool known = code == 0 || code == ERR_CANT_READ_FILE ||
                         code == ERR_INVALID_DATA || code == ERR_INVALID_FILE ||
                         code == ERR_INVALID_VERSION;
      EXPECT_TRUE(known) << code;
      ++(code == 0 ? read : refused);
      if (HasFailure()) return;
    }
  }
  EXPECT_GT(read, 100);
  EXPECT_GT(refused, 50);
}

TEST_F(DoubleArrayDamage, EveryCellOfAnyValueIsSafe) {
  const int values[] = {INT_MIN, INT_MIN + 1, -200, -129, -2,          -1,
                        0,       1,           2,    128,  INT_MAX - 1, INT_MAX};
  for (std::size_t s = 1; s < sound_.base.size(); ++s) {
    for (const int value : values) {
      SCOPED_TRACE("cell " + std::to_string(s) + " = " + std::to_string(value));
      TrieSection base = sound_;
      base.base[s] = value;
      tryOut(base.bytes());
      TrieSection check = sound_;
      check.check[s] = value;
      tryOut(check.bytes());
      if (HasFailure()) return;
    }
  }
}

TEST_F(DoubleArrayDamage, SeveralBytesChangedAreSafe) {
  const std::string whole = sound_.bytes();
  RandomKeys random(17);
  for (int round = 0; round < 3000; ++round) {
    std::string damaged = whole;
    for (int n = 1 + random.below(6); n > 0; --n) {
      const auto at = static_cast<std::size_t>(
          44 + random.below(static_cast<int>(whole.size()) - 44));
      damaged[at] = static_cast<char>(random.below(256));
    }
    SCOPED_TRACE("round " + std::to_string(round));
    tryOut(damaged);
    if (HasFailure()) return;
  }
}

TEST_F(DoubleArrayDamage, CountsOfAnyValueAreSafe) {
  const int size = sound_.size;
  const int posTail = sound_.posTail;
  const int values[] = {0,           -1,      -2,          1,
                        2,           INT_MAX, INT_MAX - 1, INT_MIN,
                        INT_MIN + 1, size,    size - 1,    size + 1,
                        posTail,     1 << 20, posTail - 1, posTail + 1,
                        size + 2,    -size,   1 << 30,     size + 1000};
  for (const int value : values) {
    SCOPED_TRACE(value);
    for (int32_t TrieSection::*count :
         {&TrieSection::size, &TrieSection::emptyHead, &TrieSection::emptyTail,
          &TrieSection::posTail}) {
      TrieSection damaged = sound_;
      damaged.*count = value;
      tryOut(damaged.bytes());
    }
    // Both places of DA_SIZE.
    TrieSection damaged = sound_;
    damaged.size = damaged.base[0] = value;
    tryOut(damaged.bytes());
    if (HasFailure()) return;
  }
}

TEST_F(DoubleArrayDamage, CountsThatCannotBeAreInvalidData) {
  for (const int value : {0, -1, INT_MIN}) {
    TrieSection cells = sound_;
    cells.size = cells.base[0] = value;
    EXPECT_EQ(ERR_INVALID_DATA, tryOut(cells.bytes())) << value;
    TrieSection tail = sound_;
    tail.posTail = value;
    EXPECT_EQ(ERR_INVALID_DATA, tryOut(tail.bytes())) << value;
  }
  TrieSection two = sound_;
  ++two.base[0];
  EXPECT_EQ(ERR_INVALID_DATA, tryOut(two.bytes()));
}

TEST_F(DoubleArrayDamage, CountsJustBeyondTheEndAreShortReads) {
  TrieSection cells = sound_;
  cells.size = cells.base[0] =
      sound_.size + static_cast<int>(sound_.tail.size()) / 8 + 1;
  EXPECT_EQ(ERR_CANT_READ_FILE, tryOut(cells.bytes()));
  TrieSection tail = sound_;
  ++tail.posTail;
  EXPECT_EQ(ERR_CANT_READ_FILE, tryOut(tail.bytes()));
}

// The ends of the free list are not looked at by a search.
TEST_F(DoubleArrayDamage, OddEndsOfTheFreeListStillAnswer) {
  for (const int value : {0, -1, INT_MAX, INT_MIN, 5}) {
    TrieSection damaged = sound_;
    damaged.emptyHead = value;
    damaged.emptyTail = value;
    DoubleArray trie(16, 0);
    readSection(&trie, damaged.bytes());
    EXPECT_EQ(keysOf(trie_), keysOf(trie));
    EXPECT_EQ(0x02020202, trie.search("\x03"));
    EXPECT_EQ(ERR_INVALID_DATA, codeThrownBy([&] { trie.add("n", 1); }));
    EXPECT_EQ(0x02020202, trie.search("\x03"));
  }
}

TEST_F(DoubleArrayDamage, LinksThatLoopEndSomewhere) {
  // Cell 2 is its own child by label 1, the root is the child of cell 2, and
  // two cells are each other's parents.
  TrieSection own;
  own.size = own.base[0] = 4;
  own.base = {4, 1, 1, 0, 0};
  own.check = {0, -2, 2, -4, -5};
  EXPECT_EQ(0, tryOut(own.bytes()));
  TrieSection root = own;
  root.base = {4, 1, -1, 0, 0};
  root.check = {0, 2, 1, -4, -5};
  EXPECT_EQ(0, tryOut(root.bytes()));
  root.base[2] = 0;
  EXPECT_EQ(0, tryOut(root.bytes()));
  TrieSection pair = own;
  pair.base = {4, 1, 0, 2, 1};
  pair.check = {0, -2, 1, 4, 3};
  EXPECT_EQ(0, tryOut(pair.bytes()));
  // The root is its own child: no, since its base is at least 1; but a base of
  // 0 or below would make it one.
  TrieSection selfish = own;
  for (int base = 0; base > -255; --base) {
    selfish.base = {4, base, 0, 0, 0};
    selfish.check = {0, 1, -3, -4, -5};
    EXPECT_EQ(0, tryOut(selfish.bytes()));
  }
  // A free list that runs in a ring, and one that runs out of the cells.
  for (const int link : {-1, -2, -4, INT_MIN}) {
    TrieSection ring = own;
    ring.base = {4, 1, 0, 0, 0};
    ring.check = {0, -2, -3, link, link};
    EXPECT_EQ(0, tryOut(ring.bytes()));
  }
}

TEST_F(DoubleArrayDamage, RecordsOutsideTailAreMisses) {
  for (const int position : {sound_.posTail, sound_.posTail + 1, INT_MAX,
                             sound_.posTail + 100, 1 << 20}) {
    SCOPED_TRACE(position);
    TrieSection damaged = sound_;
    for (int32_t& base : damaged.base) {
      if (base < 0) base = -position;
    }
    DoubleArray trie(16, 0);
    readSection(&trie, damaged.bytes());
    EXPECT_EQ(0, trie.search("\x03"));
    EXPECT_EQ(0, trie.searchMaxPrefix("\x03/"));
    EXPECT_EQ(Keys(), keysOf(trie));
    EXPECT_EQ("", TrieExercise(&trie).run());
  }
}

TEST_F(DoubleArrayDamage, IdentifierBehindTheEndIsSafe) {
  // The records move towards the end of TAIL byte by byte, and the last one is
  // cut by it.
  for (int cut = 0; cut <= sound_.posTail - 1; ++cut) {
    SCOPED_TRACE(cut);
    TrieSection damaged = sound_;
    damaged.posTail -= cut;
    damaged.tail.resize(static_cast<std::size_t>(damaged.posTail) + 1);
    EXPECT_EQ(0, tryOut(damaged.bytes()));
    damaged.tail.back() = '\xFF';
    EXPECT_EQ(0, tryOut(damaged.bytes()));
  }
  // TAIL without any NUL.
  TrieSection full = sound_;
  full.tail.assign(full.tail.size(), '\xFF');
  EXPECT_EQ(ERR_INVALID_DATA, tryOut(full.bytes()));
  for (int32_t& base : full.base) base = std::max(base, 0);
  EXPECT_EQ(0, tryOut(full.bytes()));
}

// A free cell is reached by no key; what it holds must not matter to a
// compaction either.
TEST_F(DoubleArrayDamage, FreeCellThatLooksLikeALeafIsSafe) {
  for (const int base : {-1, -8, -1000000, INT_MIN, 5}) {
    SCOPED_TRACE(base);
    TrieSection damaged;
    damaged.size = 3;
    damaged.base = {3, 1, base, -1};
    damaged.check = {0, -2, -4, 1};
    damaged.emptyTail = 2;
    damaged.posTail = 7;
    damaged.tail = std::string("\0\x7F\0\0\0\0\5\0", 8);
    EXPECT_EQ(0, tryOut(damaged.bytes()));
  }
}

// Without children the root's base is used by nothing until the first
// insertion, which must not allocate whatever it says.
TEST_F(DoubleArrayDamage, EmptyTrieWithAFarRootIsNotExtended) {
  for (const int base : {1 << 20, 2000000000, INT_MAX - 100, INT_MAX}) {
    SCOPED_TRACE(base);
    TrieSection far;
    far.base[1] = base;
    DoubleArray trie(16, 0);
    readSection(&trie, far.bytes());
    EXPECT_EQ(0, trie.search("a"));
    ASSERT_FALSE(checkTrie(trie, 1).empty());
    EXPECT_EQ("", TrieExercise(&trie).run());
  }
}

// Many leaves share one long record: whoever walked it for each of them would
// be at it for hours.
TEST_F(DoubleArrayDamage, LongRecordSharedByManyLeavesIsRefusedAtOnce) {
  constexpr int kCells = 500000;
  constexpr int kLength = 4000000;
  TrieSection shared = sharedRecord(kCells, kLength + 6, kLength);
  const auto start = std::chrono::steady_clock::now();
  DoubleArray trie(16, 0);
  EXPECT_EQ("25/60 Invalid Data: overlapping TAIL records",
            thrownBy([&] { readSection(&trie, shared.bytes()); }));
  shared.tail[kLength] = 'x';  // and one that never ends
  EXPECT_EQ("25/60 Invalid Data: overlapping TAIL records",
            thrownBy([&] { readSection(&trie, shared.bytes()); }));
  EXPECT_LT(seconds(start), 5.0);
}

// As much overlap as a reader lets pass costs a moment at most.
TEST_F(DoubleArrayDamage, SharedRecordsThatAreAcceptedStayFast) {
  constexpr int kCells = 200000;
  const TrieSection shared = sharedRecord(kCells, 4 * kCells, 6);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(0, tryOut(shared.bytes()));
  EXPECT_LT(seconds(start), 10.0);
}

// A key as deep as there are cells.
TEST_F(DoubleArrayDamage, DeepChainIsFast) {
  constexpr int kCells = 300000;
  TrieSection chain;
  chain.size = kCells;
  chain.base.resize(kCells + 1);
  chain.check.resize(kCells + 1);
  chain.base[0] = kCells;
  for (int s = 1; s < kCells; ++s) {
    const auto cell = static_cast<std::size_t>(s);
    chain.base[cell] = s;  // the next cell is the child by label 1
    chain.check[cell + 1] = s;
  }
  chain.check[1] = -(kCells + 1);
  chain.base[kCells] = -1;
  chain.posTail = 7;
  chain.tail = std::string("\0\x7F\0\0\0\0\5\0", 8);
  const auto start = std::chrono::steady_clock::now();
  DoubleArray trie(16, 0);
  readSection(&trie, chain.bytes());
  EXPECT_EQ(std::vector<std::string>(), checkTrie(trie, 1));
  const std::string key(kCells - 1, '\x01');
  EXPECT_EQ(5, trie.search(key.c_str()));
  EXPECT_EQ(Keys({{key, 5}}), keysOf(trie));
  EXPECT_EQ(0, tryOut(chain.bytes()));
  EXPECT_LT(seconds(start), 10.0);
}

TEST_F(DoubleArrayDamage, RefusalToExtendNamesTheFaultAndChangesNothing) {
  TrieSection damaged = sound_;
  damaged.emptyTail = 1;
  DoubleArray trie(16, 0);
  readSection(&trie, damaged.bytes());
  const std::vector<std::string> faults = checkTrie(trie, 1);
  ASSERT_EQ(1U, faults.size());
  const std::string message = "25/60 Invalid Data: " + faults[0];
  EXPECT_EQ(message, thrownBy([&] { trie.add("new", 1); }));
  EXPECT_EQ(message, thrownBy([&] { trie.garbageTail(); }));
  EXPECT_EQ(message, thrownBy([&] { sectionOf(trie); }));
  EXPECT_EQ(message, thrownBy([&] { trie.add("new", 1); }));
  // A key that is refused anyway is refused for its own sake.
  EXPECT_EQ(ERR_INVALID_ARGUMENT, codeThrownBy([&] { trie.add("\x7F", 1); }));
  EXPECT_EQ(keysOf(trie_), keysOf(trie));
  readSection(&trie, sound_.bytes());  // a sound section heals it
  EXPECT_EQ(0, trie.add("new", 1));
}

}  // namespace
}  // namespace urldb
