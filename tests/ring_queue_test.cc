#include "common/ring_queue.h"

#include <gtest/gtest.h>

#include <climits>
#include <deque>
#include <random>
#include <type_traits>

#include "tests/expect_error.h"
#include "tests/failing_new.h"

namespace urldb {
namespace {

static_assert(!std::is_copy_constructible_v<RingQueue<int>>);
static_assert(!std::is_copy_assignable_v<RingQueue<int>>);

TEST(RingQueue, TheThirdPutOverflowsACapacityOfThree) {
  RingQueue<int> queue(3);
  queue.put(1);
  queue.put(2);
  EXPECT_EQ(2, queue.getSize());
  expectError(ERR_OVERFLOW, 6, [&] { queue.put(3); });
  EXPECT_EQ(0, queue.getSize());
  EXPECT_TRUE(queue.empty());
  EXPECT_EQ(nullptr, queue.get());
}

TEST(RingQueue, IsUsableAfterAnOverflow) {
  RingQueue<int> queue(2);
  queue.put(1);
  expectError(ERR_OVERFLOW, 6, [&] { queue.put(2); });
  queue.put(3);
  EXPECT_EQ(1, queue.getSize());
  EXPECT_EQ(3, *queue.get());
}

TEST(RingQueue, ACapacityOfOneTakesNothing) {
  RingQueue<int> queue(1);
  EXPECT_TRUE(queue.empty());
  expectError(ERR_OVERFLOW, 6, [&] { queue.put(1); });
  EXPECT_EQ(0, queue.getSize());
}

TEST(RingQueue, ACapacityBelowOneIsRefusedWithItsText) {
  expectError(ERR_INVALID_ARGUMENT, 6, "Invalid Argument: 0",
              [] { const RingQueue<int> queue(0); });
  expectError(ERR_INVALID_ARGUMENT, 6, "Invalid Argument: -2147483648",
              [] { const RingQueue<int> queue(INT_MIN); });
}

TEST(RingQueue, GetOnAnEmptyQueueIsNull) {
  RingQueue<int> queue(4);
  EXPECT_EQ(nullptr, queue.get());
  queue.put(1);
  ASSERT_NE(nullptr, queue.get());
  EXPECT_EQ(nullptr, queue.get());
}

TEST(RingQueue, AValueStaysUntilItsSlotIsFilledAgain) {
  RingQueue<int> queue(3);
  queue.put(1);
  const int* const one = queue.get();
  queue.put(2);
  queue.put(3);
  EXPECT_EQ(1, *one);
  EXPECT_EQ(2, *queue.get());
  queue.put(4);  // slot 0 again
  EXPECT_EQ(4, *one);
}

TEST(RingQueue, CapacityIsWhatItWasGiven) {
  const RingQueue<int> queue(7);
  EXPECT_EQ(7, queue.getCapacity());
}

TEST(RingQueue, BehavesAsADequeAtAnyPositionOfTheEnds) {
  std::mt19937 random(3);
  for (int capacity = 1; capacity <= 9; ++capacity) {
    RingQueue<int> queue(capacity);
    std::deque<int> model;
    for (int step = 0; step < 2000; ++step) {
      if (random() % 2 == 0 && queue.getSize() + 1 < queue.getCapacity()) {
        queue.put(step);
        model.push_back(step);
      } else {
        const int* const value = queue.get();
        ASSERT_EQ(model.empty(), value == nullptr);
        if (value == nullptr) continue;
        ASSERT_EQ(model.front(), *value);
        model.pop_front();
      }
      ASSERT_EQ(model.size(), static_cast<std::size_t>(queue.getSize()));
      ASSERT_EQ(model.empty(), queue.empty());
    }
  }
}

TEST(RingQueue, OutOfMemoryIsCode1) {
  expectError(ERR_NO_MEMORY, 6, [] {
    const FailingNew failing(1);
    const RingQueue<int> queue(INT_MAX);
  });
}

}  // namespace
}  // namespace urldb
