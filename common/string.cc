#include "common/string.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

namespace urldb {
namespace {

int checkedLength(std::size_t length) {
  if (length > INT_MAX) throw std::bad_alloc();
  return static_cast<int>(length);
}

// `length` characters and a NUL, all of them zero.
std::unique_ptr<char[]> newText(int length) {
  return std::make_unique<char[]>(static_cast<std::size_t>(length) + 1);
}

}  // namespace

String::String(const char* text) { *this = text; }

String::String(const String& other) { *this = other; }

String& String::operator=(const String& other) {
  if (this == &other) return *this;
  std::unique_ptr<char[]> copy;
  if (other.text_ != nullptr) {
    copy = newText(other.length_);
    std::memcpy(copy.get(), other.text_.get(),
                static_cast<std::size_t>(other.length_));
  }
  text_ = std::move(copy);
  length_ = other.length_;
  return *this;
}

String& String::operator=(const char* text) {
  setbuf(text, text != nullptr ? checkedLength(std::strlen(text)) : 0);
  return *this;
}

bool String::operator==(const String& other) const {
  if (text_ == nullptr || other.text_ == nullptr) return text_ == other.text_;
  return length_ == other.length_ &&
         std::memcmp(text_.get(), other.text_.get(),
                     static_cast<std::size_t>(length_)) == 0;
}

bool String::operator==(const char* text) const {
  if (text_ == nullptr || text == nullptr) return text_.get() == text;
  const auto length = static_cast<std::size_t>(length_);
  return std::strlen(text) == length &&
         std::memcmp(text_.get(), text, length) == 0;
}

int String::hashCode() const {
  uint32_t hash = 0;
  for (int i = 0; i < length_; ++i) {
    const auto c = static_cast<signed char>(text_[static_cast<unsigned>(i)]);
    hash = hash * 31 + static_cast<uint32_t>(c);
  }
  return static_cast<int>(hash);
}

void String::append(const char* text) {
  if (text == nullptr) return;
  const auto have = static_cast<std::size_t>(length_);
  const std::size_t more = std::strlen(text);
  const int length = checkedLength(have + more);
  std::unique_ptr<char[]> both = newText(length);
  if (text_ != nullptr) std::memcpy(both.get(), text_.get(), have);
  std::memcpy(both.get() + have, text, more);
  text_ = std::move(both);
  length_ = length;
}

String String::prefix(int n) {
  if (n >= length_) return *this;
  String head;
  head.setbuf(text_.get(), n);
  return head;
}

void String::setbuf(const char* text, int length) {
  std::unique_ptr<char[]> copy;
  const int size = text != nullptr ? std::max(length, 0) : 0;
  if (text != nullptr) {
    copy = newText(size);
    std::memcpy(copy.get(), text,
                strnlen(text, static_cast<std::size_t>(size)));
  }
  text_ = std::move(copy);
  length_ = size;
}

}  // namespace urldb
