#ifndef URLDB_TOOLS_ESCAPE_H_
#define URLDB_TOOLS_ESCAPE_H_

#include <optional>
#include <string>
#include <string_view>

namespace urldb {

// The %XX forms of the programs' text, always with upper-case digits. They keep
// one record on one line and its fields apart, whatever bytes it holds.

// A stored key, as a dump has it: every byte outside 0x21 to 0x7E, and '%'.
// unescape() gives the key back.
std::string escapeKey(std::string_view bytes);

// A key as `urldb key` prints it: bytes below 0x21, 0x7F and '%'. Bytes above
// 0x7F stay, so that a key in EUC-JP can be read on a terminal set to it.
// unescape() gives the key back.
std::string escapeShownKey(std::string_view bytes);

// A category name as a dump has it: as escapeKey, and the signs that separate
// names in a list, ',' and '/'.
std::string escapeName(std::string_view utf8);

// A category name as people read it: control bytes, '%', ',' and '/' only.
std::string escapeShownName(std::string_view utf8);

// A text that is echoed, a URL or a path: control bytes (below 0x20 and 0x7F)
// only. '%' stays, so this form cannot be turned back.
std::string escapeText(std::string_view bytes);

// Puts the bytes back, for every %XX with digits of either case. Nothing when a
// '%' is not followed by two hexadecimal digits. %00 gives a NUL byte.
std::optional<std::string> unescape(std::string_view text);

}  // namespace urldb

#endif  // URLDB_TOOLS_ESCAPE_H_
