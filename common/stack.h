#ifndef URLDB_COMMON_STACK_H_
#define URLDB_COMMON_STACK_H_

#include <cstddef>
#include <memory>
#include <new>

#include "common/error.h"

namespace urldb {

// A stack of plain values in an array of fixed capacity, which can also be read
// from bottom to top. Element 0 of the array is not used: a stack of capacity n
// takes n - 1 values. It never owns what a value points to. Its errors have
// section 3.
template <class T>
class Stack {
 public:
  // Throws code 1 when memory runs out, and for a negative capacity, for which
  // there is no memory either.
  explicit Stack(int capacity) : capacity_(capacity) {
    try {
      if (capacity < 0) throw std::bad_array_new_length();
      elements_.reset(new T[static_cast<std::size_t>(capacity)]);
    } catch (const std::bad_alloc&) {
      throw ErrException(ERR_NO_MEMORY, 3);
    }
  }
  Stack(const Stack&) = delete;
  Stack& operator=(const Stack&) = delete;

  // Puts `v` on the top and returns the new number of values. Throws code 40
  // when the stack is full.
  int push(const T& v) {
    if (top_ >= capacity_ - 1) throw ErrException(ERR_NO_SPACE, 3);
    elements_.get()[++top_] = v;
    return top_;
  }

  // Takes the value from the top. Throws code 38 when the stack is empty.
  T pop() {
    if (top_ < 1) throw ErrException(ERR_NO_SUCH_ELEMENT, 3);
    return elements_.get()[top_--];
  }

  int getCount() const { return top_; }
  void removeAll() { top_ = 0; }

  // The next value read is the bottom one, as it is in a new stack.
  void rewind() { cursor_ = 0; }
  bool hasNext() const { return cursor_ < top_; }
  // The value at the cursor, which moves on towards the top. Only to be called
  // while hasNext().
  T next() { return elements_.get()[++cursor_]; }

 private:
  int capacity_;
  int top_ = 0;     // index of the top value, 0 when empty; below capacity_
  int cursor_ = 0;  // index of the value read last
  std::unique_ptr<T[]> elements_;
};

}  // namespace urldb

#endif  // URLDB_COMMON_STACK_H_
