#include "tools/build_report.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "tools/escape.h"

namespace urldb {

namespace {

constexpr std::array<std::string_view, 4> kTitles = {"lines", "kept",
                                                     "duplicate", "refused"};
constexpr std::size_t kLeastWidth = 10;

ReportRow sum(std::string name, const std::vector<ReportRow>& rows) {
  ReportRow all;
  all.name = std::move(name);
  for (const ReportRow& row : rows) {
    all.lines += row.lines;
    all.kept += row.kept;
    all.duplicate += row.duplicate;
    all.refused += row.refused;
  }
  return all;
}

// Writes rows with numbers as wide as the widest of them.
class Table {
 public:
  explicit Table(const ReportRow& total)
      : width_(std::max(kLeastWidth, widest(total))) {
    for (const std::string_view title : kTitles) cell(title);
    text_ += "list\n";
  }

  void row(const ReportRow& row, std::string_view indent = {}) {
    for (const uint64_t number :
         {row.lines, row.kept, row.duplicate, row.refused})
      cell(std::to_string(number));
    text_.append(indent).append(escapeText(row.name)).append("\n");
  }

  const std::string& text() const { return text_; }

 private:
  static std::size_t widest(const ReportRow& total) {
    return std::to_string(std::max({total.lines, total.kept, total.duplicate,
                                    total.refused}))
        .size();
  }

  void cell(std::string_view content) {
    text_.append(width_ - content.size(), ' ').append(content).append("  ");
  }

  std::size_t width_;
  std::string text_;
};

std::string count(uint64_t number, const char* one, const char* many) {
  return std::to_string(number) + " " + (number == 1 ? one : many);
}

}  // namespace

ReportRow totalOf(const BuildReport& report) {
  std::vector<ReportRow> rows;
  for (const SourceReport& source : report.sources)
    rows.push_back(sum(source.name, source.rows));
  return sum("total", rows);
}

std::string reportText(const BuildReport& report) {
  const ReportRow total = totalOf(report);
  Table table(total);
  for (const SourceReport& source : report.sources) {
    table.row(sum(source.name, source.rows));
    if (!source.folder) continue;
    for (const ReportRow& row : source.rows) table.row(row, "  ");
  }
  table.row(total);
  return table.text() + escapeText(report.path) + ": " +
         count(report.keys, "key", "keys") + ", " +
         count(report.categories, "category", "categories") + ", " +
         count(report.inherited, "category", "categories") +
         " given by covering keys, " + count(report.bytes, "byte", "bytes") +
         "\n";
}

}  // namespace urldb
