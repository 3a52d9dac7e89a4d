#ifndef URLDB_URL_URL_H_
#define URLDB_URL_URL_H_

#include <ostream>

#include "common/mem_block.h"
#include "common/stack.h"

namespace urldb {

// What a parse finds in a URL. All texts are NUL-terminated and live in the
// pool of the URL; null means that the part is not there. Letters keep their
// case and percent escapes stay as written.
struct URLComponents {
  char* stOriginal = nullptr;  // the text as it was given
  char* stProtcol = nullptr;   // scheme: what precedes the first "://"
  char* stUser = nullptr;
  char* stPasswd = nullptr;  // behind the first ':' of the user information
  // As written, without one trailing '.'; a lone decimal number as dotted quad.
  char* stHost = nullptr;
  // Points into stHost, at its first '.': ".example.org". Empty when that was
  // the trailing one. Null for a host without a dot, a numeric one and
  // localhost.
  char* stDomain = nullptr;
  int nPort = 0;  // 0 without one; 2147483647 stands for all above it
  // Folders without dot segments and without the outer slashes; ".." segments
  // that climb above the root stand at the front.
  char* stPath = nullptr;
  char* stFileName = nullptr;   // behind the last '/'
  char* stExtension = nullptr;  // of the file name, with its '.'
  char* stFragment = nullptr;   // behind '#'
  char* stQuery = nullptr;      // behind '?', up to any '#'
  // The host backwards; a numeric host and localhost as they are.
  char* stReverseHost = nullptr;
  char* stNormal = nullptr;  // the URL put together again, without password
  bool isIPAddress = false;  // the host is a numeric IPv4 address
  // In 10/8, 172.16/12, 192.168/16 or 169.254/16.
  bool isPrivateAddress = false;
};

// Splits a URL, with or without a scheme, into its components. Purely textual:
// nothing is resolved, decoded or folded, and only ASCII counts, whatever the
// locale. The time taken is linear in the length of the text.
//
// Texts live in the pool that this class derives from, until removeAll() or
// destruction. A parse does not reset the pool, so whoever parses many URLs
// with one object calls removeAll() after each; from then until the next
// successful parse the components must not be read.
class URL : public MemBlock, public URLComponents {
 public:
  static constexpr unsigned SIZE_MEMBLOCK = 1024;
  static constexpr int SEGMENT_CAPACITY = 4096;

  // Flag of parse(): accept a domain name without a dot, or with none but a
  // trailing one. Other bits are left to derived classes.
  static constexpr int ACCEPT_PLAIN_HOST = 0x1;

  URL();
  // As URL() and parse().
  URL(const char* url, int flags);
  URL(const URL&) = delete;
  URL& operator=(const URL&) = delete;

  // Replaces all components by those of `url`, which stays the caller's. Throws
  // ErrException, with all components as they were:
  //   code 22, section 8   "url==NULL"
  //   code 25, section 8   "failed Port(%s)": not all digits
  //   code 25, section 8   "failed Host(%s)": digits and dots, or nothing at
  //                        all, that make no address; also 255.255.255.255
  //   code 25, section 8   "failed domain(%s)": no dot, or none but a trailing
  //                        one, without ACCEPT_PLAIN_HOST
  //   code 40, section 3   more than 4095 folders at once in the path
  //   code 1, section 8    no memory, or a text beyond the sizes of the pool
  void parse(const char* url, int flags);

  // Whether `text` has the shape of a form: name=value pairs joined by '&', at
  // least one of them; names and values may be empty.
  bool isQueryValue(const char* text) const;

  // Folders of the path that is being parsed. Scratch: says nothing afterwards.
  Stack<char*> segments;
};

// A dump for diagnostics: the original text in angle brackets, then one line
// for each component.
std::ostream& operator<<(std::ostream& out, const URL& url);

}  // namespace urldb

#endif  // URLDB_URL_URL_H_
