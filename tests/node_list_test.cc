#include "urldb/node_list.h"

#include <gtest/gtest.h>

#include <climits>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/random_keys.h"

namespace urldb {
namespace {

NodeList listOf(std::initializer_list<int> labels) {
  NodeList list;
  for (const int c : labels) list.add(c);
  return list;
}

// The labels as a loop over the list sees them.
std::vector<int> visited(NodeList* list) {
  std::vector<int> labels;
  list->rewind();
  while (list->hasNext()) labels.push_back(list->next());
  return labels;
}

using Labels = std::vector<int>;

TEST(NodeList, IsEmptyAtFirst) {
  NodeList list;
  EXPECT_EQ(0, list.getSize());
  EXPECT_EQ(300, list.getMin());
  EXPECT_FALSE(list.hasNext());
  EXPECT_EQ(Labels(), visited(&list));
  for (int c = 0; c < 256; ++c) EXPECT_FALSE(list.contains(c)) << c;
}

TEST(NodeList, ReadsLabelsInAscendingOrder) {
  const Labels cases[] = {
      {0},     {255},        {0, 255},       {31, 32},          {63, 64},
      {1, 33}, {5, 127, 33}, {250, 3, 100},  {223, 224, 225},   {0, 1, 2, 3},
      {31, 0}, {96, 95, 97}, {254, 255, 32}, {127, 128, 64, 63}};
  for (const Labels& labels : cases) {
    NodeList list;
    for (const int c : labels) EXPECT_EQ(0, list.add(c));
    const std::set<int> sorted(labels.begin(), labels.end());
    EXPECT_EQ(Labels(sorted.begin(), sorted.end()), visited(&list));
    EXPECT_EQ(*sorted.begin(), list.getMin());
    EXPECT_EQ(static_cast<int>(labels.size()), list.getSize());
  }
}

TEST(NodeList, HoldsAllLabelsAtOnce) {
  NodeList list;
  Labels all;
  for (int c = 0; c < 256; ++c) all.push_back(c);
  for (int c = 255; c >= 0; --c) EXPECT_EQ(0, list.add(c));
  EXPECT_EQ(256, list.getSize());
  EXPECT_EQ(all, visited(&list));
}

TEST(NodeList, RefusesLabelsThatAreNoByte) {
  NodeList list = listOf({7});
  for (const int c : {-1, 256, 300, INT_MIN, INT_MAX}) {
    EXPECT_EQ(-1, list.add(c)) << c;
  }
  EXPECT_EQ(1, list.getSize());
  EXPECT_EQ(7, list.getMin());
  EXPECT_EQ(Labels({7}), visited(&list));
}

TEST(NodeList, LabelAddedTwiceCountsTwiceAndEndsAtTheGreatest) {
  NodeList list = listOf({9, 5, 5});
  EXPECT_EQ(3, list.getSize());
  EXPECT_EQ(Labels({5, 9, 9}), visited(&list));
}

TEST(NodeList, AsksForEachVisitOnce) {
  NodeList list = listOf({1, 2, 3});
  list.rewind();
  EXPECT_TRUE(list.hasNext());
  EXPECT_TRUE(list.hasNext());
  EXPECT_TRUE(list.hasNext());
  EXPECT_FALSE(list.hasNext());
  EXPECT_FALSE(list.hasNext());
  EXPECT_EQ(1, list.next());  // the cursor has not moved meanwhile
}

TEST(NodeList, HasNothingToVisitBeforeRewind) {
  NodeList list = listOf({1, 2});
  EXPECT_FALSE(list.hasNext());
}

TEST(NodeList, StaysAtTheGreatestLabel) {
  NodeList list = listOf({4, 200});
  list.rewind();
  EXPECT_EQ(4, list.next());
  EXPECT_EQ(200, list.next());
  EXPECT_EQ(200, list.next());
  EXPECT_EQ(200, list.next());
}

TEST(NodeList, RewindsAnyNumberOfTimes) {
  NodeList list = listOf({4, 200});
  EXPECT_EQ(Labels({4, 200}), visited(&list));
  EXPECT_EQ(Labels({4, 200}), visited(&list));
  list.rewind();
  EXPECT_TRUE(list.hasNext());
  list.next();
  EXPECT_EQ(Labels({4, 200}), visited(&list));
}

TEST(NodeList, ClearEmptiesIt) {
  NodeList list = listOf({1, 100, 255});
  list.rewind();
  list.clear();
  EXPECT_FALSE(list.hasNext());
  EXPECT_EQ(0, list.getSize());
  EXPECT_EQ(300, list.getMin());
  EXPECT_FALSE(list.contains(100));
  list.add(50);
  EXPECT_EQ(Labels({50}), visited(&list));
}

TEST(NodeList, CopiesTheCursorToo) {
  NodeList list = listOf({1, 40, 90});
  list.rewind();
  list.hasNext();
  list.next();

  NodeList copy(list);
  NodeList assigned = listOf({7});
  assigned = list;
  list.add(41);
  for (NodeList* other : {&copy, &assigned}) {
    EXPECT_EQ(3, other->getSize());
    EXPECT_EQ(1, other->getMin());
    EXPECT_TRUE(other->hasNext());
    EXPECT_EQ(40, other->next());
    EXPECT_TRUE(other->hasNext());
    EXPECT_EQ(90, other->next());
    EXPECT_FALSE(other->hasNext());
    EXPECT_FALSE(other->contains(41));
  }
}

TEST(NodeList, AgreesWithASetOnRandomLabels) {
  RandomKeys random(7);
  for (int round = 0; round < 2000; ++round) {
    NodeList list;
    std::set<int> model;
    for (int n = random.below(40); n > 0; --n) {
      const int c = random.below(256);
      if (model.insert(c).second) list.add(c);
    }
    ASSERT_EQ(Labels(model.begin(), model.end()), visited(&list));
    ASSERT_EQ(model.empty() ? 300 : *model.begin(), list.getMin());
    for (int c = 0; c < 256; ++c) {
      ASSERT_EQ(model.count(c) == 1, list.contains(c)) << c;
    }
  }
}

TEST(NodeList, DumpTellsSizeEndsAndLabels) {
  std::ostringstream os;
  os << listOf({97, 3, 255});
  for (const char* part :
       {"size = 3\n", "min = 3\n", "max = 255\n", " 3 97 255\n"}) {
    EXPECT_NE(std::string::npos, os.str().find(part)) << os.str();
  }
}

}  // namespace
}  // namespace urldb
