#include "bench/ratio_report.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <stdexcept>

namespace urldb {
namespace {

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle]
                                : (values[middle - 1] + values[middle]) / 2;
}

std::string timeText(double nanoseconds) {
  std::ostringstream text;
  text << std::fixed;
  if (nanoseconds >= 1e9) {
    text << std::setprecision(2) << nanoseconds / 1e9 << " s";
  } else if (nanoseconds >= 1e6) {
    text << std::setprecision(1) << nanoseconds / 1e6 << " ms";
  } else if (nanoseconds >= 1e4) {
    text << std::setprecision(1) << nanoseconds / 1e3 << " us";
  } else {
    text << std::setprecision(0) << nanoseconds << " ns";
  }
  return text.str();
}

std::string ratioText(double ratio) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(ratio < 10 ? 2 : 1) << ratio;
  return text.str();
}

void addNew(std::vector<std::string>* list, const std::string& text) {
  if (std::find(list->begin(), list->end(), text) == list->end())
    list->push_back(text);
}

}  // namespace

void RatioReport::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.error_occurred) {
      throw std::runtime_error(run.run_name.function_name + ": " +
                               run.error_message);
    }
    if (run.run_type != Run::RT_Iteration) continue;
    addOnce(
        run.run_name.function_name,
        run.cpu_accumulated_time * 1e9 / static_cast<double>(run.iterations));
  }
}

void RatioReport::addOnce(const std::string& name, double nanoseconds) {
  addNew(&names_, name);
  times_[name].push_back(nanoseconds);
}

std::vector<double> RatioReport::timesOf(const std::string& name) const {
  const auto found = times_.find(name);
  return found == times_.end() ? std::vector<double>() : found->second;
}

std::optional<double> RatioReport::ratio(const std::string& name,
                                         const std::string& baseline) const {
  const std::vector<double> times = timesOf(name);
  const std::vector<double> others = timesOf(baseline);
  if (times.empty() || others.empty()) return std::nullopt;
  if (times.size() != others.size()) return median(times) / median(others);
  std::vector<double> ratios;
  for (std::size_t i = 0; i < times.size(); ++i)
    ratios.push_back(times[i] / others[i]);
  return median(ratios);
}

void RatioReport::printTable(std::ostream& os, const std::string& family,
                             const std::string& baseline) const {
  std::vector<std::string> operations;
  std::vector<std::string> contenders;
  for (const std::string& name : names_) {
    const std::size_t first = name.find('/');
    const std::size_t second = name.find('/', first + 1);
    if (name.substr(0, first) != family) continue;
    addNew(&operations, name.substr(first + 1, second - first - 1));
    addNew(&contenders, name.substr(second + 1));
  }
  if (operations.empty()) return;

  os << "\n| " << family << ", median time (times that of " << baseline
     << ") |";
  for (const std::string& contender : contenders)
    os << ' ' << contender << " |";
  os << "\n|---|";
  for (std::size_t i = 0; i < contenders.size(); ++i) os << "---|";
  os << '\n';
  for (const std::string& operation : operations) {
    std::string row = family;
    row.append("/").append(operation).append("/");
    os << "| " << operation << " |";
    for (const std::string& contender : contenders) {
      const std::vector<double> times = timesOf(row + contender);
      if (times.empty()) {
        os << " - |";
        continue;
      }
      os << ' ' << timeText(median(times));
      const std::optional<double> times_as_long =
          ratio(row + contender, row + baseline);
      if (times_as_long) os << " (" << ratioText(*times_as_long) << ')';
      os << " |";
    }
    os << '\n';
  }
}

void RatioReport::printTarget(std::ostream& os, const std::string& what,
                              double value, double limit, bool atLeast) {
  const bool met = atLeast ? value >= limit : value <= limit;
  os << "| " << what << " | " << (atLeast ? "at least " : "at most ") << limit
     << " | " << ratioText(value) << " | " << (met ? "met" : "MISSED")
     << " |\n";
}

}  // namespace urldb
