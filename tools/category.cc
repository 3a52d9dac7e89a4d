#include "tools/category.h"

#include <cstddef>
#include <utility>

#include "tools/escape.h"
#include "tools/list_entry.h"
#include "tools/name_codec.h"

namespace urldb {

std::optional<std::string> parseCategoryName(std::string_view text,
                                             bool escaped) {
  if (!escaped) return toEucName(text);
  const std::optional<std::string> bytes = unescape(text);
  return bytes ? toEucName(*bytes) : std::nullopt;
}

std::optional<Category> parseCategory(std::string_view text, bool escaped) {
  Category category;
  const std::size_t slash = text.find('/');
  if (slash != std::string_view::npos) {
    std::string_view before = text.substr(0, slash);
    text.remove_prefix(slash + 1);
    if (!escaped) {
      before = trimBlanks(before);
      text = trimBlanks(text);
    }
    std::optional<std::string> level1 = parseCategoryName(before, escaped);
    if (!level1) return std::nullopt;
    category.level1 = std::move(*level1);
    if (text.find('/') != std::string_view::npos) return std::nullopt;
  }
  std::optional<std::string> name = parseCategoryName(text, escaped);
  if (!name) return std::nullopt;
  category.name = std::move(*name);
  return category;
}

}  // namespace urldb
