#ifndef URLDB_TOOLS_CATEGORY_H_
#define URLDB_TOOLS_CATEGORY_H_

#include <optional>
#include <string>
#include <string_view>

namespace urldb {

// A category as a list names it, in the form in which the database compares
// names (EUC-JP, full-width forms folded).
struct Category {
  std::string level1;  // empty: a plain category
  std::string name;    // of a pair: its level 2
};

// Reads one name in UTF-8, with `escaped` in the %XX form of a dump. Nothing
// for a broken escape and for what has no such form, see toEucName.
std::optional<std::string> parseCategoryName(std::string_view text,
                                             bool escaped);

// Reads "name" or "level1/level2" in UTF-8. With `escaped`, each name is in the
// %XX form of a dump; otherwise blanks around the '/' do not count. Nothing
// when there are more levels, or a name is empty, holds control characters or
// has no EUC-JP form.
std::optional<Category> parseCategory(std::string_view text,
                                      bool escaped = false);

}  // namespace urldb

#endif  // URLDB_TOOLS_CATEGORY_H_
