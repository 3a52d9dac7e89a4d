#ifndef URLDB_TOOLS_CATEGORY_TABLE_H_
#define URLDB_TOOLS_CATEGORY_TABLE_H_

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tools/category.h"
#include "tools/hierarchy_file.h"
#include "urldb/category_names.h"

namespace urldb {

// Gives category names their IDs and categories their values. One name has one
// ID wherever it occurs; IDs are given in the order of first use.
class CategoryTable {
 public:
  // Starts with the names of an existing database, under their IDs. Comes
  // before any value() is asked for.
  void startFrom(const CategoryNames& names);

  // The same for a database that is made anew: complete() adds those names as
  // well, and records their pairs again, as baseValue() changes them. Comes
  // after setHierarchy(). Throws as value().
  void startAnewFrom(const CategoryNames& names);

  // A plain category that stands in `hierarchy` has the value of that pair.
  void setHierarchy(Hierarchy hierarchy) { hierarchy_ = std::move(hierarchy); }

  // What a value of the existing database becomes in one that is made anew:
  // that of the pair when it is a plain category which stands in the hierarchy,
  // else itself. Throws as value().
  int32_t baseValue(int32_t value);

  // The value: level-1 ID in the high, level-2 ID in the low 16 bits, twice the
  // same ID for a plain category. Throws ProgramError when a new name finds
  // the table full, 32767 names.
  int32_t value(const Category& category);

  // The number of names.
  std::size_t size() const { return names_; }

  // Adds the names that are not from startFrom(), and records all values that
  // were asked for in the hierarchy. `names` holds those of startFrom(); it is
  // empty after startAnewFrom().
  void complete(CategoryNames* names) const;

 private:
  int idOf(const std::string& name);
  int32_t recorded(int32_t value);

  Hierarchy hierarchy_;
  std::unordered_map<std::string, int> ids_;
  std::size_t names_ = 0;
  // Those that complete() adds: the last ones, in the order of their IDs.
  std::vector<std::string> newNames_;
  std::vector<int32_t> values_;        // in the order of first use
  std::unordered_set<int32_t> known_;  // the same values
};

}  // namespace urldb

#endif  // URLDB_TOOLS_CATEGORY_TABLE_H_
