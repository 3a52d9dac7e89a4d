#include "urldb/trie_check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "tests/random_keys.h"
#include "tests/trie_section.h"
#include "urldb/double_array.h"

namespace urldb {
namespace {

using Faults = std::vector<std::string>;

TEST(TrieCheck, FindsNothingInASoundTrie) {
  const std::string alphabets[] = {"ab", "abc/.", "\x01\x7E\x80\xFF",
                                   everyKeyByte()};
  for (unsigned seed = 1; seed <= 10; ++seed) {
    for (const std::string& alphabet : alphabets) {
      RandomKeys random(seed);
      DoubleArray trie(128, seed % 4 == 0 ? 3 : 0);
      EXPECT_EQ(Faults(), checkTrie(trie, 5));
      for (int id = 1; id <= 400; ++id) {
        trie.add(random.key(alphabet, 10).c_str(), id);
        if (id < 20 || id % 50 == 0) {
          ASSERT_EQ(Faults(), checkTrie(trie, 5));
        }
      }
      trie.garbageTail();
      ASSERT_EQ(Faults(), checkTrie(trie, 5));
      DoubleArray read(16, 0);
      readSection(&read, sectionOf(trie));
      ASSERT_EQ(Faults(), checkTrie(read, 5));
    }
  }
}

// Keys 01 02, 03, 01 03 and the empty one: cell 2 is an inner node with the
// leaves 5 and 6, cell 4 is the leaf of 03, cell 128 ends the empty key. Free
// are 3 and 7 to 127; the records 7F 00 id stand at 1, 7 and 13, the one of
// cell 128, 00 id, at 19.
class TrieCheckDamage : public testing::Test {
 protected:
  TrieCheckDamage() {
    DoubleArray trie(64, 0);
    for (const char* key : {"\x01\x02", "\x03", "\x01\x03", ""}) {
      trie.add(key, 0x01010101);
    }
    section_ = TrieSection::of(trie);
  }

  Faults faultsOf(const TrieSection& section, std::size_t limit = 20) {
    DoubleArray trie(16, 0);
    readSection(&trie, section.bytes());
    return checkTrie(trie, limit);
  }

