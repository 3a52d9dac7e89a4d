#ifndef URLDB_URLDB_TEXT_BUFFER_H_
#define URLDB_URLDB_TEXT_BUFFER_H_

#include <array>
#include <cstddef>
#include <memory>
#include <new>

#include "common/error.h"

namespace urldb {

// Room for one text: inside the object for a text of usual length, so that a
// lookup allocates nothing, on the heap for a longer one.
class TextBuffer {
 public:
  // The inline bytes stay uninitialised: only what the owner fills is ever
  // read. NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
  TextBuffer() {}

  // Room for `size` bytes, uninitialised; called once. Throws code 1 with the
  // caller's `section` when memory runs out.
  unsigned char* take(std::size_t size, int section) {
    if (size <= kInline) return inline_.data();
    heap_.reset(new (std::nothrow) unsigned char[size]);
    if (heap_ == nullptr) throw ErrException(ERR_NO_MEMORY, section);
    return heap_.get();
  }

 private:
  static constexpr std::size_t kInline = 512;

  std::array<unsigned char, kInline> inline_;
  std::unique_ptr<unsigned char[]> heap_;
};

}  // namespace urldb

#endif  // URLDB_URLDB_TEXT_BUFFER_H_
