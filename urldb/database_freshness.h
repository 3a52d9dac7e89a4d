#ifndef URLDB_URLDB_DATABASE_FRESHNESS_H_
#define URLDB_URLDB_DATABASE_FRESHNESS_H_

#include "urldb/packed_date.h"
#include "urldb/urldb.h"

namespace urldb {

// Makes `db` count as fresh up to and including the local date `days` days from
// now (negative: in the past). The database then has something to write. Throws
// code 22 "setFreshDays()", section 3004, when that year does not lie in 1 to
// 4095.
void setFreshDays(URLDB& db, int days);

}  // namespace urldb

#endif  // URLDB_URLDB_DATABASE_FRESHNESS_H_
