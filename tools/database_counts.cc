#include "tools/database_counts.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "urldb/category_view.h"
#include "urldb/database_view.h"
#include "urldb/double_array.h"
#include "urldb/key_enumerator.h"
#include "urldb/trie_view.h"

namespace urldb {

namespace {

void countLists(std::span<const int32_t> index,
                std::span<const int32_t> repository, DatabaseCounts* counts) {
  std::vector<bool> inList(repository.size());
  for (const int32_t start : index) {
    if (start <= 0) continue;
    std::size_t length = 0;
    bool more = true;
    for (auto p = static_cast<std::size_t>(start);
         more && p < repository.size() &&
         repository[p] != URLDB::CLEAR_PATTERN && !inList[p];
         ++p) {
      inList[p] = true;
      ++length;
      more = (repository[p] & URLDB::LINK_MASK) != 0;
    }
    counts->values += length;
    counts->longestList = std::max(counts->longestList, length);
  }
  // Position 0 belongs to nobody.
  if (!repository.empty())
    counts->freePositions = repository.size() - 1 - counts->values;
}

void countCells(const TrieView& trie, DatabaseCounts* counts) {
  counts->usedCells = 1;  // the root, whose CHECK is that of a free cell
  for (int32_t s = 2; s <= trie.size; ++s) {
    if (trie.check[s] > 0) {
      ++counts->usedCells;
    } else {
      ++counts->freeCells;
    }
  }
}

}  // namespace

DatabaseCounts countDatabase(const URLDB& db) {
  const DatabaseView view = viewOf(db);
  DatabaseCounts counts;
  countLists(view.urlIndex, view.repository, &counts);
  countCells(view.trie->view(), &counts);
  for (const CategoryBranch& branch : view.names->view().branches())
    counts.pairs += branch.level2.size();
  KeyEnumerator keys(*view.trie);
  while (keys.next()) ++counts.keys;
  return counts;
}

}  // namespace urldb
