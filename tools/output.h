#ifndef URLDB_TOOLS_OUTPUT_H_
#define URLDB_TOOLS_OUTPUT_H_

#include <string>
#include <string_view>

namespace urldb {

// What a program prints on a descriptor: collected in large pieces, and never
// lost in silence.
class Output {
 public:
  // `fd` stays the caller's and open.
  explicit Output(int fd) : fd_(fd) {}

  // Both throw ProgramError when writing fails, and ReaderGone when that is
  // because the reader has closed its end (SIGPIPE must be ignored). What was
  // collected is dropped then. A program calls flush() before it ends.
  void write(std::string_view text);
  void flush();

 private:
  int fd_;
  std::string collected_;
};

}  // namespace urldb

#endif  // URLDB_TOOLS_OUTPUT_H_
