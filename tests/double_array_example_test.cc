#include <gtest/gtest.h>

#include <map>
#include <utility>

#include "urldb/double_array.h"

// The drawn example of docs/trie.md.

namespace urldb {
namespace {

using Cells = std::map<int, std::pair<int, int>>;

// Every cell in use but the root, with its BASE and CHECK.
Cells cellsInUse(const DoubleArray& trie) {
  const TrieView view = trie.view();
  Cells cells;
  for (int s = 2; s <= view.size; ++s) {
    if (view.check[s] > 0) cells[s] = {view.base[s], view.check[s]};
  }
  return cells;
}

class TrieExample : public testing::Test {
 protected:
  TrieExample() : trie_(1024, 0) {
    trie_.add("car", 1);
    trie_.add("cat", 2);
    trie_.add("ca", 3);
    trie_.add("do", 4);
    trie_.add("dx", 5);
  }

  DoubleArray trie_;
};

TEST_F(TrieExample, CellsAndRecordsAreThoseOfTheDrawing) {
  const Cells expected = {{98, {1, 100}},    {100, {1, 1}},   {101, {1, 1}},
                          {112, {-20, 101}}, {115, {-1, 98}}, {117, {-9, 98}},
                          {121, {-27, 101}}, {128, {-15, 98}}};
  EXPECT_EQ(expected, cellsInUse(trie_));
  const TrieView view = trie_.view();
  EXPECT_EQ(1, view.base[1]);
  EXPECT_EQ(128, view.size);
  EXPECT_EQ(33, view.posTail);
  EXPECT_EQ(127, view.emptyTail);
  EXPECT_EQ(-129, view.check[127]);
  EXPECT_EQ(3, trie_.getObject(15));
}

TEST_F(TrieExample, SearchesAnswerAsTold) {
  EXPECT_EQ(2, trie_.search("cat"));
  EXPECT_EQ(2, trie_.searchMaxPrefix("cattle"));
  EXPECT_EQ(3, trie_.searchMaxPrefix("cabin"));
}

TEST_F(TrieExample, TheParentWithFewerChildrenMoves) {
  EXPECT_EQ(0, trie_.add("da", 6));
  const Cells expected = {
      {98, {-33, 101}}, {99, {1, 100}},    {100, {2, 1}},
      {101, {1, 1}},    {112, {-20, 101}}, {115, {-1, 99}},
      {117, {-9, 99}},  {121, {-27, 101}}, {128, {-15, 99}}};
  EXPECT_EQ(expected, cellsInUse(trie_));
}

}  // namespace
}  // namespace urldb
