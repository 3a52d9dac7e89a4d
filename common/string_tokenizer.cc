#include "common/string_tokenizer.h"

#include <climits>
#include <cstring>
#include <new>

namespace urldb {

StringTokenizer::StringTokenizer(const char* text, const char* delimiters)
    : delimiters_(delimiters != nullptr ? delimiters : "") {
  if (text == nullptr || delimiters == nullptr) return;
  const std::size_t length = std::strlen(text);
  if (length > INT_MAX) throw std::bad_alloc();
  text_ = std::make_unique<char[]>(length + 1);
  std::memcpy(text_.get(), text, length);
  cursor_ = text_.get();
  left_ = static_cast<int>(length);
}

bool StringTokenizer::hasNext() {
  skipDelimiters(cursor_, left_);
  return left_ > 0;
}

char* StringTokenizer::next(const char* delimiters) {
  if (delimiters != nullptr) delimiters_ = delimiters;
  if (!hasNext()) return nullptr;
  char* const token = cursor_;
  char* const end = std::strpbrk(token, delimiters_);
  if (end == nullptr) {
    left_ = 0;
    return token;
  }
  *end = '\0';
  cursor_ = end + 1;
  left_ -= static_cast<int>(cursor_ - token);
  return token;
}

int StringTokenizer::count() const {
  char* cursor = cursor_;
  int left = left_;
  int tokens = 0;
  for (skipDelimiters(cursor, left); left > 0; skipDelimiters(cursor, left)) {
    ++tokens;
    const auto token = static_cast<int>(std::strcspn(cursor, delimiters_));
    cursor += token;
    left -= token;
  }
  return tokens;
}

void StringTokenizer::skipDelimiters(char*& cursor, int& left) const {
  while (left >= 1 && std::strchr(delimiters_, *cursor) != nullptr) {
    ++cursor;
    --left;
  }
}

}  // namespace urldb
