#include "urldb/child_links.h"

namespace urldb {

ChildLinks::ChildLinks(const TrieView& trie)
    : first_(static_cast<std::size_t>(trie.size) + 1),
      next_(static_cast<std::size_t>(trie.size) + 1) {
  // Downwards, so that each child goes in front of the greater labels.
  for (int32_t t = trie.size; t >= 1; --t) {
    const int32_t parent = trie.check[t];
    if (parent < 1 || parent > trie.size) continue;
    const int64_t label = int64_t{t} - trie.base[parent];
    if (label < 1 || label > 255) continue;
    auto& first = first_[static_cast<std::size_t>(parent)];
    next_[static_cast<std::size_t>(t)] = first;
    first = static_cast<unsigned char>(label);
  }
}

}  // namespace urldb
