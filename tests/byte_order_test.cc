#include "common/byte_order.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

namespace urldb {
namespace {

static_assert(convEndian(1U) == 0x01000000U);
static_assert(convEndian(0x12345678U) == 0x78563412U);

TEST(ConvEndian, ReversesTheBytesOfAWord) {
  EXPECT_EQ(0x01000000U, convEndian(1U));
  EXPECT_EQ(0x78563412U, convEndian(0x12345678U));
  EXPECT_EQ(0xFFFFFFFFU, convEndian(0xFFFFFFFFU));
  EXPECT_EQ(0x000000FEU, convEndian(0xFE000000U));
}

TEST(ConvEndian, TwiceGivesTheValueBack) {
  std::mt19937 random(1);
  for (int i = 0; i < 1000; ++i) {
    const auto v = static_cast<unsigned>(random());
    EXPECT_EQ(v, convEndian(convEndian(v)));
  }
}

// Every length up to some vector registers, at every alignment, against a byte
// by byte reversal; the bytes around the array stay as they are.
TEST(ConvEndian, SwapsArraysOfAnyLengthAndAlignment) {
  std::mt19937 random(2);
  for (std::size_t count = 0; count <= 70; ++count) {
    for (std::size_t offset = 0; offset < 8; ++offset) {
      std::vector<unsigned char> bytes(offset + count * 4 + 8);
      for (auto& byte : bytes) byte = static_cast<unsigned char>(random());
      std::vector<unsigned char> expected = bytes;
      for (std::size_t i = 0; i < count * 4; ++i)
        expected[offset + (i ^ 3)] = bytes[offset + i];
      convEndian(bytes.data() + offset, static_cast<unsigned>(count));
      ASSERT_EQ(expected, bytes) << count << " words at " << offset;
    }
  }
}

TEST(ConvEndian, NoElementsNeedNoArray) { convEndian(nullptr, 0); }

}  // namespace
}  // namespace urldb
