#ifndef URLDB_URLDB_TRIE_VIEW_H_
#define URLDB_URLDB_TRIE_VIEW_H_

#include <cstdint>
#include <cstring>

namespace urldb {

// A read-only look at the cells and the TAIL of a trie, for what stands beside
// its fixed interface: edge-aware lookup, enumeration, the structural check.
// Valid until the trie changes. Everything here is safe on cells of any value.
// Layout: docs/trie.md.
struct TrieView {
  const int32_t* base;
  const int32_t* check;
  int32_t size;  // DA_SIZE, the highest cell in use
  int32_t emptyHead;
  int32_t emptyTail;
  const unsigned char* tail;  // positions 0 to posTail, and spare NULs behind
  int32_t posTail;
  int32_t convMode;

  // The child of cell `s` by label `c`, or 0.
  int32_t child(int32_t s, int c) const {
    const int64_t t = static_cast<int64_t>(base[s]) + c;
    return t >= 1 && t <= size && check[t] == s ? static_cast<int32_t>(t) : 0;
  }

  bool isLeaf(int32_t s) const { return base[s] < 0; }

  // Where the record of leaf `s` starts, or 0 when that is outside TAIL.
  int32_t recordOf(int32_t s) const {
    const int64_t p = -static_cast<int64_t>(base[s]);
    return p >= 1 && p < posTail ? static_cast<int32_t>(p) : 0;
  }

  // The position of the first NUL at or after `p`, or 0 when there is none
  // before posTail.
  int32_t recordEnd(int32_t p) const {
    const void* nul =
        p < posTail
            ? std::memchr(tail + p, 0, static_cast<std::size_t>(posTail - p))
            : nullptr;
    return nul == nullptr ? 0
                          : static_cast<int32_t>(
                                static_cast<const unsigned char*>(nul) - tail);
  }

  // The identifier behind the NUL at position `end`.
  int32_t identifierAt(int32_t end) const {
    int32_t id = 0;
    std::memcpy(&id, tail + end + 1, sizeof id);
    return id;
  }
};

}  // namespace urldb

#endif  // URLDB_URLDB_TRIE_VIEW_H_
