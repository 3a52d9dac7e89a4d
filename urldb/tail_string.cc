#include "urldb/tail_string.h"

#include <cstring>

#include "common/error.h"
#include "urldb/tail_record.h"

namespace urldb {
namespace {

constexpr int kSection = 62;

}  // namespace

TailString::TailString(const unsigned char* record) {
  if (record == nullptr) return;
  const std::size_t size =
      std::strlen(reinterpret_cast<const char*>(record)) + 1;
  text_ = buffer_.take(size, kSection);
  std::memcpy(text_, record, size);
}

void TailString::copyTo(unsigned char* dst, int id) const {
  writeTailRecord(dst, text_ + cursor_, id);
}

int TailString::length() const {
  if (text_ == nullptr) throw ErrException(ERR_INVALID_DATA, kSection);
  return tailRecordSize(text_ + cursor_);
}

}  // namespace urldb
