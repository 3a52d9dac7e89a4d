#include "common/list.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

#include "tests/expect_error.h"
#include "tests/failing_new.h"

namespace urldb {
namespace {

static_assert(!std::is_copy_constructible_v<List<int>>);
static_assert(!std::is_copy_assignable_v<List<int>>);

template <class T>
std::vector<T> rest(List<T>& list) {
  std::vector<T> values;
  while (list.hasNext()) values.push_back(list.next());
  return values;
}

TEST(List, ValuesComeOutInTheOrderOfAdding) {
  List<int> list;
  EXPECT_EQ(0, list.getSize());
  for (int v = 1; v <= 3; ++v) EXPECT_EQ(v, list.add(v));
  EXPECT_EQ(3, list.getSize());
  EXPECT_EQ((std::vector<int>{1, 2, 3}), rest(list));
}

TEST(List, RewindStartsAgain) {
  List<int> list;
  list.add(7);
  list.add(8);
  EXPECT_EQ(7, list.next());
  list.rewind();
  EXPECT_EQ((std::vector<int>{7, 8}), rest(list));
  EXPECT_EQ(2, list.getSize());
}

TEST(List, AnEmptyListHasNoNext) {
  List<int> list;
  EXPECT_FALSE(list.hasNext());
  expectError(ERR_NO_SUCH_ELEMENT, 1, [&] { list.next(); });
}

TEST(List, NextAtTheEndThrowsAndTheCursorStays) {
  List<int> list;
  list.add(1);
  list.next();
  EXPECT_FALSE(list.hasNext());
  expectError(ERR_NO_SUCH_ELEMENT, 1, [&] { list.next(); });
  list.add(2);
  EXPECT_EQ(2, list.next());
}

TEST(List, AValueAddedDuringAReadIsReached) {
  List<int> list;
  list.add(1);
  EXPECT_EQ(1, list.next());
  list.add(2);
  EXPECT_TRUE(list.hasNext());
  EXPECT_EQ(2, list.next());

  List<int> empty;
  empty.rewind();
  empty.add(3);
  EXPECT_EQ(3, empty.next());
}

TEST(List, RemoveAllStartsAgainInTheMiddleOfARead) {
  List<int> list;
  list.add(1);
  list.add(2);
  list.next();
  list.removeAll();
  EXPECT_EQ(0, list.getSize());
  EXPECT_FALSE(list.hasNext());
  EXPECT_EQ(1, list.add(9));
  EXPECT_EQ((std::vector<int>{9}), rest(list));
}

TEST(List, InitForgetsTheNodesWithoutFreeingThem) {
  List<int> list;
  list.init();  // of no nodes: there is nothing to lose
  EXPECT_EQ(0, list.getSize());
  EXPECT_EQ(1, list.add(4));
  EXPECT_EQ((std::vector<int>{4}), rest(list));
}

TEST(List, PointersAreNotFreed) {
  char text[] = "kept";
  List<char*> list;
  list.add(text);
  list.removeAll();
  list.add(text);
  EXPECT_EQ(text, list.next());
  EXPECT_STREQ("kept", text);
}

TEST(List, AMillionNodesAreFreedWithoutRecursion) {
  List<int> list;
  for (int v = 0; v < 1000000; ++v) list.add(v);
  EXPECT_EQ(1000000, list.getSize());
}

TEST(List, OutOfMemoryIsCode1AndLeavesTheList) {
  List<int> list;
  list.add(1);
  expectError(ERR_NO_MEMORY, 1, [&] {
    const FailingNew failing(1);
    list.add(2);
  });
  EXPECT_EQ(1, list.getSize());
  list.add(3);
  EXPECT_EQ((std::vector<int>{1, 3}), rest(list));
}

}  // namespace
}  // namespace urldb
