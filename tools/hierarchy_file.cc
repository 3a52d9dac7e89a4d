#include "tools/hierarchy_file.h"

#include <optional>

#include "tools/category.h"
#include "tools/list_entry.h"
#include "tools/list_reader.h"
#include "tools/name_codec.h"

namespace urldb {

bool Hierarchy::add(const std::string& level1, const std::string& level2) {
  const auto [place, added] = level1_.try_emplace(level2, level1);
  return added || place->second == level1;
}

const std::string* Hierarchy::level1Of(const std::string& level2) const {
  const auto place = level1_.find(level2);
  return place == level1_.end() ? nullptr : &place->second;
}

Hierarchy readHierarchy(LineSource& source, const RefuseLine& refuse) {
  Hierarchy hierarchy;
  uint64_t number = 0;
  bool escaped = false;
  for (std::string line; source.next(&line);) {
    if (++number == 1) {
      dropByteOrderMark(&line);
      escaped = trimBlanks(line) == "#hierarchy";
    }
    const bool plain = !escaped || line.find('\t') == std::string::npos;
    const std::string_view text = plain ? withoutComment(line) : line;
    if (text.empty()) continue;
    const std::size_t tab = text.find('\t');
    if (tab == std::string_view::npos) {
      refuse(number, text, "no tab between level 1 and level 2");
      continue;
    }
    const auto level1 =
        parseCategoryName(trimBlanks(text.substr(0, tab)), escaped);
    const auto level2 =
        parseCategoryName(trimBlanks(text.substr(tab + 1)), escaped);
    if (!level1 || !level2) {
      refuse(number, text, "unusable category");
    } else if (!hierarchy.add(*level1, *level2)) {
      refuse(number, text,
             "stands under " + toUtf8Name(*hierarchy.level1Of(*level2)) +
                 " already");
    }
  }
  return hierarchy;
}

}  // namespace urldb
