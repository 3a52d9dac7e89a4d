#ifndef URLDB_TOOLS_LOOKUP_KEY_H_
#define URLDB_TOOLS_LOOKUP_KEY_H_

#include <string>

#include "url/url.h"

namespace urldb {

// The key under which a URL is stored and looked up: the host reversed
// (numeric hosts and `localhost` as they are), ":port" unless the port is
// absent, 80 or 443, "/", the path and "/", the file, "?query", "#fragment".
// The scheme and the user have no part in it. Host names without a dot are
// taken. Throws ErrException as URL::parse does.
std::string lookupKey(const char* url);

// The same of a line of input, which may hold NUL bytes: then it throws code
// 25, section 0.
std::string lookupKey(const std::string& url);

// The same of a URL that has been parsed.
std::string lookupKey(const URL& url);

}  // namespace urldb

#endif  // URLDB_TOOLS_LOOKUP_KEY_H_
