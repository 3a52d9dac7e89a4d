#ifndef URLDB_TOOLS_HIERARCHY_FILE_H_
#define URLDB_TOOLS_HIERARCHY_FILE_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tools/line_source.h"

namespace urldb {

// Which level-1 category a plain category belongs to. Names are in the form of
// Category.
class Hierarchy {
 public:
  // Puts `level2` under `level1`. False, with nothing changed, when it stands
  // under another one already.
  bool add(const std::string& level1, const std::string& level2);

  // The level 1 of a category, or null. Lives until the next add().
  const std::string* level1Of(const std::string& level2) const;

  std::size_t size() const { return level1_.size(); }

 private:
  std::unordered_map<std::string, std::string> level1_;  // by level 2
};

// Is told of each line that cannot be used. `line` counts from 1.
using RefuseLine = std::function<void(uint64_t line, std::string_view text,
                                      std::string_view reason)>;

// Reads lines "LEVEL1<TAB>LEVEL2" to the end, with names in UTF-8, and blank
// lines and comments as lists have them. When the first line is "#hierarchy",
// names are in the %XX form of a dump, and only a line without a tab is a
// comment, since a '#' may begin a name there. Throws ErrException, code 4,
// when reading fails.
Hierarchy readHierarchy(LineSource& source, const RefuseLine& refuse);

}  // namespace urldb

#endif  // URLDB_TOOLS_HIERARCHY_FILE_H_
