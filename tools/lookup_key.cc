#include "tools/lookup_key.h"

#include "common/error.h"

namespace urldb {

namespace {

// Gives the parser's pool back on every way out.
struct PoolGuard {
  URL& url;
  explicit PoolGuard(URL& parser) : url(parser) {}
  PoolGuard(const PoolGuard&) = delete;
  PoolGuard& operator=(const PoolGuard&) = delete;
  ~PoolGuard() { url.removeAll(); }
};

}  // namespace

std::string lookupKey(const char* url) {
  // One parser for all URLs: its segment stack alone takes 32 KB.
  thread_local URL parser;
  const PoolGuard guard(parser);
  parser.parse(url, URL::ACCEPT_PLAIN_HOST);
  return lookupKey(parser);
}

std::string lookupKey(const std::string& url) {
  if (url.find('\0') != std::string::npos)
    throw ErrException(ERR_INVALID_DATA, 0, "%s", "NUL byte");
  return lookupKey(url.c_str());
}

std::string lookupKey(const URL& url) {
  std::string key = url.stReverseHost;
  if (url.nPort > 0 && url.nPort != 80 && url.nPort != 443) {
    key += ':';
    key += std::to_string(url.nPort);
  }
  key += '/';
  if (url.stPath != nullptr) {
    key += url.stPath;
    key += '/';
  }
  if (url.stFileName != nullptr) key += url.stFileName;
  if (url.stQuery != nullptr) {
    key += '?';
    key += url.stQuery;
  }
  if (url.stFragment != nullptr) {
    key += '#';
    key += url.stFragment;
  }
  return key;
}

}  // namespace urldb
