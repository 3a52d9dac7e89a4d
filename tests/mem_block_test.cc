#include "common/mem_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/failing_new.h"

namespace urldb {
namespace {

static_assert(!std::is_copy_constructible_v<MemBlock>);
static_assert(!std::is_copy_assignable_v<MemBlock>);

void expectCounters(const MemBlock& pool, unsigned used, std::size_t total,
                    std::size_t blocks) {
  EXPECT_EQ(used, pool.used());
  EXPECT_EQ(total, pool.total());
  EXPECT_EQ(blocks, pool.blockCount());
}

std::string address(const void* pointer) {
  std::ostringstream stream;
  stream << pointer;
  return stream.str();
}

TEST(MemBlock, ANewPoolHoldsNothing) {
  const MemBlock pool(1024);
  expectCounters(pool, 0, 0, 0);
}

TEST(MemBlock, PiecesAreRoundedUpToFourBytes) {
  MemBlock pool(1024);
  auto* const one = static_cast<char*>(pool.alloc(1));
  EXPECT_EQ(4U, pool.used());
  EXPECT_EQ(one + 4, pool.alloc(4));
  EXPECT_EQ(8U, pool.used());
  EXPECT_EQ(one + 8, pool.alloc(5));
  expectCounters(pool, 16, 1032, 1);
}

TEST(MemBlock, NothingIsNull) {
  MemBlock pool(1024);
  EXPECT_EQ(nullptr, pool.alloc(0));
  expectCounters(pool, 0, 0, 0);
}

TEST(MemBlock, APieceThatDoesNotFitOpensANewBlock) {
  MemBlock pool(1024);
  pool.alloc(1020);
  EXPECT_EQ(1020U, pool.used());
  pool.alloc(8);
  expectCounters(pool, 8, 2064, 2);
}

TEST(MemBlock, APieceMayFillABlockToItsEnd) {
  MemBlock pool(1024);
  auto* const first = static_cast<char*>(pool.alloc(1020));
  EXPECT_EQ(first + 1020, pool.alloc(4));
  expectCounters(pool, 1024, 1032, 1);
  pool.alloc(1);
  expectCounters(pool, 4, 2064, 2);
  pool.removeAll();
  pool.alloc(1024);
  expectCounters(pool, 1024, 1032, 1);
}

TEST(MemBlock, ALargePieceLeavesTheHeadCurrent) {
  MemBlock pool(1024);
  auto* const large = static_cast<char*>(pool.alloc(2000));
  expectCounters(pool, 0, 1032 + 2008, 2);
  auto* const small = static_cast<char*>(pool.alloc(4));
  expectCounters(pool, 4, 1032 + 2008, 2);
  std::ostringstream dump;
  dump << pool;
  EXPECT_EQ("--- MemBlock ---\nused: 4\nblockSize: 1024\ntotal: 3040\nblock: " +
                address(small) + "\nblock: " + address(large) + "\n",
            dump.str());
}

TEST(MemBlock, LargePiecesStandBehindAHeadInUse) {
  MemBlock pool(16);
  auto* const first = static_cast<char*>(pool.alloc(4));
  pool.alloc(17);
  pool.alloc(40);
  expectCounters(pool, 4, 24 + 28 + 48, 3);
  EXPECT_EQ(first + 4, pool.alloc(12));
  expectCounters(pool, 16, 24 + 28 + 48, 3);
}

TEST(MemBlock, AnEmptyPoolDumpsItsCounters) {
  std::ostringstream dump;
  dump << MemBlock(4096);
  EXPECT_EQ("--- MemBlock ---\nused: 0\nblockSize: 4096\ntotal: 0\n",
            dump.str());
}

TEST(MemBlock, RemoveAllStartsAgainWithTheSameBlockSize) {
  MemBlock pool(64);
  pool.alloc(40);
  pool.alloc(40);
  pool.alloc(400);
  pool.removeAll();
  expectCounters(pool, 0, 0, 0);
  std::memset(pool.alloc(64), 0xFF, 64);
  expectCounters(pool, 64, 72, 1);
  pool.removeAll();
  const std::string zeros(64, '\0');
  EXPECT_EQ(0, std::memcmp(pool.alloc(64), zeros.data(), 64));
}

TEST(MemBlock, BlockSizesThatAreNoMultipleOfFour) {
  MemBlock pool(10);
  pool.alloc(4);
  pool.alloc(4);
  expectCounters(pool, 8, 18, 1);
  pool.alloc(2);  // rounded to 4, of which only 2 are left
  expectCounters(pool, 4, 36, 2);
  pool.alloc(9);  // rounded to 12, more than a block
  expectCounters(pool, 4, 36 + 20, 3);
}

TEST(MemBlock, ABlockSizeOfZeroGivesEachPieceItsOwnBlock) {
  MemBlock pool(0);
  pool.alloc(1);
  expectCounters(pool, 0, 8 + 12, 2);
  pool.alloc(8);
  expectCounters(pool, 0, 8 + 12 + 16, 3);
}

TEST(MemBlock, SizesThatWrapAroundAreOutOfMemory) {
  for (const unsigned blockSize : {0U, 1024U, UINT_MAX}) {
    for (const unsigned n : {UINT_MAX, UINT_MAX - 1, UINT_MAX - 2}) {
      MemBlock pool(blockSize);
      EXPECT_THROW(pool.alloc(n), std::bad_alloc);
      expectCounters(pool, 0, 0, 0);
    }
  }
  MemBlock pool(1024);
  pool.alloc(4);
  EXPECT_THROW(pool.alloc(UINT_MAX), std::bad_alloc);
  expectCounters(pool, 4, 1032, 1);
  pool.alloc(1020);
  EXPECT_THROW(pool.alloc(UINT_MAX), std::bad_alloc);
  expectCounters(pool, 1024, 1032, 1);
}

TEST(MemBlock, InitializeSetsTheEmptyStateAndTheBlockSize) {
  MemBlock pool(1024);
  pool.initialize(64);  // of no blocks: there is nothing to lose
  pool.alloc(4);
  expectCounters(pool, 4, 72, 1);
}

TEST(MemBlock, AllocBlockIsCountedAndBelongsToTheCaller) {
  MemBlock pool(1024);
  const auto block = pool.allocBlock(100);
  ASSERT_NE(nullptr, block->data);
  EXPECT_EQ(nullptr, block->next);
  expectCounters(pool, 0, 108, 0);
}

// Every allocation of each request fails once: the pool is as it was, but for
// the head that a large first piece has made, and goes on.
TEST(MemBlock, OutOfMemoryLeavesThePoolUsable) {
  const auto attempt = [](MemBlock& pool, unsigned n, long allocations) {
    const FailingNew failing(allocations);
    try {
      return pool.alloc(n) != nullptr;
    } catch (const std::bad_alloc&) {
      return false;
    }
  };
  for (long n = 1; n <= 2; ++n) {
    MemBlock pool(1024);
    EXPECT_FALSE(attempt(pool, 8, n));
    expectCounters(pool, 0, 0, 0);
    EXPECT_TRUE(attempt(pool, 8, 3));
    EXPECT_FALSE(attempt(pool, 1020, n));
    expectCounters(pool, 8, 1032, 1);
    EXPECT_FALSE(attempt(pool, 2000, n));
    expectCounters(pool, 8, 1032, 1);
    EXPECT_NE(nullptr, pool.alloc(1016));
    expectCounters(pool, 1024, 1032, 1);
  }
  for (long n = 3; n <= 4; ++n) {
    MemBlock pool(1024);
    EXPECT_FALSE(attempt(pool, 2000, n));
    expectCounters(pool, 0, 1032, 1);
    EXPECT_TRUE(attempt(pool, 2000, 3));
    expectCounters(pool, 0, 1032 + 2008, 2);
  }
}

TEST(MemBlock, RandomPiecesAreZeroAlignedAndApart) {
  std::mt19937 random(4);
  for (const unsigned blockSize : {1U, 64U, 1024U, 4096U}) {
    MemBlock pool(blockSize);
    unsigned used = 0;
    std::size_t total = 0;
    std::size_t blocks = 0;
    struct Piece {
      unsigned char* data;
      unsigned size;
      unsigned char fill;
    };
    std::vector<Piece> pieces;
    for (int i = 0; i < 500; ++i) {
      const auto most = random() % 4 == 0 ? 3000U : 100U;
      const auto n = static_cast<unsigned>(1 + random() % most);
      const unsigned size = (n + 3) / 4 * 4;
      const bool large = size > blockSize;
      if (blocks == 0 || (!large && used + size > blockSize)) {
        used = 0;
        ++blocks;
        total += blockSize + 8;
      }
      if (large) {
        ++blocks;
        total += size + 8;
      } else {
        used += size;
      }
      auto* const data = static_cast<unsigned char*>(pool.alloc(n));
      ASSERT_EQ(0U, reinterpret_cast<uintptr_t>(data) % 4);
      ASSERT_TRUE(
          std::all_of(data, data + size, [](auto byte) { return byte == 0; }));
      expectCounters(pool, used, total, blocks);
      const auto fill = static_cast<unsigned char>(1 + i % 255);
      std::memset(data, fill, size);
      pieces.push_back({data, size, fill});
    }
    for (const Piece& piece : pieces) {
      ASSERT_TRUE(std::all_of(piece.data, piece.data + piece.size,
                              [&](auto byte) { return byte == piece.fill; }));
    }
  }
}

}  // namespace
}  // namespace urldb
