#ifndef URLDB_TOOLS_LIST_READER_H_
#define URLDB_TOOLS_LIST_READER_H_

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tools/category.h"
#include "tools/line_source.h"

namespace urldb {

// Takes what a list holds, in the order of its lines.
class ListSink {
 public:
  ListSink() = default;
  ListSink(const ListSink&) = delete;
  ListSink& operator=(const ListSink&) = delete;
  virtual ~ListSink() = default;

  // An entry with its keys and its categories, at least one of each. The views
  // end with the call.
  virtual void take(std::span<const std::string> keys,
                    std::span<const Category> categories) = 0;

  // An entry, or a line, that cannot be used. `line` counts from 1.
  virtual void refuse(uint64_t line, std::string_view entry,
                      std::string_view reason) = 0;
};

// What was read: each entry was either taken or refused.
struct ListCounts {
  uint64_t lines = 0;
  uint64_t taken = 0;
  uint64_t refused = 0;
};

// Reads a list to its end. With `category`, every line is an entry of that
// category or a hosts line with several. Without, the first line decides:
// "#key" begins a dump, whose lines are "KEY<TAB>category[,category...]" with
// everything escaped; any other file has lines
// "ENTRY<TAB>category[,category...]".
//
// Blank lines, comments (a line that begins with '#' or '!', and what follows a
// blank and '#') and a byte-order mark at the start are passed over. A dump has
// no comment behind an entry, since a '#' may begin a name there.
//
// Throws ErrException: code 4 when reading fails, code 1 when memory runs out,
// and whatever the sink throws.
ListCounts readList(LineSource& source, const std::optional<Category>& category,
                    ListSink& sink);

// What of a line is not comment, without blanks around it; empty when nothing
// is.
std::string_view withoutComment(std::string_view line);

// Takes a UTF-8 byte-order mark from the start of `line`.
void dropByteOrderMark(std::string* line);

}  // namespace urldb

#endif  // URLDB_TOOLS_LIST_READER_H_
