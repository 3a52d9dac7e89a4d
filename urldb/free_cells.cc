#include "urldb/free_cells.h"

#include <algorithm>
#include <array>
#include <bit>

#include "urldb/node_list.h"

namespace urldb {
namespace {

constexpr uint64_t kAll = ~uint64_t{0};

constexpr uint64_t bit(std::size_t i) { return uint64_t{1} << (i % 64); }

}  // namespace

void FreeCells::grow(std::size_t cells) {
  // Two words more than the cells need: a window never looks behind the end.
  std::size_t words = cells / 64 + 3;
  if (!levels_.empty() && words <= levels_.front().size()) return;
  // A set that grows takes an eighth more, since its upper levels follow each
  // time.
  words += words / 8;
  std::vector<std::size_t> sizes = {words};
  while (sizes.back() > 1) sizes.push_back((sizes.back() + 63) / 64);
  while (levels_.size() < sizes.size()) levels_.emplace_back();
  // From the top down: when memory runs out on the way, the cells have not
  // grown and the next call begins anew.
  for (std::size_t level = sizes.size(); level-- > 0;) {
    levels_[level].resize(sizes[level], kAll);
  }
}

void FreeCells::take(int32_t cell) {
  auto i = static_cast<std::size_t>(cell);
  for (Level& level : levels_) {
    level[i / 64] &= ~bit(i);
    if (level[i / 64] != 0) return;
    i /= 64;
  }
}

void FreeCells::release(int32_t cell) {
  auto i = static_cast<std::size_t>(cell);
  for (Level& level : levels_) {
    const bool known = level[i / 64] != 0;
    level[i / 64] |= bit(i);
    if (known) return;
    i /= 64;
  }
}

int32_t FreeCells::before(int32_t cell) const {
  auto i = static_cast<std::size_t>(cell);
  std::size_t level = 0;
  uint64_t below = levels_[0][i / 64] & (bit(i) - 1);
  while (below == 0) {
    i /= 64;
    ++level;
    below = levels_[level][i / 64] & (bit(i) - 1);
  }
  for (;;) {
    i = i / 64 * 64 + static_cast<std::size_t>(std::bit_width(below)) - 1;
    if (level == 0) return static_cast<int32_t>(i);
    --level;
    below = levels_[level][i];
    i *= 64;
  }
}

std::size_t FreeCells::atOrAfter(std::size_t cell) const {
  std::size_t i = cell;
  std::size_t level = 0;
  uint64_t above = levels_[0][i / 64] & (kAll << (i % 64));
  while (above == 0) {
    i = i / 64 + 1;
    ++level;
    // In range: a free cell is always left, in a word behind this one.
    above = levels_[level][i / 64] & (kAll << (i % 64));
  }
  for (;;) {
    i = i / 64 * 64 + static_cast<std::size_t>(std::countr_zero(above));
    if (level == 0) return i;
    --level;
    above = levels_[level][i];
    i *= 64;
  }
}

uint64_t FreeCells::window(std::size_t cell) const {
  const Level& cells = levels_[0];
  const std::size_t word = cell / 64;
  const std::size_t shift = cell % 64;
  if (shift == 0) return cells[word];
  return (cells[word] >> shift) | (cells[word + 1] << (64 - shift));
}

int32_t FreeCells::firstFit(const NodeList& labels) const {
  const auto smallest = static_cast<std::size_t>(labels.getMin());
  std::size_t cell = atOrAfter(smallest + 1);
  if (labels.getSize() == 1) return static_cast<int32_t>(cell);

  std::array<uint8_t, 256> distances;  // of the other labels from the smallest
  std::size_t count = 0;
  for (std::size_t c = smallest + 1; c < 256; ++c) {
    if (labels.contains(static_cast<int>(c))) {
      distances[count++] = static_cast<uint8_t>(c - smallest);
    }
  }
  for (;;) {
    // 64 candidates at a time: bit i stands for the first free cell `start` +
    // i.
    const std::size_t start = cell / 64 * 64;
    uint64_t fits = window(start) & (kAll << (cell % 64));
    for (std::size_t i = 0; i < count && fits != 0; ++i) {
      fits &= window(start + distances[i]);
    }
    if (fits != 0) {
      return static_cast<int32_t>(start) + std::countr_zero(fits);
    }
    cell = atOrAfter(start + 64);
  }
}

}  // namespace urldb
