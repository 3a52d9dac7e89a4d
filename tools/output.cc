#include "tools/output.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include "tools/program_error.h"

namespace urldb {

namespace {
constexpr std::size_t kPiece = std::size_t{64} * 1024;
}  // namespace

void Output::write(std::string_view text) {
  collected_ += text;
  if (collected_.size() >= kPiece) flush();
}

void Output::flush() {
  std::string piece;
  piece.swap(collected_);
  std::string_view rest = piece;
  while (!rest.empty()) {
    const ssize_t put = ::write(fd_, rest.data(), rest.size());
    if (put >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(put));
    } else if (errno == EPIPE) {
      throw ReaderGone();
    } else if (errno != EINTR) {
      throw ProgramError(std::string(fd_ == STDERR_FILENO
                                         ? "standard error: "
                                         : "standard output: ") +
                         std::strerror(errno));
    }
  }
  piece.clear();
  collected_.swap(piece);  // keeps its memory for the next piece
}

}  // namespace urldb
