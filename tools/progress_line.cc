#include "tools/progress_line.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <string>

#include "tools/escape.h"

namespace urldb {

namespace {

constexpr std::string_view kErase = "\r\x1B[K";

// What cannot be shown is left out: there is nobody to tell.
void put(std::string_view text) {
  [[maybe_unused]] const ssize_t ignored =
      ::write(STDERR_FILENO, text.data(), text.size());
}

std::size_t terminalWidth() {
  winsize size{};
  if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
    return 80;
  return size.ws_col;
}

}  // namespace

ProgressLine::ProgressLine() : terminal_(::isatty(STDERR_FILENO) == 1) {}

void ProgressLine::show(std::string_view phase, std::string_view detail) {
  using std::chrono::milliseconds;
  if (!terminal_) return;
  const auto now = std::chrono::steady_clock::now();
  if (shown_ && phase == phase_ && now - last_ < milliseconds(100)) return;
  last_ = now;
  shown_ = true;
  phase_ = phase;
  // A line that wraps could not be rewritten.
  const std::string line = escapeText(phase_ + std::string(detail));
  put(std::string(kErase) + line.substr(0, terminalWidth() - 1));
}

void ProgressLine::clear() {
  if (!shown_) return;
  put(kErase);
  shown_ = false;
}

}  // namespace urldb
