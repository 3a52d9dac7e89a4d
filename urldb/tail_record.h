#ifndef URLDB_URLDB_TAIL_RECORD_H_
#define URLDB_URLDB_TAIL_RECORD_H_

#include <cstring>

namespace urldb {

// A TAIL record: the remaining bytes of a key, a NUL, and the key's identifier
// as 4 unaligned bytes in host order.
constexpr int kTailRecordOverhead = 5;  // the NUL and the identifier

// The size of the record of a NUL-terminated text.
inline int tailRecordSize(const unsigned char* text) {
  return static_cast<int>(std::strlen(reinterpret_cast<const char*>(text))) +
         kTailRecordOverhead;
}

// Writes the record of a NUL-terminated text to `dst`, tailRecordSize(text)
// bytes.
inline void writeTailRecord(unsigned char* dst, const unsigned char* text,
                            int id) {
  const std::size_t length =
      std::strlen(reinterpret_cast<const char*>(text)) + 1;
  std::memcpy(dst, text, length);
  std::memcpy(dst + length, &id, sizeof id);
}

}  // namespace urldb

#endif  // URLDB_URLDB_TAIL_RECORD_H_
