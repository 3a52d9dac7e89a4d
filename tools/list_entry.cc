#include "tools/list_entry.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "common/error.h"
#include "tools/escape.h"
#include "tools/lookup_key.h"

namespace urldb {

namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::size_t kMostHostBytes = 253;
constexpr std::size_t kMostLabelBytes = 63;

bool startsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

// In ASCII, whatever the locale.
char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool startsWithIgnoringCase(std::string_view text, std::string_view start) {
  return text.size() >= start.size() &&
         std::equal(start.begin(), start.end(), text.begin(),
                    [](char a, char b) { return a == lower(b); });
}

bool isLocalhost(std::string_view host) {
  return host.size() == 9 && startsWithIgnoringCase(host, "localhost");
}

// As the URL parser takes it: such a host is an address and is not reversed.
bool isNumeric(std::string_view host) {
  return host.find_first_not_of("0123456789.") == std::string_view::npos;
}

bool isSchemeCharacter(char c) {
  const char l = lower(c);
  return (l >= 'a' && l <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
         c == '-' || c == '.';
}

std::string hexByte(char c) { return escapeKey(std::string_view(&c, 1)); }

ListEntry refused(std::string reason) { return {{}, std::move(reason)}; }

// An entry taken apart. The views point into the entry.
struct Parts {
  bool bareForm = false;  // written .name, *.name or ||name^
  bool scheme = false;
  std::string_view host;  // without its trailing dot
  std::string_view port;  // with its ':', empty without one
  std::string_view rest;  // from the first of '/', '?', '#'
};

// Why no entry can hold these bytes, or "".
std::string faultOfBytes(std::string_view entry) {
  for (const char c : entry) {
    if (c == ' ' || c == '\t') return "blank inside the entry";
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F) return "control byte " + hexByte(c);
  }
  return {};
}

// Why this is no host, or "". `host` has lost its trailing dot.
std::string faultOfHost(std::string_view host) {
  if (host.empty()) return "no host name";
  // A '*' would be stored as a character that no host has.
  constexpr std::string_view kForbidden = "#%/<>?[\\]^|\"'`*";
  const std::size_t bad = host.find_first_of(kForbidden);
  if (bad != std::string_view::npos)
    return std::string("'") + host[bad] + "' in the host name";
  if (host.size() > kMostHostBytes) return "host name longer than 253 bytes";
  for (std::size_t begin = 0; begin <= host.size();) {
    const std::size_t end = std::min(host.find('.', begin), host.size());
    if (end == begin) return "empty label in the host name";
    if (end - begin > kMostLabelBytes)
      return "label longer than 63 bytes in the host name";
    begin = end + 1;
  }
  return {};
}

// Fills `parts`; returns why the entry has none of the known forms, or "".
std::string takeApart(std::string_view entry, Parts* parts) {
  if (startsWith(entry, "||")) {
    const std::size_t end = entry.find('^');
    if (end == std::string_view::npos) return "|| without a ^ behind the name";
    if (end + 1 != entry.size()) return "text behind ||name^";
    entry = entry.substr(2, end - 2);
    parts->bareForm = true;
  } else if (startsWith(entry, "*.")) {
    entry.remove_prefix(2);
    parts->bareForm = true;
  } else if (startsWith(entry, ".")) {
    entry.remove_prefix(1);
    parts->bareForm = true;
  } else {
    const std::size_t mark = entry.find("://");
    if (mark != std::string_view::npos && mark > 0 &&
        std::all_of(entry.begin(), entry.begin() + static_cast<long>(mark),
                    isSchemeCharacter)) {
      entry.remove_prefix(mark + 3);
      parts->scheme = true;
    }
  }
  const std::size_t hostEnd =
      std::min(entry.find_first_of("/?#"), entry.size());
  parts->rest = entry.substr(hostEnd);
  entry = entry.substr(0, hostEnd);
  // Also behind a ':', which belongs to the user information then.
  if (entry.find('@') != std::string_view::npos)
    return "user information before the host name";
  const std::size_t colon = std::min(entry.find(':'), entry.size());
  parts->port = entry.substr(colon);
  parts->host = entry.substr(0, colon);
  if (parts->bareForm && !(parts->port.empty() && parts->rest.empty()))
    return "more than a name in .name, *.name or ||name^";
  // "." alone is the empty name, not an empty name and a trailing dot.
  if (parts->host.size() > 1 && parts->host.back() == '.')
    parts->host.remove_suffix(1);
  return faultOfHost(parts->host);
}

std::vector<std::string> keysOf(const Parts& parts) {
  // Always with a scheme: the parser takes everything before the first "://"
  // for one, and a path may hold another URL. And with a '/' behind the host,
  // without which it sees no query and no fragment.
  std::string url = "http://";
  url.append(parts.host).append(parts.port);
  if (!startsWith(parts.rest, "/")) url += '/';
  url.append(parts.rest);
  std::string key = lookupKey(url.c_str());

  const bool onlyItself = isNumeric(parts.host) || isLocalhost(parts.host);
  std::vector<std::string> keys;
  if (!parts.scheme && parts.port.empty() && parts.rest.empty()) {
    keys.push_back(key);  // it ends with its only '/'
    if (!onlyItself) {
      key.back() = '.';
      keys.push_back(key);
    }
    key.back() = ':';
    keys.push_back(std::move(key));
    return keys;
  }
  keys.push_back(key);
  if (!onlyItself && !startsWithIgnoringCase(parts.host, "www.")) {
    key.insert(parts.host.size(), ".www");  // the host stands reversed
    keys.push_back(std::move(key));
  }
  return keys;
}

}  // namespace

