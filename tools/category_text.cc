#include "tools/category_text.h"

#include "tools/name_codec.h"

namespace urldb {

const std::string& CategoryText::name(std::size_t id) {
  std::string& text = known_[id];
  if (!text.empty()) return text;
  const auto names = names_.view().names;
  if (id >= 1 && id <= names.size()) text = escape_(toUtf8Name(names[id - 1]));
  if (text.empty()) text = std::to_string(id);
  return text;
}

std::string CategoryText::value(int32_t cateIDs) {
  std::string second = name(level2(cateIDs));
  if (level1(cateIDs) == level2(cateIDs)) return second;
  return name(level1(cateIDs)) + "/" + second;
}

std::string CategoryText::list(std::span<const int> values) {
  std::string text;
  for (const int cateIDs : values) {
    if (!text.empty()) text += ',';
    text += value(cateIDs);
  }
  return text;
}

}  // namespace urldb
