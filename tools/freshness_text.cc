#include "tools/freshness_text.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>

#include "urldb/database_view.h"
#include "urldb/packed_date.h"

namespace urldb {

namespace {

std::chrono::year_month_day calendarDate(const FreshDate& date) {
  return {std::chrono::year(date.year),
          std::chrono::month(static_cast<unsigned>(date.month)),
          std::chrono::day(static_cast<unsigned>(date.day))};
}

// From `date` to today, both in local time.
int64_t daysSince(std::chrono::year_month_day date) {
  const auto today = calendarDate(localDate(std::time(nullptr)));
  return (std::chrono::sys_days(today) - std::chrono::sys_days(date)).count();
}

}  // namespace

std::string dateText(uint32_t packed) {
  const FreshDate date = unpackDate(packed);
  if (date.year == 0) return "none";
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02d", date.year,
                date.month, date.day);
  return text.data();
}

std::string freshnessText(const URLDB& db) {
  const uint32_t packed = viewOf(db).freshDate;
  const FreshDate date = unpackDate(packed);
  if (date.year == 0) return "always (no date)";
  if (db.isFreshed()) return "until " + dateText(packed);
  std::string text = "expired since " + dateText(packed);
  // The date comes from a file and may be none of the calendar.
  const auto day = calendarDate(date);
  if (day.ok()) {
    const int64_t days = daysSince(day);
    text += " (" + std::to_string(days) + (days == 1 ? " day)" : " days)");
  }
  return text;
}

}  // namespace urldb
