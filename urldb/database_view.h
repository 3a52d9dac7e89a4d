#ifndef URLDB_URLDB_DATABASE_VIEW_H_
#define URLDB_URLDB_DATABASE_VIEW_H_

#include <cstdint>
#include <span>
#include <vector>

#include "urldb/category_names.h"
#include "urldb/double_array.h"

namespace urldb {

class URLDB;

// A read-only look at the parts of a database, for what stands beside its fixed
// interface: lookup by mode, checks, programs. Valid until the database
// changes.
struct DatabaseView {
  const char* fileName;   // as given to openFile, "" for none
  int version;            // of the format
  const char* timeStamp;  // "YYYY/MM/DD hh:mm:ss" of writing, "" for none
  uint32_t freshDate;     // packed, see packed_date.h
  int urlID;              // the next ID; those given lie below it
  int numIdxURLID;        // entries in urlIndex
  int numRepCateIDs;      // entries in repository
  int writeRepCateIDs;    // the first position behind all lists
  int maxCategoryChain;   // length of the longest list, 0 while none has two
                          // values
  bool finalized;         // opened for lookups
  int freePositions;      // number of positions held for reuse; 0 in lookup use
  const CategoryNames* names;  // null in a database that is not open
  const DoubleArray* trie;     // likewise
  std::span<const int32_t>
      urlIndex;  // by URL ID: where its list starts, 0: none
  // Lists of category values: consecutive entries, all but the last with bit 15
  // set. A free entry is -1.
  std::span<const int32_t> repository;
};

DatabaseView viewOf(const URLDB& db);

// The positions held for reuse, in the order in which they would be taken; none
// in lookup use. Throws std::bad_alloc.
std::vector<int32_t> freePositionsOf(const URLDB& db);

}  // namespace urldb

#endif  // URLDB_URLDB_DATABASE_VIEW_H_
