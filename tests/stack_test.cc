#include "common/stack.h"

#include <gtest/gtest.h>

#include <climits>
#include <type_traits>
#include <vector>

#include "tests/expect_error.h"
#include "tests/failing_new.h"

namespace urldb {
namespace {

static_assert(!std::is_copy_constructible_v<Stack<char*>>);
static_assert(!std::is_copy_assignable_v<Stack<char*>>);

TEST(Stack, ACapacityOfThreeTakesTwoValues) {
  Stack<int> stack(3);
  EXPECT_EQ(1, stack.push(10));
  EXPECT_EQ(2, stack.push(20));
  expectError(ERR_NO_SPACE, 3, [&] { stack.push(30); });
  EXPECT_EQ(2, stack.getCount());
  EXPECT_EQ(20, stack.pop());
  EXPECT_EQ(2, stack.push(40));
}

TEST(Stack, PoppingAnEmptyStackIsCode38) {
  Stack<int> stack(3);
  expectError(ERR_NO_SUCH_ELEMENT, 3, [&] { stack.pop(); });
  stack.push(1);
  stack.pop();
  expectError(ERR_NO_SUCH_ELEMENT, 3, [&] { stack.pop(); });
  EXPECT_EQ(0, stack.getCount());
}

TEST(Stack, IsReadFromTheBottomAndPoppedFromTheTop) {
  Stack<const char*> stack(10);
  stack.push("x");
  stack.push("y");
  stack.rewind();
  ASSERT_TRUE(stack.hasNext());
  EXPECT_STREQ("x", stack.next());
  ASSERT_TRUE(stack.hasNext());
  EXPECT_STREQ("y", stack.next());
  EXPECT_FALSE(stack.hasNext());
  stack.rewind();
  EXPECT_STREQ("x", stack.next());
  EXPECT_STREQ("y", stack.pop());
  EXPECT_FALSE(stack.hasNext());
}

TEST(Stack, AValuePushedDuringAReadIsReached) {
  Stack<int> stack(4);
  stack.push(1);
  EXPECT_EQ(1, stack.next());
  EXPECT_FALSE(stack.hasNext());
  stack.push(2);
  EXPECT_TRUE(stack.hasNext());
  EXPECT_EQ(2, stack.next());
}

TEST(Stack, RemoveAllKeepsTheCapacity) {
  Stack<int> stack(3);
  stack.push(1);
  stack.push(2);
  stack.removeAll();
  EXPECT_EQ(0, stack.getCount());
  stack.rewind();
  EXPECT_FALSE(stack.hasNext());
  EXPECT_EQ(1, stack.push(3));
  EXPECT_EQ(2, stack.push(4));
  expectError(ERR_NO_SPACE, 3, [&] { stack.push(5); });
}

TEST(Stack, CapacitiesOfZeroAndOneTakeNothing) {
  for (const int capacity : {0, 1}) {
    Stack<int> stack(capacity);
    expectError(ERR_NO_SPACE, 3, [&] { stack.push(1); });
    EXPECT_EQ(0, stack.getCount());
    EXPECT_FALSE(stack.hasNext());
  }
}

TEST(Stack, ANegativeCapacityIsOutOfMemory) {
  for (const int capacity : {-1, -4096, INT_MIN})
    expectError(ERR_NO_MEMORY, 3, [&] { const Stack<char*> stack(capacity); });
}

TEST(Stack, OutOfMemoryIsCode1) {
  expectError(ERR_NO_MEMORY, 3, [] {
    const FailingNew failing(1);
    const Stack<char*> stack(INT_MAX);
  });
}

}  // namespace
}  // namespace urldb
