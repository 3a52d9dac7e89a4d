#include "tools/url_explanation.h"

#include <algorithm>
#include <cstddef>

#include "tools/escape.h"
#include "url/url.h"

namespace urldb {

namespace {

std::string component(std::string_view label, const char* text) {
  return explanationLine(label, text == nullptr ? "-" : escapeText(text));
}

std::string hostText(const URL& url) {
  std::string text = escapeText(url.stHost);
  if (url.isPrivateAddress) {
    text += " (numeric, private address)";
  } else if (url.isIPAddress) {
    text += " (numeric address)";
  }
  return text;
}

}  // namespace

std::string explanationLine(std::string_view label, std::string_view value) {
  constexpr std::size_t kColumn = 12;
  std::string line = "  ";
  line += label;
  line.append(kColumn - std::min(label.size(), kColumn - 1), ' ');
  line += value;
  line += '\n';
  return line;
}

std::string explainComponents(const char* text) {
  const URL url(text, URL::ACCEPT_PLAIN_HOST);
  return component("scheme", url.stProtcol) +
         explanationLine("user", url.stUser == nullptr ? "-" : "given") +
         explanationLine("host", hostText(url)) +
         explanationLine("port",
                         url.nPort > 0 ? std::to_string(url.nPort) : "-") +
         component("path", url.stPath) + component("file", url.stFileName) +
         component("extension", url.stExtension) +
         component("query", url.stQuery) +
         component("fragment", url.stFragment);
}

}  // namespace urldb
