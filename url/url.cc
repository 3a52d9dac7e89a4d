#include "url/url.h"

#include <arpa/inet.h>

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <string_view>

#include "common/error.h"

namespace urldb {
namespace {

constexpr int kSection = 8;

// What the normal form may add to the text: a dotted quad for a single digit,
// the '/' behind the host, the NUL.
constexpr std::size_t kNormalReserve = 20;
constexpr std::size_t kDottedQuadSize = 16;

// What a pool can be asked for at all.
constexpr std::size_t kMostPoolBytes = std::numeric_limits<unsigned>::max();

char* takeBytes(MemBlock& pool, std::size_t size) {
  if (size > kMostPoolBytes) throw ErrException(ERR_NO_MEMORY, kSection);
  try {
    return static_cast<char*>(pool.alloc(static_cast<unsigned>(size)));
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
}

char* copyText(MemBlock& pool, const char* text, std::size_t length) {
  char* copy = takeBytes(pool, length + 1);
  std::memcpy(copy, text, length);
  copy[length] = '\0';
  return copy;
}

// Cuts `text` at `at`, which may be null, and returns what stands `skip` bytes
// behind the cut.
char* cut(char* at, std::size_t skip = 1) {
  if (at == nullptr) return nullptr;
  *at = '\0';
  return at + skip;
}

char* orNull(char* text) {
  return text != nullptr && *text != '\0' ? text : nullptr;
}

int parsePort(const char* text) {
  constexpr int kMost = std::numeric_limits<int>::max();
  if (text[std::strspn(text, "0123456789")] != '\0')
    throw ErrException(ERR_INVALID_DATA, kSection, "failed Port(%s)", text);
  int port = 0;
  for (; *text != '\0'; ++text) {
    const int digit = *text - '0';
    if (port > (kMost - digit) / 10) return kMost;
    port = port * 10 + digit;
  }
  return port;
}

bool isPrivate(uint32_t address) {
  constexpr struct {
    uint32_t mask, network;
  } kRanges[] = {
      {0xFF000000, 0x0A000000},  // 10/8
      {0xFFF00000, 0xAC100000},  // 172.16/12
      {0xFFFF0000, 0xC0A80000},  // 192.168/16
      {0xFFFF0000, 0xA9FE0000},  // 169.254/16
  };
  for (const auto& range : kRanges)
    if ((address & range.mask) == range.network) return true;
  return false;
}

void readNumericHost(MemBlock& pool, URLComponents& url) {
  const in_addr_t found = inet_addr(url.stHost);
  if (found == INADDR_NONE) {
    throw ErrException(ERR_INVALID_DATA, kSection, "failed Host(%s)",
                       url.stHost);
  }
  const uint32_t address = ntohl(found);
  // With dots the text stays, even a shortened one like "10.1".
  if (std::strchr(url.stHost, '.') == nullptr) {
    url.stHost = takeBytes(pool, kDottedQuadSize);
    std::snprintf(url.stHost, kDottedQuadSize, "%d.%d.%d.%d",
                  static_cast<int>(address >> 24),
                  static_cast<int>(address >> 16 & 0xFF),
                  static_cast<int>(address >> 8 & 0xFF),
                  static_cast<int>(address & 0xFF));
  }
  url.stReverseHost = url.stHost;
  url.isIPAddress = true;
  url.isPrivateAddress = isPrivate(address);
}

void readDomainName(MemBlock& pool, int flags, URLComponents& url) {
  char* dot = std::strchr(url.stHost, '.');
  if ((flags & URL::ACCEPT_PLAIN_HOST) == 0 &&
      (dot == nullptr || dot[1] == '\0')) {
    throw ErrException(ERR_INVALID_DATA, kSection, "failed domain(%s)",
                       url.stHost);
  }
  url.stDomain = dot;
  std::size_t length = std::strlen(url.stHost);  // at least 1
  if (url.stHost[length - 1] == '.') url.stHost[--length] = '\0';
  url.stReverseHost = takeBytes(pool, length + 1);
  for (std::size_t i = 0; i < length; ++i)
    url.stReverseHost[i] = url.stHost[length - 1 - i];
  url.stReverseHost[length] = '\0';
}

bool isLocalhost(const char* host) {
  const char* expected = "localhost";
  for (; *expected != '\0'; ++host, ++expected) {
    const bool capital = *host >= 'A' && *host <= 'Z';
    if ((capital ? *host - 'A' + 'a' : *host) != *expected) return false;
  }
  return *host == '\0';
}

void readHost(MemBlock& pool, int flags, URLComponents& url) {
  if (url.stHost[std::strspn(url.stHost, "0123456789.")] == '\0')
    readNumericHost(pool, url);
  else if (isLocalhost(url.stHost))
    url.stReverseHost = url.stHost;
  else
    readDomainName(pool, flags, url);
}

// `climbs` times "..", then the stacked folders, joined with '/'. Empty folders
// count, except that one alone is no path. `size` is enough for the result and
// its NUL.
char* joinFolders(MemBlock& pool, std::size_t climbs, Stack<char*>& folders,
                  std::size_t size) {
  if (climbs == 0 && folders.getCount() == 0) return nullptr;
  char* const path = takeBytes(pool, size);
  char* end = path;
  for (; climbs > 0; --climbs) end = stpcpy(end, end == path ? ".." : "/..");
  bool first = end == path;
  folders.rewind();
  while (folders.hasNext()) {
    if (!first) *end++ = '/';
    first = false;
    end = stpcpy(end, folders.next());
  }
  *end = '\0';
  return orNull(path);
}

// Takes the path text apart, cutting it at each '/'.
void readPath(MemBlock& pool, char* text, Stack<char*>& folders,
              URLComponents& url) {
  const std::size_t size = std::strlen(text) + 1;
  std::size_t climbs = 0;
  folders.removeAll();
  while (char* next = cut(std::strchr(text, '/'))) {
    if (std::strcmp(text, "..") == 0) {
      if (folders.getCount() > 0)
        folders.pop();
      else
        ++climbs;
    } else if (std::strcmp(text, ".") != 0) {
      folders.push(text);
    }
    text = next;
  }
  if (std::strcmp(text, ".") == 0) {
    *text = '\0';
  } else if (std::strcmp(text, "..") == 0 && folders.getCount() > 0) {
    folders.pop();
    *text = '\0';
  }
  url.stPath = joinFolders(pool, climbs, folders, size);
  url.stFileName = orNull(text);
}

// Whether some '%' stands before exactly two hexadecimal digits.
bool holdsByteEscape(const char* text) {
  while ((text = std::strchr(text, '%')) != nullptr) {
    const std::size_t digits = std::strspn(++text, "0123456789abcdefABCDEF");
    if (digits == 2) return true;
    text += digits;
  }
  return false;
}

// The extension of a file name, which may be null: what stands from its last
// '.' to its end or to its path parameters. Deliberately none when it holds an
// escaped byte, since such a dot usually belongs to a word in another script
// and not to the name of a file type.
char* copyExtension(MemBlock& pool, const char* fileName) {
  if (fileName == nullptr) return nullptr;
  const std::string_view name(fileName, std::strcspn(fileName, ";"));
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return nullptr;
  char* extension = copyText(pool, fileName + dot, name.size() - dot);
  return holdsByteEscape(extension) ? nullptr : extension;
}

// Everything behind the first '/' after the host.
void readRemainder(MemBlock& pool, char* text, Stack<char*>& folders,
                   URLComponents& url) {
  char* const separator = std::strpbrk(text, "?#");
  const bool hasQuery = separator != nullptr && *separator == '?';
  char* const rest = orNull(cut(separator));
  if (hasQuery) {
    url.stQuery = rest;
    if (rest != nullptr) url.stFragment = cut(std::strchr(rest, '#'));
  } else {
    url.stFragment = rest;
  }
  readPath(pool, text, folders, url);
  url.stExtension = copyExtension(pool, url.stFileName);
}

// `length` is that of the original text.
char* makeNormalForm(MemBlock& pool, std::size_t length,
                     const URLComponents& url) {
  char* const normal = takeBytes(pool, length + kNormalReserve);
  char* end = normal;
  if (url.stProtcol != nullptr) end = stpcpy(stpcpy(end, url.stProtcol), "://");
  if (url.stUser != nullptr) end = stpcpy(stpcpy(end, url.stUser), "@");
  end = stpcpy(end, url.stHost);
  if (url.nPort > 0) {
    *end++ = ':';
    end = std::to_chars(end, normal + length + kNormalReserve, url.nPort).ptr;
    *end = '\0';
  }
  end = stpcpy(end, "/");
  if (url.stPath != nullptr) end = stpcpy(stpcpy(end, url.stPath), "/");
  if (url.stFileName != nullptr) end = stpcpy(end, url.stFileName);
  if (url.stQuery != nullptr) end = stpcpy(stpcpy(end, "?"), url.stQuery);
  if (url.stFragment != nullptr) stpcpy(stpcpy(end, "#"), url.stFragment);
  return normal;
}

}  // namespace

URL::URL() : MemBlock(SIZE_MEMBLOCK), segments(SEGMENT_CAPACITY) {}

URL::URL(const char* url, int flags) : URL() { parse(url, flags); }

void URL::parse(const char* url, int flags) {
  if (url == nullptr)
    throw ErrException(ERR_INVALID_ARGUMENT, kSection, "url==NULL");
  const std::size_t length = std::strlen(url);
  URLComponents fresh;
  fresh.stOriginal = copyText(*this, url, length);

  // The components are cut out of a second copy, from left to right.
  char* text = copyText(*this, url, length);
  if (char* rest = cut(std::strstr(text, "://"), 3)) {
    fresh.stProtcol = text;
    text = rest;
  }
  char* const remainder = orNull(cut(std::strchr(text, '/')));
  fresh.stHost = text;
  if (char* host = cut(std::strchr(text, '@'))) {
    fresh.stUser = text;
    fresh.stPasswd = cut(std::strchr(text, ':'));
    fresh.stHost = host;
  }
  if (const char* port = cut(std::strchr(fresh.stHost, ':')))
    fresh.nPort = parsePort(port);
  readHost(*this, flags, fresh);
  if (remainder != nullptr) readRemainder(*this, remainder, segments, fresh);
  fresh.stNormal = makeNormalForm(*this, length, fresh);

  // From here on nothing can fail.
  static_cast<URLComponents&>(*this) = fresh;
}

bool URL::isQueryValue(const char* text) const {
  bool inName = true;
  while ((text = std::strpbrk(text, "&=")) != nullptr) {
    if ((*text++ == '=') != inName) return false;
    inName = !inName;
  }
  return !inName;
}

std::ostream& operator<<(std::ostream& out, const URL& url) {
  const auto shown = [](const char* text) {
    return text != nullptr ? text : "(null)";
  };
  const std::string port = std::to_string(url.nPort);
  const struct {
    const char *label, *value;
  } lines[] = {
      {"    stProtcol: ", shown(url.stProtcol)},
      {"       stUser: ", shown(url.stUser)},
      {"     stPasswd: ", shown(url.stPasswd)},
      {"       stHost: ", shown(url.stHost)},
      {"     stDomain: ", shown(url.stDomain)},
      {"        nPort: ", port.c_str()},
      {"stReverseHost: ", shown(url.stReverseHost)},
      {"       stPath: ", shown(url.stPath)},
      {"   stFileName: ", shown(url.stFileName)},
      {"  stExtension: ", shown(url.stExtension)},
      {"      stQuery: ", shown(url.stQuery)},
      {"   stFragment: ", shown(url.stFragment)},
  };
  out << '<' << shown(url.stOriginal) << ">\n";
  for (const auto& line : lines) out << line.label << line.value << '\n';
  return out;
}

}  // namespace urldb
