#ifndef URLDB_TOOLS_URL_EXPLANATION_H_
#define URLDB_TOOLS_URL_EXPLANATION_H_

#include <string>
#include <string_view>

namespace urldb {

// "  <label>   <value>" and a line end, values of all lines in one column.
std::string explanationLine(std::string_view label, std::string_view value);

// What the URL parser finds in a URL, a line for each component. A password is
// never shown, only that a user was given. Throws ErrException as URL::parse.
std::string explainComponents(const char* url);

}  // namespace urldb

#endif  // URLDB_TOOLS_URL_EXPLANATION_H_
