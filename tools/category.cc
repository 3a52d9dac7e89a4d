#include "tools/category.h"

#include <cstddef>
#include <utility>

#include "tools/escape.h"
#include "tools/name_codec.h"

namespace urldb {

namespace {

std::optional<std::string> parseName(std::string_view text, bool escaped) {
  if (!escaped) return toEucName(text);
  const std::optional<std::string> bytes = unescape(text);
  return bytes ? toEucName(*bytes) : std::nullopt;
}

}  // namespace

std::optional<Category> parseCategory(std::string_view text, bool escaped) {
  Category category;
  const std::size_t slash = text.find('/');
  if (slash != std::string_view::npos) {
    std::optional<std::string> level1 =
        parseName(text.substr(0, slash), escaped);
    if (!level1) return std::nullopt;
    category.level1 = std::move(*level1);
    text.remove_prefix(slash + 1);
    if (text.find('/') != std::string_view::npos) return std::nullopt;
  }
  std::optional<std::string> name = parseName(text, escaped);
  if (!name) return std::nullopt;
  category.name = std::move(*name);
  return category;
}

}  // namespace urldb
