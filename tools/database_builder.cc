#include "tools/database_builder.h"

#include <limits>
#include <memory>

#include "tools/escape.h"
#include "tools/program_error.h"
#include "urldb/database_view.h"
#include "urldb/key_enumerator.h"

namespace urldb {

void DatabaseBuilder::startFrom(const URLDB& base) {
  const DatabaseView view = viewOf(base);
  anew_ = hierarchySet_;
  if (anew_) {
    categories_.startAnewFrom(*view.names);
    keys_.addKnownAgain();
  } else {
    categories_.startFrom(*view.names);
    queuedInBase_ = static_cast<uint64_t>(view.writeRepCateIDs);
  }
  for (KeyEnumerator keys(*view.trie); keys.next();) {
    if (keys.key().empty()) continue;  // not a key that a database can be asked
    const std::unique_ptr<int[]> list(base.searchRepository(keys.id()));
    if (list == nullptr) continue;
    const auto count = static_cast<std::size_t>(list[0]);
    for (const int32_t value : std::span(list.get() + 1, count))
      keys_.addKnown(keys.key(), anew_ ? categories_.baseValue(value) : value);
  }
}

void DatabaseBuilder::add(std::span<const std::string> keys,
                          std::span<const Category> categories) {
  values_.clear();
  for (const Category& category : categories)
    values_.push_back(categories_.value(category));
  keys_.addEntry(keys, values_);
}

KeyTotals DatabaseBuilder::finish() {
  totals_ = keys_.finish();
  if (totals_.freed > kMostFreed)
    throw ProgramError(
        "the keys have too many categories each for one database; most of all "
        "has " +
        escapeKey(totals_.largestKey) + ", " +
        std::to_string(totals_.largestCount));
  return totals_;
}

void DatabaseBuilder::build(
    URLDB* db, CategoryNames* names, const char* basePath,
    const std::function<void(std::size_t done)>& progress) {
  // Room for all positions that wait for reuse even if no key took any: those
  // of the base, and those that lists give up as they grow. The queue takes one
  // less than its size.
  constexpr uint64_t kMostPositions = std::numeric_limits<int>::max() - 2;
  if (totals_.freed + queuedInBase_ > kMostPositions)
    throw ProgramError(
        "the keys have too many categories each for one database");
  const int queueSize = static_cast<int>(totals_.freed + queuedInBase_) + 2;
  const bool extend = basePath != nullptr && !anew_;
  const std::string path = extend ? basePath : "";
  if (db->openFile(path.c_str(), names, queueSize, extend) == -1 && extend &&
      viewOf(*db).version != -1)
    throw ProgramError(path + ": has vanished meanwhile");
  categories_.complete(names);

  constexpr std::size_t kStep = 4096;  // keys between two calls of `progress`
  std::size_t done = 0;
  keys_.forEach([&](const KeyTable::Key& key) {
    if (done++ % kStep == 0) progress(done - 1);
    for (const int32_t value : key.fresh) db->add(key.text, value);
  });
}

}  // namespace urldb
