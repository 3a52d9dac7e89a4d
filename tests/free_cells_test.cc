#include "urldb/free_cells.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "tests/failing_new.h"
#include "tests/random_keys.h"
#include "urldb/node_list.h"

namespace urldb {
namespace {

// The cells in use, and the two questions answered by looking at cell after
// cell.
struct PlainCells {
  std::set<int> taken;

  bool isFree(int cell) const { return taken.count(cell) == 0; }
  int before(int cell) const {
    do --cell;
    while (!isFree(cell));
    return cell;
  }
  int firstFit(const std::vector<int>& labels) const {
    const int smallest = labels.front();
    for (int f = smallest + 1;; ++f) {
      bool fits = true;
      for (const int c : labels) fits = fits && isFree(f - smallest + c);
      if (fits) return f;
    }
  }
};

NodeList listOf(const std::vector<int>& labels) {
  NodeList list;
  for (const int c : labels) list.add(c);
  return list;
}

std::vector<int> randomLabels(RandomKeys* random) {
  std::set<int> labels;
  const int wanted = 1 + random->below(random->below(8) == 0 ? 80 : 6);
  // Near each other as letters are, or anywhere.
  const int span = random->below(2) == 0 ? 30 : 255;
  const auto size = static_cast<std::size_t>(std::min(wanted, span));
  while (labels.size() < size) {
    labels.insert(1 + random->below(span));
  }
  return {labels.begin(), labels.end()};
}

class FreeCellsModel : public testing::Test {
 protected:
  void grow(int cells) { cells_.grow(static_cast<std::size_t>(cells) + 257); }
  void take(int cell) {
    cells_.take(cell);
    model_.taken.insert(cell);
  }
  void release(int cell) {
    cells_.release(cell);
    model_.taken.erase(cell);
  }
  void expectSameAnswers(RandomKeys* random, int highest) {
    const int cell = 2 + random->below(highest + 200);
    ASSERT_EQ(model_.before(cell), cells_.before(cell)) << "before " << cell;
    const std::vector<int> labels = randomLabels(random);
    ASSERT_EQ(model_.firstFit(labels), cells_.firstFit(listOf(labels)))
        << labels.size() << " labels from " << labels.front();
  }

