#ifndef URLDB_URLDB_DATABASE_LOOKUP_H_
#define URLDB_URLDB_DATABASE_LOOKUP_H_

#include "urldb/key_match.h"
#include "urldb/urldb.h"

namespace urldb {

// The mode that a mode word asks for: 1 the exact key, 4 the longest stored
// prefix at any byte, every other word the longest stored prefix that ends at
// an edge.
MatchMode matchModeOf(int modeWord);

// The category list of the stored key that `key` meets in this mode, as
// URLDB::search returns it (word 0 the count; released with delete[]), or null
// when there is none. `match`, if given, receives the URL ID and the length of
// that stored key; a miss leaves it {0, 0}. A database that is not open knows
// nothing. Throws code 22 "lookupKey()", section 3004, for a null or empty key,
// and what URLDB::search throws.
int* lookupKey(const URLDB& db, const char* key, MatchMode mode,
               KeyMatch* match = nullptr);

}  // namespace urldb

#endif  // URLDB_URLDB_DATABASE_LOOKUP_H_
