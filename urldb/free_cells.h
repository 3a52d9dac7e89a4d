#ifndef URLDB_URLDB_FREE_CELLS_H_
#define URLDB_URLDB_FREE_CELLS_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace urldb {

class NodeList;

// Which cells of a trie are free, as a bit set with summaries: bit i of a level
// tells whether word i of the level below has a bit set. It answers the two
// questions of the free list (the free cell before a cell, the first fit for a
// set of labels) word by word where the list itself can only be walked.
//
// The root, cell 1, counts as free, as in the list, whose head it is; so do all
// cells beyond the highest one in use.
class FreeCells {
 public:
  // Makes room for cells 0 to `cells` - 1; new ones are free.
  void grow(std::size_t cells);

  void take(int32_t cell);     // it is in use from now on
  void release(int32_t cell);  // it is free again

  // The last free cell before `cell`, which is above 1: at least the root.
  int32_t before(int32_t cell) const;

  // The lowest free cell f above the smallest label such that with the base
  // f - smallest every label falls on a free cell. Room must reach 256 cells
  // beyond the highest cell in use, so that there always is one.
  int32_t firstFit(const NodeList& labels) const;

 private:
  using Level = std::vector<uint64_t>;

  // The first free cell at or after `cell`.
  std::size_t atOrAfter(std::size_t cell) const;
  // 64 bits of the lowest level from bit `cell` on.
  uint64_t window(std::size_t cell) const;

  std::vector<Level> levels_;  // the cells first, one word at the top
};

}  // namespace urldb

#endif  // URLDB_URLDB_FREE_CELLS_H_
