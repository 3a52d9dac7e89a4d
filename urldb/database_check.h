#ifndef URLDB_URLDB_DATABASE_CHECK_H_
#define URLDB_URLDB_DATABASE_CHECK_H_

#include <cstddef>
#include <string>
#include <vector>

#include "urldb/urldb.h"

namespace urldb {

// Looks at everything in an open database: the trie (checkTrie), the URL index,
// the category lists, the free positions, the names and their hierarchy, and
// how these agree. A name that is empty, holds a control byte or is that of
// another category is a fault, too. Returns what is wrong, a sentence with
// numbers for each fault, at most `limit` of them; empty: sound. Time and
// memory are linear in the size of the database, whatever it holds. Throws code
// 1, section 3004, when memory runs out.
std::vector<std::string> checkDatabase(const URLDB& db, std::size_t limit);

}  // namespace urldb

#endif  // URLDB_URLDB_DATABASE_CHECK_H_
