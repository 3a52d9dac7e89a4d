#ifndef URLDB_TOOLS_FRESHNESS_TEXT_H_
#define URLDB_TOOLS_FRESHNESS_TEXT_H_

#include <cstdint>
#include <string>

#include "urldb/urldb.h"

namespace urldb {

// A packed date as YYYY-MM-DD, "none" for the year 0.
std::string dateText(uint32_t packed);

// Whether a database is fresh, by its own date and today's: "until 2026-12-22",
// "expired since 2026-12-22 (9 days)", "always (no date)".
std::string freshnessText(const URLDB& db);

}  // namespace urldb

#endif  // URLDB_TOOLS_FRESHNESS_TEXT_H_