  TrieSection section_;
};

TEST_F(TrieCheckDamage, UndamagedSectionIsTheOneDescribed) {
  EXPECT_EQ(Faults(), faultsOf(section_));
  const std::vector<int32_t> base(section_.base.begin(),
                                  section_.base.begin() + 8);
  EXPECT_EQ(std::vector<int32_t>({128, 1, 3, 0, -1, -7, -13, 0}), base);
  EXPECT_EQ(-19, section_.base[128]);
  EXPECT_EQ(128, section_.size);
  EXPECT_EQ(127, section_.emptyTail);
  EXPECT_EQ(24, section_.posTail);
}

TEST_F(TrieCheckDamage, EachKindIsNamedWithItsCell) {
  const struct {
    const char* fault;
    std::function<void(TrieSection*)> damage;
  } cases[] = {
      {"cell 1, the root, is no inner node",
       [](TrieSection* s) { s->base[1] = -1; }},
      {"cell 1, the root, is no inner node",
       [](TrieSection* s) { s->base[1] = 0; }},
      {"cell 1, the root, does not head the free list",
       [](TrieSection* s) { s->check[1] = 2; }},
      {"cell 3 is neither in use nor free",
       [](TrieSection* s) { s->check[3] = 0; }},
      {"cell 4 has the parent 129, beyond the last cell",
       [](TrieSection* s) { s->check[4] = 129; }},
      {"cell 4 has the parent 7, which is free",
       [](TrieSection* s) { s->check[4] = 7; }},
      {"cell 4 has the parent 5, which is no inner node",
       [](TrieSection* s) { s->check[4] = 5; }},
      {"cell 4 is out of reach of its parent 2",
       [](TrieSection* s) { s->base[2] = 4, s->check[4] = 2; }},
      {"cell 128 ends a key but is no leaf",
       [](TrieSection* s) { s->base[128] = 3; }},
      {"cell 4 is an inner node without children",
       [](TrieSection* s) { s->base[4] = 9; }},
      {"cell 4 is an inner node without children",
       [](TrieSection* s) { s->base[4] = 0; }},
      {"cell 3 is free but has a BASE",
       [](TrieSection* s) { s->base[3] = -1; }},
      {"cell 100 is free but has a BASE",
       [](TrieSection* s) { s->base[100] = 1; }},
      {"7 cells are in use, but 6 hang below the root",
       [](TrieSection* s) {  // cell 8 is its own child by label 1
         s->check[7] = -9, s->base[8] = 7, s->check[8] = 8;
       }},
      {"8 cells are in use, but 6 hang below the root",
       [](TrieSection* s) {  // cells 8 and 9 are each other's children
         s->check[7] = -10, s->base[8] = 8, s->check[8] = 9;
         s->base[9] = 7, s->check[9] = 8;
       }},
      {"the free list begins at cell 3 and not at the root",
       [](TrieSection* s) { s->emptyHead = 3; }},
      {"the free list ends at cell 126 and not at 127",
       [](TrieSection* s) { s->emptyTail = 126; }},
      {"free cell 3 links to 8 and not to 7",
       [](TrieSection* s) { s->check[3] = -8; }},
      {"free cell 1 links to 2 and not to 3",
       [](TrieSection* s) { s->check[1] = -2; }},
      {"free cell 127 links to 3 and not to 129",
       [](TrieSection* s) { s->check[127] = -3; }},
      {"free cell 127 links to 2147483648 and not to 129",
       [](TrieSection* s) { s->check[127] = INT32_MIN; }},
      {"cell 4 has its record at 24, outside TAIL",
       [](TrieSection* s) { s->base[4] = -24; }},
      {"cell 4 has its record at 2147483648, outside TAIL",
       [](TrieSection* s) { s->base[4] = INT32_MIN; }},
      {"cell 128 has a record at 23 that does not end",
       [](TrieSection* s) { s->base[128] = -23; }},
      {"cell 5 has a record at 1 that overlaps another",
       [](TrieSection* s) { s->base[5] = -1; }},
      {"cell 6 has a record at 11 that overlaps another",
       [](TrieSection* s) { s->base[6] = -11; }},
      {"cell 128 has a record at 20 without room for its identifier",
       [](TrieSection* s) { s->base[128] = -20, s->tail[20] = 0; }},
      {"cell 4 has a record at 1 that does not close a key",
       [](TrieSection* s) { s->tail[1] = 'x'; }},
      {"cell 4 has a record at 2 that does not close a key",
       [](TrieSection* s) { s->base[4] = -2; }},
      {"cell 128 has a record at 18 that does not close a key",
       [](TrieSection* s) {
         s->base[6] = 0, s->check[6] = -7, s->check[3] = -6;
         s->base[128] = -18, s->tail[18] = '\x7F';
       }},
      {"cell 4 has a record at 1 with the identifier 0",
       [](TrieSection* s) { s->tail.replace(3, 4, 4, '\0'); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fault);
    TrieSection damaged = section_;
    c.damage(&damaged);
    const Faults faults = faultsOf(damaged);
    EXPECT_NE(faults.end(), std::find(faults.begin(), faults.end(), c.fault))
        << "but " << faults.size() << " others, first "
        << (faults.empty() ? "none" : faults[0]);
  }
}

TEST_F(TrieCheckDamage, RecordWithTheTerminalByteInsideClosesNoKey) {
  TrieSection damaged;
  damaged.size = 4;
  damaged.base = {4, 1, 0, 0, -1};
  damaged.check = {0, -2, -3, -5, 1};
  damaged.emptyTail = 3;
  for (const char* text : {"\x7F\x7F", "a\x7Fz\x7F", "a", "", "\x7F"}) {
    damaged.tail = '\0' + std::string(text) + '\0' + word(1) + '\0';
    damaged.posTail = static_cast<int>(damaged.tail.size()) - 1;
    const Faults expected = {
        "cell 4 has a record at 1 that does not close a key"};
    EXPECT_EQ(std::string(text) == "\x7F" ? Faults() : expected,
              faultsOf(damaged))
        << text;
  }
}

// Nothing needs the children of an empty trie's root, but an insertion would
// trust its base.
TEST_F(TrieCheckDamage, RootOfAnEmptyTrieHasItsBaseInReach) {
  TrieSection far;
  far.base[1] = INT32_MAX;
  const Faults faults = faultsOf(far);
  ASSERT_EQ(1U, faults.size());
  EXPECT_EQ(0U, faults[0].find("cell 1")) << faults[0];
}

TEST_F(TrieCheckDamage, FaultsEndAtTheLimit) {
  TrieSection damaged = section_;
  for (std::size_t s = 50; s < 70; ++s) damaged.check[s] = 0;
  const Faults all = faultsOf(damaged, 1000);
  EXPECT_GE(all.size(), 20U);
  for (const std::size_t limit : {0U, 1U, 7U, 20U}) {
    const Faults some = faultsOf(damaged, limit);
    EXPECT_EQ(Faults(all.begin(), all.begin() + static_cast<int>(limit)), some);
  }
}

TEST_F(TrieCheckDamage, LooksWithoutChangingAnything) {
  DoubleArray trie(16, 0);
  readSection(&trie, section_.bytes());
  checkTrie(trie, 10);
  EXPECT_EQ(section_.bytes(), sectionOf(trie));
}

}  // namespace
}  // namespace urldb
