#ifndef URLDB_TOOLS_DATABASE_BUILDER_H_
#define URLDB_TOOLS_DATABASE_BUILDER_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <utility>

#include "tools/category.h"
#include "tools/category_table.h"
#include "tools/hierarchy_file.h"
#include "tools/key_table.h"
#include "urldb/urldb.h"

namespace urldb {

// Makes a database of entries. First everything is collected, with
// setHierarchy(), startFrom() and add(); finish() ends that, and build() fills
// a database.
class DatabaseBuilder {
 public:
  // How many positions of the repository lists may give up as they grow: a
  // list of n values leaves n * (n - 1) / 2 behind, all of them in the file.
  static constexpr uint64_t kMostFreed = 50'000'000;

  // Comes before everything else.
  void setHierarchy(Hierarchy hierarchy) {
    categories_.setHierarchy(std::move(hierarchy));
    hierarchySet_ = true;
  }

  // Takes in the names, keys and values of an existing database, which must be
  // open for lookups and sound. Comes before add(). With a hierarchy its plain
  // categories become pairs like those of the entries. No value can be taken
  // out of a database, so that build() then makes a new one, in which the names
  // keep their IDs, instead of extending the base. Throws as add().
  void startFrom(const URLDB& base);

  // An entry: each of its keys belongs to each of the categories. Keys hold
  // neither NUL nor 0x7F and are not empty. Throws ProgramError when the
  // database has no room for another category name or key.
  void add(std::span<const std::string> keys,
           std::span<const Category> categories);

  // The number of entries so far.
  std::size_t entries() const { return keys_.entries(); }

  // Throws ProgramError when the lists would give up more than kMostFreed
  // positions.
  KeyTotals finish();

  // After finish(): how many of the entries numbered from `begin` up to `end`
  // said anything new.
  std::size_t keptEntries(std::size_t begin, std::size_t end) const {
    return keys_.keptEntries(begin, end);
  }

  std::size_t categories() const { return categories_.size(); }

  // Opens `db` for building, with `names`, which must outlive that use, and
  // adds everything. `basePath` is the file of startFrom(), null without one.
  // `progress` is called now and then with the number of keys done and may
  // throw. Throws ErrException as URLDB::openFile and add(), and ProgramError.
  void build(URLDB* db, CategoryNames* names, const char* basePath,
             const std::function<void(std::size_t done)>& progress);

 private:
  CategoryTable categories_;
  KeyTable keys_;
  KeyTotals totals_;
  bool hierarchySet_ = false;
  bool anew_ = false;            // the base is not extended
  uint64_t queuedInBase_ = 0;    // free positions of the base, at most
  std::vector<int32_t> values_;  // of the entry in hand
};

}  // namespace urldb

#endif  // URLDB_TOOLS_DATABASE_BUILDER_H_
