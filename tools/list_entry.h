#ifndef URLDB_TOOLS_LIST_ENTRY_H_
#define URLDB_TOOLS_LIST_ENTRY_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace urldb {

// What one entry of a list means: the keys under which it is stored, or why it
// cannot be used. Exactly one of the two is empty.
struct ListEntry {
  std::vector<std::string> keys;
  std::string refusal;
};

// Reads one entry, without blanks around it and without a comment.
//
// A bare name is a whole domain with everything below it; `.name`, `*.name` and
// `||name^` are other ways of writing it. A search compares bytes, so the
// domain is stored in the three forms in which a host can end, "KEY/", "KEY."
// and "KEY:" with the reversed name as KEY, and never bare: "moc.elpmaxe" would
// answer for notexample.com too. Hosts that have no subdomains (numeric ones
// and `localhost`) have no "KEY.".
//
// Anything with a scheme, a port, a path, a query or a fragment is one place on
// one host, stored as its lookup key and once more with "www." before the host
// where such a host can be. Percent escapes stay as they are written.
//
// Throws ErrException only when memory runs out (code 1).
ListEntry parseListEntry(std::string_view entry);

// Reads a key of a dump: its %XX forms are turned back and nothing else is done
// to it.
ListEntry parseStoredKey(std::string_view text);

// The names of a hosts line (an IPv4 or IPv6 address, blanks, names); nothing
// when the text is no such line.
std::optional<std::vector<std::string_view>> hostsLineNames(
    std::string_view text);

// Whether `text` is the address that a blocking hosts line begins with:
// 0.0.0.0, 127.x.x.x, :: or ::1.
bool isLocalAddress(std::string_view text);

// As parseListEntry, for one name of a hosts line. `localhost` and
// `localhost.localdomain` there only describe the machine that the file was
// made for, and are refused.
ListEntry parseHostsName(std::string_view name);

// Without the blanks and tabs at both ends.
std::string_view trimBlanks(std::string_view text);

}  // namespace urldb

#endif  // URLDB_TOOLS_LIST_ENTRY_H_
