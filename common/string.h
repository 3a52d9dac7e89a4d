#ifndef URLDB_COMMON_STRING_H_
#define URLDB_COMMON_STRING_H_

#include <memory>

namespace urldb {

// An owning text of known length. Without an array it is null, which is what
// `String()` and a null C string make; a text of no characters that has an
// array, such as `String("")`, is as long but not equal to a null one. A text
// of more than 2147483647 characters is refused like one for which memory runs
// out: std::bad_alloc, and the former value stays.
class String {
 public:
  String() = default;
  // A copy of `text`, null when that is null.
  String(const char* text);
  String(const String& other);
  ~String() = default;

  // A copy of the value, the array of which may be this string's own.
  String& operator=(const String& other);
  String& operator=(const char* text);

  // Two null values are equal, a null one equals nothing else; otherwise the
  // lengths and all bytes agree.
  bool operator==(const String& other) const;
  bool operator==(const char* text) const;

  // h = h * 31 + c over all characters, c read as a signed byte, in wrapping
  // 32-bit arithmetic; 0 for no characters.
  int hashCode() const;

  // Adds `text` at the end; null is ignored.
  void append(const char* text);

  // The first `n` characters (none for a negative `n`), a copy of the whole
  // where it has no more. Not a const operation: the text may be cut in place
  // while it is copied.
  String prefix(int n);

  // Makes this a text of exactly `length` characters: those of `text` up to its
  // NUL, cut or filled with NULs at the end. Null when `text` is null; a
  // negative length is 0.
  void setbuf(const char* text, int length);

  int length() const { return length_; }
  // Whether there are no characters.
  bool isEmpty() const { return length_ == 0; }
  // The NUL-terminated text, null for a null string. It stays this string's own
  // and lives until the next change.
  operator char*() const { return text_.get(); }

 private:
  // length_ characters and a NUL; null only when length_ is 0.
  std::unique_ptr<char[]> text_;
  int length_ = 0;
};

}  // namespace urldb

#endif  // URLDB_COMMON_STRING_H_
