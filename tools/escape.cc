#include "tools/escape.h"

#include <array>
#include <cstddef>

namespace urldb {

namespace {

// For every byte, whether it is written as %XX.
using ByteSet = std::array<bool, 256>;

constexpr ByteSet makeSet(unsigned firstPlain, unsigned lastPlain,
                          std::string_view more) {
  ByteSet set{};
  for (unsigned byte = 0; byte < 256; ++byte)
    set[byte] = byte < firstPlain || byte == 0x7F || byte > lastPlain;
  for (const char c : more) set[static_cast<unsigned char>(c)] = true;
  return set;
}

constexpr ByteSet kKey = makeSet(0x21, 0x7E, "%");
constexpr ByteSet kShownKey = makeSet(0x21, 0xFF, "%");
constexpr ByteSet kName = makeSet(0x21, 0x7E, "%,/");
constexpr ByteSet kShownName = makeSet(0x20, 0xFF, "%,/");
constexpr ByteSet kText = makeSet(0x20, 0xFF, "");
static_assert(kKey[0x20] && kKey[0x7F] && kKey[0xA5] && !kKey['/']);
static_assert(kText['\t'] && kText[0x7F] && !kText[' '] && !kText['%']);

std::string escape(std::string_view bytes, const ByteSet& escaped) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  text.reserve(bytes.size());
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (escaped[byte]) {
      text += '%';
      text += kDigits[byte >> 4];
      text += kDigits[byte & 15];
    } else {
      text += c;
    }
  }
  return text;
}

// The value of a hexadecimal digit, or -1. In ASCII, whatever the locale.
constexpr int digitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

}  // namespace

std::string escapeKey(std::string_view bytes) { return escape(bytes, kKey); }

std::string escapeShownKey(std::string_view bytes) {
  return escape(bytes, kShownKey);
}

std::string escapeName(std::string_view utf8) { return escape(utf8, kName); }

std::string escapeShownName(std::string_view utf8) {
  return escape(utf8, kShownName);
}

std::string escapeText(std::string_view bytes) { return escape(bytes, kText); }

std::optional<std::string> unescape(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      bytes += text[i];
      continue;
    }
    if (text.size() - i < 3) return std::nullopt;
    const int high = digitValue(text[i + 1]);
    const int low = digitValue(text[i + 2]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes += static_cast<char>(high << 4 | low);
    i += 2;
  }
  return bytes;
}

}  // namespace urldb
