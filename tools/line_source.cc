#include "tools/line_source.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "common/error.h"

namespace urldb {

namespace {
constexpr std::size_t kBufferSize = std::size_t{256} * 1024;
}  // namespace

LineSource::LineSource(int fd, std::function<void()> beforeRead)
    : fd_(fd), beforeRead_(std::move(beforeRead)), buffer_(kBufferSize) {}

bool LineSource::next(std::string* line) {
  line->clear();
  bool any = false;
  for (;;) {
    if (begin_ == end_ && !refill()) break;
    any = true;
    const char* const start = buffer_.data() + begin_;
    const auto* const end =
        static_cast<const char*>(std::memchr(start, '\n', end_ - begin_));
    if (end != nullptr) {
      line->append(start, end);
      begin_ += static_cast<std::size_t>(end - start) + 1;
      break;
    }
    line->append(start, end_ - begin_);
    begin_ = end_;
  }
  if (!line->empty() && line->back() == '\r') line->pop_back();
  return any;
}

bool LineSource::refill() {
  if (beforeRead_) beforeRead_();
  ssize_t got = 0;
  do {
    got = ::read(fd_, buffer_.data(), buffer_.size());
  } while (got < 0 && errno == EINTR);
  if (got < 0)
    throw ErrException(ERR_CANT_READ_FILE, 0, "%s", std::strerror(errno));
  begin_ = 0;
  end_ = static_cast<std::size_t>(got);
  return got > 0;
}

}  // namespace urldb
