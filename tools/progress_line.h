#ifndef URLDB_TOOLS_PROGRESS_LINE_H_
#define URLDB_TOOLS_PROGRESS_LINE_H_

#include <chrono>
#include <string>
#include <string_view>

namespace urldb {

// One line on standard error that is rewritten as long work goes on. Shows
// nothing when standard error is not a terminal.
class ProgressLine {
 public:
  ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine() { clear(); }

  // Puts `phase` and `detail` in place of what stands there; at most ten times
  // a second while the phase is the same.
  void show(std::string_view phase, std::string_view detail = {});

  // Takes the line away, before anything else is written to the terminal.
  void clear();

 private:
  bool terminal_;
  bool shown_ = false;
  std::string phase_;
  std::chrono::steady_clock::time_point last_;
};

}  // namespace urldb

#endif  // URLDB_TOOLS_PROGRESS_LINE_H_
