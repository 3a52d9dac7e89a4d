#ifndef URLDB_TOOLS_JSON_H_
#define URLDB_TOOLS_JSON_H_

#include <string>
#include <string_view>

namespace urldb {

// A JSON string of any bytes, quotes included, always valid UTF-8: control
// bytes and bytes that are no part of a UTF-8 character are written %XX.
std::string jsonString(std::string_view bytes);

}  // namespace urldb

#endif  // URLDB_TOOLS_JSON_H_
