#ifndef URLDB_URLDB_PACKED_DATE_H_
#define URLDB_URLDB_PACKED_DATE_H_

#include <compare>
#include <cstdint>
#include <ctime>

namespace urldb {

// A day, as the freshness of a database is dated. Compares in time order.
struct FreshDate {
  int year = 0;   // 4 digits; 0: no date
  int month = 0;  // 1 to 12
  int day = 0;    // 1 to 31

  // NOLINTNEXTLINE(modernize-use-nullptr): what the compiler generates here
  auto operator<=>(const FreshDate&) const = default;
};

// The word in which a database file holds a date: bits 0 to 4 the day, bits 5
// to 16 the year, bits 17 to 20 the month.
constexpr uint32_t packDate(const FreshDate& date) {
  const auto month = static_cast<uint32_t>(date.month);
  const auto year = static_cast<uint32_t>(date.year) & 0xFFF;
  return (((month << 12) | year) << 5) | (static_cast<uint32_t>(date.day) & 31);
}

constexpr FreshDate unpackDate(uint32_t packed) {
  return {static_cast<int>((packed >> 5) & 0xFFF),
          static_cast<int>((packed >> 17) & 0xF),
          static_cast<int>(packed & 31)};
}

// Whether `today` is not later than the last fresh day; true without such a
// day.
constexpr bool isFreshOn(const FreshDate& today, const FreshDate& last) {
  return last.year == 0 || today <= last;
}

// The local date at `time`; all 0 when there is none.
FreshDate localDate(std::time_t time);

}  // namespace urldb

#endif  // URLDB_URLDB_PACKED_DATE_H_
