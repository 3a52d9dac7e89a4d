#ifndef URLDB_URLDB_CHILD_LINKS_H_
#define URLDB_URLDB_CHILD_LINKS_H_

#include <cstdint>
#include <vector>

#include "urldb/trie_view.h"

namespace urldb {

// The labels of the children of every cell, ascending, made in one pass over
// the cells: without it each cell would cost a look at 255 possible children.
class ChildLinks {
 public:
  // Throws std::bad_alloc. Safe on cells of any value.
  explicit ChildLinks(const TrieView& trie);

  // The smallest label of a child of `cell`, or 0.
  unsigned char first(int32_t cell) const {
    return first_[static_cast<std::size_t>(cell)];
  }
  // The next greater label among the siblings of `cell`, or 0.
  unsigned char nextSibling(int32_t cell) const {
    return next_[static_cast<std::size_t>(cell)];
  }

 private:
  std::vector<unsigned char> first_;  // by parent
  std::vector<unsigned char> next_;   // by child
};

}  // namespace urldb

#endif  // URLDB_URLDB_CHILD_LINKS_H_
