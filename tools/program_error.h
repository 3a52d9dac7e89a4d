#ifndef URLDB_TOOLS_PROGRAM_ERROR_H_
#define URLDB_TOOLS_PROGRAM_ERROR_H_

#include <stdexcept>
#include <string_view>

namespace urldb {

// Ends a program with status 2: wrong usage, or a file that cannot be used. The
// text is for the user, without the program's name: "<path>: <what>; <what to
// do>".
class ProgramError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws ProgramError for an empty name, which no message could show.
inline void requireFileName(std::string_view path) {
  if (path.empty()) throw ProgramError("the name of a file is empty");
}

// Ends a program with status 2 and no word: nobody reads its output any more.
struct ReaderGone {};

}  // namespace urldb

#endif  // URLDB_TOOLS_PROGRAM_ERROR_H_
