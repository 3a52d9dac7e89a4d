#ifndef URLDB_TOOLS_CATEGORY_TEXT_H_
#define URLDB_TOOLS_CATEGORY_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "urldb/category_names.h"

namespace urldb {

// The values of a category list as URLDB::search returns it; none of a null
// one.
inline std::span<const int> listValues(const int* list) {
  if (list == nullptr) return {};
  return {list + 1, static_cast<std::size_t>(list[0])};
}

// Category values as text, in UTF-8. A name is converted once, when it is first
// wanted.
class CategoryText {
 public:
  using Escape = std::string (*)(std::string_view);

  // `names` stays the caller's and unchanged. `escape` is the form in which
  // names are written, escapeShownName or escapeName.
  CategoryText(const CategoryNames& names, Escape escape)
      : names_(names), escape_(escape) {}

  // The name of a category, or its number when it has no name. The text lasts
  // as long as this object.
  const std::string& name(std::size_t id);

  // A value: one name when both halves are the same ID, else "level1/level2".
  std::string value(int32_t cateIDs);

  // All values of a list, joined by ','.
  std::string list(std::span<const int> values);

  // The level-1 and the level-2 ID of a value.
  static std::size_t level1(int32_t cateIDs) {
    return static_cast<uint32_t>(cateIDs) >> 16;
  }
  static std::size_t level2(int32_t cateIDs) {
    return static_cast<uint32_t>(cateIDs) & 0xFFFF;
  }

 private:
  const CategoryNames& names_;
  Escape escape_;
  // By ID, what has been asked for; a map, so that texts stay where they are.
  std::unordered_map<std::size_t, std::string> known_;
};

}  // namespace urldb

#endif  // URLDB_TOOLS_CATEGORY_TEXT_H_
