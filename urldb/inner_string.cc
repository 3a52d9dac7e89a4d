#include "urldb/inner_string.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "common/error.h"
#include "url/euc_conv.h"
#include "urldb/tail_record.h"

namespace urldb {
namespace {

constexpr int kSection = 61;
// Record sizes are ints: the key, its terminal byte and the rest of the record
// fit.
constexpr std::size_t kLongestKey =
    std::numeric_limits<int>::max() - kTailRecordOverhead - 1;

}  // namespace

InnerString::InnerString(const unsigned char* key, int convMode) {
  if (key == nullptr) return;
  const auto* text = reinterpret_cast<const char*>(key);
  const std::size_t length = std::strlen(text);
  if (std::strchr(text, TERM_CHAR) != nullptr) {
    throw ErrException(ERR_INVALID_ARGUMENT, kSection, "%s", text);
  }
  if (length > kLongestKey) throw ErrException(ERR_NO_MEMORY, kSection);
  cursor_ = buffer_.take(length + 2, kSection);
  std::copy_n(key, length + 1, cursor_);  // with its NUL
  keyLength_ = length;
  if (convMode != 0) {
    keyLength_ = static_cast<std::size_t>(
        EUCConv().convert(reinterpret_cast<char*>(cursor_), (convMode & 1) != 0,
                          (convMode & 2) != 0));
  }
  cursor_[keyLength_] = TERM_CHAR;
  cursor_[keyLength_ + 1] = 0;
}

void InnerString::copyTo(unsigned char* dst, int id) const {
  writeTailRecord(dst, cursor_, id);
}

int InnerString::length() const {
  if (cursor_ == nullptr) throw ErrException(ERR_INVALID_DATA, kSection);
  return tailRecordSize(cursor_);
}

int InnerString::compare(const char* text) const {
  return std::strcmp(reinterpret_cast<const char*>(cursor_), text);
}

int InnerString::cmpPrefix(const char* text) const {
  const std::size_t length = std::strlen(text);
  if (length == 0) return 0;
  return std::strncmp(reinterpret_cast<const char*>(cursor_), text, length - 1);
}

}  // namespace urldb
