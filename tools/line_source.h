#ifndef URLDB_TOOLS_LINE_SOURCE_H_
#define URLDB_TOOLS_LINE_SOURCE_H_

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace urldb {

// Reads a descriptor line by line. Lines have any length and keep every byte
// but their end, NUL bytes included.
class LineSource {
 public:
  // `fd` stays the caller's and open. `beforeRead`, when given, is called each
  // time before more input is asked for: the moment to bring out what an
  // interactive user is waiting for.
  explicit LineSource(int fd, std::function<void()> beforeRead = {});

  // Puts the next line into `line`, without the LF or CR LF that ends it; the
  // last line needs no end. False when there is no more line. Throws
  // ErrException, code 4 and section 0, when reading fails.
  bool next(std::string* line);

 private:
  bool refill();  // false at the end of the input

  int fd_;
  std::function<void()> beforeRead_;
  std::vector<char> buffer_;
  std::size_t begin_ = 0;  // what has been read and not yet given out lies
  std::size_t end_ = 0;    // between these two, begin_ <= end_
};

}  // namespace urldb

#endif  // URLDB_TOOLS_LINE_SOURCE_H_