std::string_view trimBlanks(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

ListEntry parseListEntry(std::string_view entry) {
  if (entry.empty()) return refused("no entry");
  if (std::string fault = faultOfBytes(entry); !fault.empty())
    return refused(std::move(fault));
  Parts parts;
  if (std::string fault = takeApart(entry, &parts); !fault.empty())
    return refused(std::move(fault));
  const bool singleLabel = parts.host.find('.') == std::string_view::npos;
  if (singleLabel && !parts.bareForm && !parts.scheme &&
      !isLocalhost(parts.host))
    return refused("single label, neither .tld nor http://label/");
  try {
    return {keysOf(parts), {}};
  } catch (const ErrException& error) {
    if (error.getErrCode() == ERR_NO_MEMORY) throw;
    return refused(error.getMessage());
  }
}

ListEntry parseStoredKey(std::string_view text) {
  std::optional<std::string> key = unescape(text);
  if (!key) return refused("broken escape in the key");
  if (key->empty()) return refused("empty key");
  // A NUL ends a key and 0x7F closes it inside the trie.
  constexpr std::array<char, 2> kForbidden = {'\0', '\x7F'};
  for (const char c : kForbidden) {
    if (key->find(c) != std::string::npos)
      return refused("byte " + hexByte(c) + " in the key");
  }
  return {{std::move(*key)}, {}};
}

std::optional<std::vector<std::string_view>> hostsLineNames(
    std::string_view text) {
  const std::size_t end = text.find_first_of(kBlanks);
  if (end == std::string_view::npos) return std::nullopt;
  std::string address(text.substr(0, end));
  if (address.find('\0') != std::string::npos) return std::nullopt;
  std::array<unsigned char, sizeof(in6_addr)> binary{};
  if (::inet_pton(AF_INET, address.c_str(), binary.data()) != 1) {
    // fe80::1%lo0 names an interface behind the address.
    address.resize(std::min(address.find('%'), address.size()));
    if (::inet_pton(AF_INET6, address.c_str(), binary.data()) != 1)
      return std::nullopt;
  }
  std::vector<std::string_view> names;
  while (text.find_first_of(kBlanks) != std::string_view::npos) {
    text = trimBlanks(text.substr(text.find_first_of(kBlanks)));
    names.push_back(text.substr(0, text.find_first_of(kBlanks)));
  }
  return names;
}

bool isLocalAddress(std::string_view text) {
  if (text.find('\0') != std::string_view::npos) return false;
  const std::string address(text);
  in_addr v4{};
  if (::inet_pton(AF_INET, address.c_str(), &v4) == 1)
    return v4.s_addr == 0 || ntohl(v4.s_addr) >> 24 == 127;
  in6_addr v6{};
  return ::inet_pton(AF_INET6, address.c_str(), &v6) == 1 &&
         (IN6_IS_ADDR_UNSPECIFIED(&v6) || IN6_IS_ADDR_LOOPBACK(&v6));
}

ListEntry parseHostsName(std::string_view name) {
  std::string_view host = name;
  if (!host.empty() && host.back() == '.') host.remove_suffix(1);
  constexpr std::string_view kDomain = ".localdomain";
  if (isLocalhost(host) ||
      (isLocalhost(host.substr(0, 9)) && host.size() == 9 + kDomain.size() &&
       startsWithIgnoringCase(host.substr(9), kDomain)))
    return refused("localhost in a hosts line is that file's own business");
  return parseListEntry(name);
}

}  // namespace urldb
