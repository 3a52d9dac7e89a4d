#ifndef URLDB_TOOLS_NAME_CODEC_H_
#define URLDB_TOOLS_NAME_CODEC_H_

#include <optional>
#include <string>
#include <string_view>

namespace urldb {

// Category names are UTF-8 outside a database and EUC-JP inside.

// The name as CategoryNames stores it: in EUC-JP, full-width forms folded.
// Nothing for a name that is empty, is not valid UTF-8, holds a control
// character or has no EUC-JP form.
std::optional<std::string> toEucName(std::string_view utf8);

// A stored name in UTF-8. Each byte that is no part of an EUC-JP character
// becomes U+FFFD.
std::string toUtf8Name(std::string_view euc);

}  // namespace urldb

#endif  // URLDB_TOOLS_NAME_CODEC_H_
