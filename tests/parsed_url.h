#ifndef URLDB_TESTS_PARSED_URL_H_
#define URLDB_TESTS_PARSED_URL_H_

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "tests/thrown_by.h"
#include "url/url.h"

namespace urldb {

using Text = std::optional<std::string>;

// The components by value, to be compared as a whole.
struct Parts {
  Text scheme = {}, user = {}, password = {}, host = {}, domain = {};
  int port = 0;
  Text path = {}, file = {}, extension = {}, fragment = {}, query = {};
  Text reverse = {}, normal = {};
  bool numeric = false, privateAddress = false;

  bool operator==(const Parts&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Parts& parts) {
  const auto show = [&out](const char* name, const Text& text) {
    out << ' ' << name << '=' << (text ? testing::PrintToString(*text) : "-");
  };
  show("scheme", parts.scheme);
  show("user", parts.user);
  show("password", parts.password);
  show("host", parts.host);
  show("domain", parts.domain);
  out << " port=" << parts.port;
  show("path", parts.path);
  show("file", parts.file);
  show("extension", parts.extension);
  show("fragment", parts.fragment);
  show("query", parts.query);
  show("reverse", parts.reverse);
  show("normal", parts.normal);
  out << " numeric=" << parts.numeric
      << " privateAddress=" << parts.privateAddress;
  return out;
}

inline Parts partsOf(const URLComponents& url) {
  const auto text = [](const char* s) {
    return s != nullptr ? Text(s) : Text();
  };
  return {.scheme = text(url.stProtcol),
          .user = text(url.stUser),
          .password = text(url.stPasswd),
          .host = text(url.stHost),
          .domain = text(url.stDomain),
          .port = url.nPort,
          .path = text(url.stPath),
          .file = text(url.stFileName),
          .extension = text(url.stExtension),
          .fragment = text(url.stFragment),
          .query = text(url.stQuery),
          .reverse = text(url.stReverseHost),
          .normal = text(url.stNormal),
          .numeric = url.isIPAddress,
          .privateAddress = url.isPrivateAddress};
}

// Parses a copy that lies in a block of exactly its size and is gone
// afterwards.
inline void parse(URL& url, const std::string& text, int flags = 0) {
  const auto block = std::make_unique<char[]>(text.size() + 1);
  std::memcpy(block.get(), text.c_str(), text.size() + 1);
  url.parse(block.get(), flags);
}

inline std::unique_ptr<URL> parsed(const std::string& text, int flags = 0) {
  auto url = std::make_unique<URL>();
  parse(*url, text, flags);
  EXPECT_EQ(text, url->stOriginal);
  return url;
}

// What a parse throws, as thrownBy() says it.
inline std::string errorOf(URL& url, const std::string& text, int flags = 0) {
  return thrownBy([&] { parse(url, text, flags); });
}

inline std::string errorOf(const std::string& text, int flags = 0) {
  URL url;
  return errorOf(url, text, flags);
}

}  // namespace urldb

#endif  // URLDB_TESTS_PARSED_URL_H_
