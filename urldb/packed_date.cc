#include "urldb/packed_date.h"

namespace urldb {

static_assert(packDate({2024, 3, 31}) == ((3U << 17) | (2024U << 5) | 31U));
static_assert(unpackDate(packDate({2024, 12, 1})) == FreshDate{2024, 12, 1});
// The last day of a month is still fresh; the next one is not.
static_assert(isFreshOn({2024, 1, 31}, {2024, 1, 31}));
static_assert(!isFreshOn({2024, 2, 1}, {2024, 1, 31}));

FreshDate localDate(std::time_t time) {
  std::tm local{};
  if (localtime_r(&time, &local) == nullptr) return {};
  return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday};
}

}  // namespace urldb
