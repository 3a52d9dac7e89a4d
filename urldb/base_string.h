#ifndef URLDB_URLDB_BASE_STRING_H_
#define URLDB_URLDB_BASE_STRING_H_

namespace urldb {

// A text that the insertion into a trie consumes byte by byte: a key on its way
// in (InnerString) or a stored remainder that is hung elsewhere (TailString).
class BaseString {
 public:
  BaseString() = default;
  BaseString(const BaseString&) = delete;
  BaseString& operator=(const BaseString&) = delete;
  virtual ~BaseString() = default;

  // Advances by one byte; the caller stops at the NUL.
  virtual BaseString& operator++() = 0;
  // The current byte, 0 to 255; 0 at the end.
  virtual operator int() const = 0;
  // The text of this object; which part of it, the classes below say.
  virtual operator char*() = 0;
  // Writes the TAIL record of what is left: its bytes, a NUL, and the 4 bytes
  // of `id` in host order. `dst` has room for length() bytes and need not be
  // aligned.
  virtual void copyTo(unsigned char* dst, int id) const = 0;
  // The size of that record in bytes.
  virtual int length() const = 0;
};

}  // namespace urldb

#endif  // URLDB_URLDB_BASE_STRING_H_
