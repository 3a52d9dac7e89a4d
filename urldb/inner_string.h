#ifndef URLDB_URLDB_INNER_STRING_H_
#define URLDB_URLDB_INNER_STRING_H_

#include <cstddef>

#include "urldb/base_string.h"
#include "urldb/text_buffer.h"

namespace urldb {

// A key as the trie sees it: normalised, closed by the terminal byte, with a
// cursor.
class InnerString final : public BaseString {
 public:
  static constexpr unsigned char TERM_CHAR = 127;  // closes every stored key

  // Copies and normalises `key`, a NUL-terminated text of any length; a null
  // one makes an empty object, of which only length() may be asked. Bit 0 of
  // `convMode` folds ASCII letters to upper case, bit 1 full-width forms to one
  // byte; 0 takes the key as it is. Throws ErrException, section 61: code 22
  // for a key that holds byte 127 (the key as text), code 1 when memory runs
  // out.
  InnerString(const unsigned char* key, int convMode);

  InnerString& operator++() override {
    ++cursor_;
    return *this;
  }
  operator int() const override { return *cursor_; }
  // The text from the cursor on.
  operator char*() override { return reinterpret_cast<char*>(cursor_); }
  void copyTo(unsigned char* dst, int id) const override;
  // Throws code 25, section 61, on an empty object.
  int length() const override;

  // What is left of the key, with its terminal byte and a NUL.
  const unsigned char* rest() const { return cursor_; }
  // Bytes of the whole key, without the terminal byte.
  std::size_t keyLength() const { return keyLength_; }
  // Advances by `n` bytes, at most to the NUL.
  void skip(std::size_t n) { cursor_ += n; }

  bool isTerm() const { return *cursor_ == TERM_CHAR; }
  static int getTerm() { return TERM_CHAR; }
  // Compares the rest with `text` as strcmp does.
  int compare(const char* text) const;
  // Compares the rest with `text` without its last byte, the terminal byte of a
  // stored key: 0 when the rest begins with it.
  int cmpPrefix(const char* text) const;

 private:
  TextBuffer buffer_;
  unsigned char* cursor_ = nullptr;  // null in an empty object
  std::size_t keyLength_ = 0;
};

}  // namespace urldb

#endif  // URLDB_URLDB_INNER_STRING_H_
