#ifndef URLDB_BENCH_RATIO_REPORT_H_
#define URLDB_BENCH_RATIO_REPORT_H_

#include <benchmark/benchmark.h>

#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace urldb {

// Collects the processor times of several rounds of the same benchmarks, named
// FAMILY/OPERATION/CONTENDER, and prints them side by side: for each operation
// the median time of each contender, and how many times as long as the baseline
// it took. A ratio is the median of the ratios of the rounds: what disturbed a
// whole round has no part in it.
class RatioReport : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& /*context*/) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override;

  // A time that was taken once, in nanoseconds.
  void addOnce(const std::string& name, double nanoseconds);

  // The ratio of the times of two benchmarks; nothing when one has not run.
  std::optional<double> ratio(const std::string& name,
                              const std::string& baseline) const;

  // A table of the operations of a family, against the contender `baseline`.
  // Operations and contenders come in the order in which they ran.
  void printTable(std::ostream& os, const std::string& family,
                  const std::string& baseline) const;

  // One line on a target: `value` against a limit that it must not exceed, or
  // must reach when `atLeast`.
  static void printTarget(std::ostream& os, const std::string& what,
                          double value, double limit, bool atLeast);

 private:
  std::vector<double> timesOf(const std::string& name) const;

  std::vector<std::string> names_;                    // as they came
  std::map<std::string, std::vector<double>> times_;  // by name, a round each
};

}  // namespace urldb

#endif  // URLDB_BENCH_RATIO_REPORT_H_
