#include "urldb/category_view.h"

#include <cstddef>

namespace urldb {

std::vector<CategoryBranch> CategoryView::branches() const {
  std::vector<CategoryBranch> result;
  result.reserve(level1.size());
  for (const int32_t word : level1) {
    const auto entry = static_cast<uint32_t>(word);
    CategoryBranch& branch = result.emplace_back();
    branch.level1 = static_cast<int>(entry >> 16);
    std::size_t node = entry & 0xFFFF;
    while (node != 0) {
      const auto link = static_cast<uint32_t>(level2[node]);
      branch.level2.push_back(static_cast<int>(link & 0xFFFF));
      node = link >> 16;
    }
  }
  return result;
}

}  // namespace urldb
