#include "tools/json.h"

#include <gtest/gtest.h>

#include <string>

namespace urldb {
namespace {

TEST(JsonString, IsValidUtf8WhateverTheBytes) {
  constexpr struct {
    const char *bytes, *text;
  } cases[] = {
      {"plain", "\"plain\""},
      {"a\"b\\c", "\"a\\\"b\\\\c\""},
      {"tab\tend\n\x7F", "\"tab%09end%0A%7F\""},
      {"\xC3\xA9\xE3\x83\x86\xF0\x9F\x98\x80",
       "\"\xC3\xA9\xE3\x83\x86\xF0\x9F\x98\x80\""},
      {"\x80 \xBF", "\"%80 %BF\""},                     // no first byte
      {"\xC0\xAF\xE0\x80\xAF", "\"%C0%AF%E0%80%AF\""},  // longer than needed
      {"\xF0\x80\x80\xAF", "\"%F0%80%80%AF\""},
      {"\xED\xA0\x80", "\"%ED%A0%80\""},         // a surrogate
      {"\xF4\x90\x80\x80", "\"%F4%90%80%80\""},  // above U+10FFFF
      {"\xF5\xFF", "\"%F5%FF\""},
      {"\xE3\x83", "\"%E3%83\""},  // cut by the end
      {"\xE3\x83x", "\"%E3%83x\""},
      {"\xF0\x9F\x98", "\"%F0%9F%98\""},
      {"\xED\x9F\xBF\xEE\x80\x80\xF4\x8F\xBF\xBF",
       "\"\xED\x9F\xBF\xEE\x80\x80\xF4\x8F\xBF\xBF\""},  // the last ones taken
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(c.text, jsonString(c.bytes));
  }
  EXPECT_EQ("\"a%00b\"", jsonString(std::string("a\0b", 3)));
}

}  // namespace
}  // namespace urldb
