#include "common/growable_array.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

namespace urldb {
namespace {

using Integers = GrowableArray<int32_t>;

static_assert(!std::is_copy_constructible_v<Integers>);
static_assert(!std::is_copy_assignable_v<Integers>);

std::vector<int32_t> contents(const Integers& array) {
  return {array.data(), array.data() + array.size()};
}

TEST(GrowableArray, IsEmptyAtFirst) {
  Integers array;
  EXPECT_EQ(0U, array.size());
  EXPECT_TRUE(array.empty());
  array.resize(0);
  EXPECT_TRUE(array.empty());
}

TEST(GrowableArray, FillsEveryByteOfNewElements) {
  Integers array(2);
  EXPECT_EQ((std::vector<int32_t>{0, 0}), contents(array));
  array[0] = 7;
  array.resize(4, 0xFF);
  EXPECT_EQ((std::vector<int32_t>{7, 0, -1, -1}), contents(array));
  EXPECT_EQ((std::vector<int32_t>{0x01010101}), contents(Integers(1, 1)));
}

TEST(GrowableArray, ElementsThatComeBackAreFilledAnew) {
  Integers array(3, 0xFF);
  array.resize(1);
  EXPECT_EQ(1U, array.size());
  array.resize(3);
  EXPECT_EQ((std::vector<int32_t>{-1, 0, 0}), contents(array));
}

TEST(GrowableArray, KeepsItsContentOverManySmallSteps) {
  Integers array;
  const int32_t* before = nullptr;
  int moves = 0;
  for (int32_t i = 0; i < 100000; ++i) {
    array.resize(array.size() + 1);
    if (array.data() != before) ++moves;
    before = array.data();
    array[static_cast<std::size_t>(i)] = i;
  }
  for (int32_t i = 0; i < 100000; ++i)
    ASSERT_EQ(i, array[static_cast<std::size_t>(i)]);
  // One for each growth by an eighth, from 8 elements to 100000: about 80.
  EXPECT_LT(moves, 120);
}

TEST(GrowableArray, MovesLeaveAnEmptyArray) {
  Integers first(2, 0xFF);
  const int32_t* const data = first.data();
  Integers second(std::move(first));
  EXPECT_TRUE(first.empty());  // NOLINT: on purpose
  EXPECT_EQ(data, second.data());
  Integers third(5);
  third = std::move(second);
  EXPECT_TRUE(second.empty());  // NOLINT: on purpose
  EXPECT_EQ(data, third.data());
  EXPECT_EQ((std::vector<int32_t>{-1, -1}), contents(third));
  second.resize(1);  // usable again
  EXPECT_EQ((std::vector<int32_t>{0}), contents(second));
}

TEST(GrowableArray, SwapExchangesTheContents) {
  Integers first(1, 0xFF);
  Integers second(2);
  first.swap(second);
  EXPECT_EQ((std::vector<int32_t>{0, 0}), contents(first));
  EXPECT_EQ((std::vector<int32_t>{-1}), contents(second));
}

TEST(GrowableArray, ASizeBeyondTheAddressSpaceLeavesItUnchanged) {
  constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
  Integers array(2, 0xFF);
  for (const std::size_t size : {kMost, kMost / 2, kMost / 4, kMost / 8 + 1}) {
    EXPECT_THROW(array.resize(size), std::bad_alloc);
    EXPECT_EQ((std::vector<int32_t>{-1, -1}), contents(array));
  }
}

}  // namespace
}  // namespace urldb