  FreeCells cells_;
  PlainCells model_;
};

TEST_F(FreeCellsModel, AllCellsAreFreeAtFirst) {
  grow(1000);
  for (const int cell : {2, 3, 63, 64, 65, 128, 1000}) {
    EXPECT_EQ(cell - 1, cells_.before(cell));
  }
  // The root counts as free, but no base reaches it.
  EXPECT_EQ(2, cells_.firstFit(listOf({1})));
  EXPECT_EQ(98, cells_.firstFit(listOf({97, 98, 122})));
  EXPECT_EQ(256, cells_.firstFit(listOf({255})));
}

TEST_F(FreeCellsModel, RootIsTheLastResort) {
  grow(10000);
  for (int cell = 2; cell < 10000; ++cell) take(cell);
  EXPECT_EQ(1, cells_.before(10000));
  EXPECT_EQ(1, cells_.before(64));
  EXPECT_EQ(1, cells_.before(2));
}

TEST_F(FreeCellsModel, FitsBehindAllWhenEverythingIsTaken) {
  for (const int highest : {62, 63, 64, 65, 4095, 4096, 4097, 20000}) {
    cells_ = FreeCells();
    model_.taken.clear();
    grow(highest);
    for (int cell = 2; cell <= highest; ++cell) take(cell);
    EXPECT_EQ(highest + 1, cells_.firstFit(listOf({1, 2, 255}))) << highest;
    EXPECT_EQ(highest + 1, cells_.firstFit(listOf({40}))) << highest;
  }
}

TEST_F(FreeCellsModel, SeesEachHoleBetweenTakenCells) {
  constexpr int kHighest = 700;
  grow(kHighest);
  for (int cell = 2; cell <= kHighest; ++cell) take(cell);
  for (int hole = 3; hole < kHighest; ++hole) {
    release(hole);
    ASSERT_EQ(hole, cells_.before(kHighest));
    ASSERT_EQ(hole, cells_.before(hole + 1));
    ASSERT_EQ(1, cells_.before(hole));
    ASSERT_EQ(hole, cells_.firstFit(listOf({2})));
    ASSERT_EQ(kHighest + 1, cells_.firstFit(listOf({2, 3})));
    take(hole);
  }
}

TEST_F(FreeCellsModel, NewCellsAreFreeAndOldOnesStay) {
  RandomKeys random(3);
  int room = 0;
  for (int round = 0; round < 200; ++round) {
    room += random.below(500);
    grow(room);
    for (int i = 0; i < 10; ++i) {
      if (room > 10) {
        take(2 + random.below(room - 2));
      }
      expectSameAnswers(&random, room);
      if (HasFatalFailure()) return;
    }
  }
}

TEST_F(FreeCellsModel, TakingAndReleasingTwiceChangesNothing) {
  grow(500);
  take(100);
  take(100);
  EXPECT_EQ(99, cells_.before(101));
  release(100);
  release(100);
  EXPECT_EQ(100, cells_.before(101));
}

TEST_F(FreeCellsModel, AgreesWithPlainCellsOnRandomChanges) {
  for (unsigned seed = 1; seed <= 30; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomKeys random(seed);
    cells_ = FreeCells();
    model_.taken.clear();
    const int highest = 300 + random.below(3000);
    grow(highest);
    // From nearly empty to nearly full and back, again and again.
    for (int step = 0; step < 6000; ++step) {
      const int cell = 2 + random.below(highest - 1);
      const bool filling = step / 1500 % 2 == 0;
      if (random.below(10) < (filling ? 8 : 2)) {
        take(cell);
      } else {
        release(cell);
      }
      if (step % 5 == 0) expectSameAnswers(&random, highest);
      if (HasFatalFailure()) return;
    }
  }
}

// Growth that runs out of memory on any level leaves a set that can be used and
// grown again.
TEST_F(FreeCellsModel, GrowthThatFailsCanBeRepeated) {
  constexpr int kSmall = 100;
  constexpr int kLarge = 300000;
  bool done = false;
  int failures = 0;
  for (long n = 1; !done; ++n) {
    SCOPED_TRACE(n);
    cells_ = FreeCells();
    model_.taken.clear();
    grow(kSmall);
    for (int cell = 2; cell < kSmall; cell += 3) take(cell);
    try {
      const FailingNew limited(n);
      grow(kLarge);
      done = true;
    } catch (const std::bad_alloc&) {
      ++failures;
    }
    ASSERT_EQ(model_.before(kSmall), cells_.before(kSmall));
    grow(kLarge);
    for (int cell = 2; cell < kLarge; ++cell) cells_.take(cell);
    ASSERT_EQ(1, cells_.before(kLarge));
    ASSERT_EQ(kLarge, cells_.firstFit(listOf({5, 9})));
  }
  EXPECT_GT(failures, 2);
}

// Enough cells for a fourth level of summaries, with gaps of every size.
TEST_F(FreeCellsModel, FindsItsWayAcrossFarGaps) {
  constexpr int kHighest = 600000;
  grow(kHighest);
  for (int cell = 2; cell <= kHighest; ++cell) cells_.take(cell);
  std::set<int> holes = {1};
  RandomKeys random(11);
  for (int round = 0; round < 300; ++round) {
    const int hole = 2 + random.below(kHighest - 2);
    cells_.release(hole);
    holes.insert(hole);
    const int from = 2 + random.below(kHighest - 2);
    ASSERT_EQ(*std::prev(holes.lower_bound(from)), cells_.before(from));
    const auto above = holes.upper_bound(200);
    ASSERT_EQ(above == holes.end() ? kHighest + 1 : *above,
              cells_.firstFit(listOf({200})));
  }
}

}  // namespace
}  // namespace urldb
