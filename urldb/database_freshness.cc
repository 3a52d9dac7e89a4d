#include "urldb/database_freshness.h"

#include <cstdint>
#include <ctime>

#include "common/error.h"

namespace urldb {

void setFreshDays(URLDB& db, int days) {
  constexpr int64_t kDay = 86400;  // seconds
  const FreshDate date = localDate(std::time(nullptr) + days * kDay);
  if (date.year < 1 || date.year > 4095)  // 12 bits; 0 means no date
    throw ErrException(ERR_INVALID_ARGUMENT, 3004, "setFreshDays()");
  db.freshDate_ = packDate(date);
  db.modified_ = true;
}

}  // namespace urldb
