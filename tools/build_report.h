#ifndef URLDB_TOOLS_BUILD_REPORT_H_
#define URLDB_TOOLS_BUILD_REPORT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace urldb {

// A row of the report. Every entry is either kept, or a duplicate (all that it
// says was known), or refused.
struct ReportRow {
  std::string name;
  uint64_t lines = 0;
  uint64_t kept = 0;
  uint64_t duplicate = 0;
  uint64_t refused = 0;
};

// The lists of one SOURCE argument.
struct SourceReport {
  std::string name;
  bool folder = false;          // its lists have rows of their own
  std::vector<ReportRow> rows;  // one when it is not a folder
};

struct BuildReport {
  std::vector<SourceReport> sources;
  std::size_t keys = 0;
  std::size_t categories = 0;
  uint64_t inherited = 0;  // categories that keys have from shorter ones
  uint64_t bytes = 0;      // of the file
  std::string path;
};

// The sum of all rows, named "total".
ReportRow totalOf(const BuildReport& report);

// The report as it is printed: a row of four numbers and a name for each
// source, for each list of a folder and for all, then a line about the file.
std::string reportText(const BuildReport& report);

}  // namespace urldb

#endif  // URLDB_TOOLS_BUILD_REPORT_H_
