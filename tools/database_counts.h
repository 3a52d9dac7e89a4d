#ifndef URLDB_TOOLS_DATABASE_COUNTS_H_
#define URLDB_TOOLS_DATABASE_COUNTS_H_

#include <cstddef>

#include "urldb/urldb.h"

namespace urldb {

// What an open database holds. Counted from the database itself, whatever its
// counters say; safe on one that is not sound.
struct DatabaseCounts {
  std::size_t keys = 0;
  std::size_t values = 0;         // category values of all keys together
  std::size_t longestList = 0;    // values of the key that has most
  std::size_t freePositions = 0;  // repository positions in no list
  std::size_t pairs = 0;          // level-1 and level-2 ID in the hierarchy
  std::size_t usedCells = 0;      // of the trie, the root included
  std::size_t freeCells = 0;
};

DatabaseCounts countDatabase(const URLDB& db);

}  // namespace urldb

#endif  // URLDB_TOOLS_DATABASE_COUNTS_H_
