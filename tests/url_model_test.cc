#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tests/parsed_url.h"
#include "url/url.h"

// The parser against a second one, plain and slow, that knows nothing of it.

namespace urldb {
namespace {

bool consistsOf(const std::string& text, const char* characters) {
  return text.find_first_not_of(characters) == std::string::npos;
}

// Cuts `text` at the first `separator` and returns what stood behind it.
Text splitOff(std::string& text, const std::string& separator) {
  const std::size_t at = text.find(separator);
  if (at == std::string::npos) return {};
  std::string behind = text.substr(at + separator.size());
  text.erase(at);
  return behind;
}

std::string join(const std::vector<std::string>& texts) {
  std::string joined;
  for (std::size_t i = 0; i < texts.size(); ++i)
    joined += (i > 0 ? "/" : "") + texts[i];
  return joined;
}

struct ModelPath {
  Text path = {}, file = {};
};

// Dot segments: a list of the climbs above the root and one of the folders.
ModelPath modelPath(const std::string& text) {
  std::vector<std::string> pieces(1);
  for (const char c : text) {
    if (c == '/')
      pieces.emplace_back();
    else
      pieces.back() += c;
  }
  std::string file = pieces.back();
  pieces.pop_back();
  std::vector<std::string> climbs, folders;
  for (const std::string& piece : pieces) {
    if (piece == ".") continue;
    if (piece != "..")
      folders.push_back(piece);
    else if (folders.empty())
      climbs.push_back(piece);
    else
      folders.pop_back();
  }
  if (file == ".") file = "";
  if (file == ".." && !folders.empty()) {
    folders.pop_back();
    file = "";
  }
  climbs.insert(climbs.end(), folders.begin(), folders.end());
  ModelPath result;
  if (!join(climbs).empty()) result.path = join(climbs);
  if (!file.empty()) result.file = file;
  return result;
}

bool isHex(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') ||
         (c >= 'A' && c <= 'F');
}

Text modelExtension(std::string file) {
  splitOff(file, ";");
  const std::size_t dot = file.rfind('.');
  if (dot == std::string::npos) return {};
  const std::string extension = file.substr(dot);
  for (std::size_t i = 0; i < extension.size(); ++i) {
    if (extension[i] != '%') continue;
    std::size_t digits = 0;
    while (i + 1 + digits < extension.size() &&
           isHex(extension[i + 1 + digits]))
      ++digits;
    if (digits == 2) return {};
  }
  return extension;
}

bool isPrivate(const std::vector<int>& quad) {
  if (quad[0] == 172) return quad[1] >= 16 && quad[1] <= 31;
  return quad[0] == 10 || (quad[0] == 192 && quad[1] == 168) ||
         (quad[0] == 169 && quad[1] == 254);
}

std::string lowerCase(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return text;
}

struct ModelResult {
  Parts parts;
  std::string error;
};

ModelResult model(std::string text, int flags) {
  Parts parts;
  if (text.find("://") != std::string::npos) {
    const std::string behind = *splitOff(text, "://");
    parts.scheme = text;
    text = behind;
  }
  const Text remainder = splitOff(text, "/");
  if (const Text behind = splitOff(text, "@")) {
    parts.password = splitOff(text, ":");
    parts.user = text;
    text = *behind;
  }
  if (const Text port = splitOff(text, ":")) {
    if (!consistsOf(*port, "0123456789"))
      return {{}, "25/8 Invalid Data: failed Port(" + *port + ")"};
    long double value = 0;
    for (const char digit : *port) value = value * 10 + (digit - '0');
    parts.port = value > 2147483647 ? 2147483647 : static_cast<int>(value);
  }
  if (consistsOf(text, "0123456789.")) {
    const in_addr_t address = inet_addr(text.c_str());
    if (address == INADDR_NONE)
      return {{}, "25/8 Invalid Data: failed Host(" + text + ")"};
    unsigned char bytes[4];
    std::memcpy(bytes, &address, 4);
    const std::vector<int> quad(bytes, bytes + 4);
    if (text.find('.') == std::string::npos) {
      text.clear();
      for (const int octet : quad)
        text += (text.empty() ? "" : ".") + std::to_string(octet);
    }
    parts.numeric = true;
    parts.privateAddress = isPrivate(quad);
    parts.reverse = text;
  } else if (lowerCase(text) == "localhost") {
    parts.reverse = text;
  } else {
    const std::size_t dot = text.find('.');
    if ((flags & 1) == 0 &&
        (dot == std::string::npos || dot == text.size() - 1))
      return {{}, "25/8 Invalid Data: failed domain(" + text + ")"};
    if (text.back() == '.') text.pop_back();
    if (dot != std::string::npos) parts.domain = text.substr(dot);
    parts.reverse = std::string(text.rbegin(), text.rend());
  }
  parts.host = text;

  if (remainder && !remainder->empty()) {
    const std::size_t end = remainder->find_first_of("?#");
    const ModelPath path = modelPath(remainder->substr(0, end));
    parts.path = path.path;
    parts.file = path.file;
    if (parts.file) parts.extension = modelExtension(*parts.file);
    if (end != std::string::npos && end + 1 < remainder->size()) {
      std::string rest = remainder->substr(end + 1);
      if ((*remainder)[end] == '?') {
        parts.fragment = splitOff(rest, "#");
        parts.query = rest;
      } else {
        parts.fragment = rest;
      }
    }
  }

  parts.normal = (parts.scheme ? *parts.scheme + "://" : "") +
                 (parts.user ? *parts.user + "@" : "") + *parts.host +
                 (parts.port > 0 ? ":" + std::to_string(parts.port) : "") +
                 "/" + (parts.path ? *parts.path + "/" : "") +
                 parts.file.value_or("") +
                 (parts.query ? "?" + *parts.query : "") +
                 (parts.fragment ? "#" + *parts.fragment : "");
  return {parts, ""};
}

void expectLikeModel(URL& url, const std::string& text, int flags) {
  SCOPED_TRACE(testing::PrintToString(text));
  const Parts before = partsOf(url);
  const ModelResult expected = model(text, flags);
  ASSERT_EQ(expected.error, errorOf(url, text, flags));
  ASSERT_EQ(expected.error.empty() ? expected.parts : before, partsOf(url));
}

TEST(URLModel, RandomPathsAreLikeTheModel) {
  const std::vector<std::string> pieces = {"",   ".",   "..", "..", "a",
                                           "bc", "...", ".a", "a.b"};
  for (unsigned seed = 1; seed <= 20000; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::string path;
    for (auto count = random() % 12; count > 0; --count)
      path += pieces[random() % pieces.size()] + "/";
    path += pieces[random() % pieces.size()];
    const ModelPath expected = modelPath(path);
    const auto url = parsed("http://h.example/" + path);
    const Parts parts = partsOf(*url);
    ASSERT_EQ(expected.path, parts.path) << path;
    ASSERT_EQ(expected.file, parts.file) << path;
  }
}

TEST(URLModel, RandomTextsAreLikeTheModel) {
  const std::vector<std::string> pieces = {
      "http",      "://",      "/",    "//",       "/../",
      "/./",       "..",       ".",    ":",        "@",
      "?",         "#",        "%",    "%41",      ";",
      "=",         "&",        "80",   "10.1.2.3", "255",
      "08",        "a",        "a.b",  "Z",        "www.example.org",
      "LocalHost", "\xA5\xC6", "\x7F", " ",        "4294967295"};
  URL url;
  for (unsigned seed = 1; seed <= 30000; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::string text;
    for (auto count = random() % 14; count > 0; --count)
      text += pieces[random() % pieces.size()];
    expectLikeModel(url, text, static_cast<int>(random() % 2));
    if (HasFatalFailure()) return;
  }
}

TEST(URLModel, EveryBeginningOfAURLIsLikeTheModel) {
  URL url;
  for (const std::string text :
       {"http://u:p@www.example.org.:8080/a/./b/../c;d/e.%41;f?x=1&y=2#top",
        "s://172.16.0.1:99999999999/../..//a/..?#", "4294967294:0/.././x.y#?"})
    for (std::size_t length = 0; length <= text.size(); ++length)
      for (const int flags : {0, 1}) {
        expectLikeModel(url, text.substr(0, length), flags);
        if (HasFatalFailure()) return;
      }
}

TEST(URLModel, RandomBytesAreLikeTheModel) {
  URL url;
  for (unsigned seed = 1; seed <= 20000; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::string text(random() % 40, ' ');
    for (char& c : text) c = static_cast<char>(random() % 255 + 1);
    expectLikeModel(url, text, 1);
    if (HasFatalFailure()) return;
  }
}

// A form is one or more pieces between '&', each with one '='.
bool modelIsForm(std::string text) {
  while (true) {
    const Text rest = splitOff(text, "&");
    if (std::count(text.begin(), text.end(), '=') != 1) return false;
    if (!rest) return true;
    text = *rest;
  }
}

TEST(URLModel, ShortTextsAreFormsAsInTheModel) {
  const URL url;
  std::vector<std::string> texts = {""};
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const std::string text = texts[i];
    ASSERT_EQ(modelIsForm(text), url.isQueryValue(text.c_str())) << text;
    if (text.size() < 7)
      for (const char c : {'a', '&', '='}) texts.push_back(text + c);
  }
}

}  // namespace
}  // namespace urldb
