#ifndef URLDB_URLDB_CATEGORY_VIEW_H_
#define URLDB_URLDB_CATEGORY_VIEW_H_

#include <cstdint>
#include <span>
#include <vector>

namespace urldb {

// The level-2 IDs recorded under one level-1 ID, in the order in which they
// came.
struct CategoryBranch {
  int level1 = 0;
  std::vector<int> level2;  // empty when only the level-1 ID was recorded
};

// A read-only look at a table of category names and its hierarchy, for programs
// and checks. Valid until the table changes.
struct CategoryView {
  std::span<const char* const> names;  // the name of ID n is names[n - 1]
  std::span<const int32_t> level1;     // words as described in category_names.h
  std::span<const int32_t> level2;     // node 0 included

  // The hierarchy, a branch for each level-1 entry in table order.
  // Throws std::bad_alloc.
  std::vector<CategoryBranch> branches() const;
};

}  // namespace urldb

#endif  // URLDB_URLDB_CATEGORY_VIEW_H_
