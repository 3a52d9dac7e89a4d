#ifndef URLDB_URLDB_TAIL_STRING_H_
#define URLDB_URLDB_TAIL_STRING_H_

#include <cstddef>

#include "urldb/base_string.h"
#include "urldb/text_buffer.h"

namespace urldb {

// A copy of the string of a TAIL record, with a cursor: what is left of a
// stored key while its record is split.
class TailString final : public BaseString {
 public:
  // Copies the string at `record` up to its NUL; a null one makes an empty
  // object, of which only length() may be asked. Throws ErrException code 1,
  // section 62, when memory runs out.
  explicit TailString(const unsigned char* record);

  TailString& operator++() override {
    ++cursor_;
    return *this;
  }
  operator int() const override { return text_[cursor_]; }
  // The start of the copy, wherever the cursor stands.
  operator char*() override { return reinterpret_cast<char*>(text_); }
  void copyTo(unsigned char* dst, int id) const override;
  // Of what is left from the cursor on. Throws code 25, section 62, on an empty
  // object.
  int length() const override;

 private:
  TextBuffer buffer_;
  unsigned char* text_ = nullptr;  // null in an empty object
  std::size_t cursor_ = 0;
};

}  // namespace urldb

#endif  // URLDB_URLDB_TAIL_STRING_H_
