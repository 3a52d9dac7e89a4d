#include "tools/json.h"

#include <algorithm>
#include <cstddef>

#include "tools/escape.h"

namespace urldb {

namespace {

unsigned byteAt(std::string_view bytes, std::size_t i) {
  return static_cast<unsigned char>(bytes[i]);
}

// The length of the UTF-8 character that begins at `i`, or 0 when none does.
std::size_t characterLength(std::string_view bytes, std::size_t i) {
  const unsigned first = byteAt(bytes, i);
  if (first < 0x80) return 1;
  std::size_t length = 0;
  // The second byte's range keeps out forms longer than needed, the surrogates
  // and what lies above U+10FFFF.
  unsigned low = 0x80;
  unsigned high = 0xBF;
  if (first >= 0xC2 && first <= 0xDF) {
    length = 2;
  } else if (first >= 0xE0 && first <= 0xEF) {
    length = 3;
    if (first == 0xE0) low = 0xA0;
    if (first == 0xED) high = 0x9F;
  } else if (first >= 0xF0 && first <= 0xF4) {
    length = 4;
    if (first == 0xF0) low = 0x90;
    if (first == 0xF4) high = 0x8F;
  } else {
    return 0;
  }
  if (bytes.size() - i < length) return 0;
  const unsigned second = byteAt(bytes, i + 1);
  if (second < low || second > high) return 0;
  for (std::size_t k = 2; k < length; ++k)
    if ((byteAt(bytes, i + k) & 0xC0) != 0x80) return 0;
  return length;
}

}  // namespace

std::string jsonString(std::string_view bytes) {
  std::string text = "\"";
  text.reserve(bytes.size() + 2);
  std::size_t i = 0;
  while (i < bytes.size()) {
    const std::size_t length = characterLength(bytes, i);
    const std::string_view character =
        bytes.substr(i, std::max<std::size_t>(length, 1));
    const char c = character.front();
    if (length == 0) {
      text += escapeKey(character);
    } else if (c == '"' || c == '\\') {
      text += '\\';
      text += c;
    } else if (length == 1) {
      text += escapeText(character);
    } else {
      text += character;
    }
    i += character.size();
  }
  text += '"';
  return text;
}

}  // namespace urldb
