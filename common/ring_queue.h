#ifndef URLDB_COMMON_RING_QUEUE_H_
#define URLDB_COMMON_RING_QUEUE_H_

#include <cstddef>
#include <memory>
#include <new>

#include "common/error.h"

namespace urldb {

// A first-in first-out queue of plain values in a circular array of fixed
// capacity. Equal ends mean empty: a queue of capacity n takes n - 1 values. It
// never owns what a value points to. Its errors have section 6.
template <class T>
class RingQueue {
 public:
  // Throws code 22 with the capacity as text when that is below 1, code 1 when
  // memory runs out.
  explicit RingQueue(int capacity) : capacity_(capacity) {
    if (capacity < 1)
      throw ErrException(ERR_INVALID_ARGUMENT, 6, "%d", capacity);
    try {
      elements_.reset(new T[static_cast<std::size_t>(capacity)]);
    } catch (const std::bad_alloc&) {
      throw ErrException(ERR_NO_MEMORY, 6);
    }
  }
  RingQueue(const RingQueue&) = delete;
  RingQueue& operator=(const RingQueue&) = delete;

  // Appends `v`. Throws code 37 when that fills the last slot. The overflow is
  // found only after the ends have met, so the queue is empty then and all it
  // held is lost: who cannot afford that compares getSize() + 1 with
  // getCapacity() first.
  void put(const T& v) {
    elements_.get()[tail_] = v;
    tail_ = following(tail_);
    if (tail_ == head_) throw ErrException(ERR_OVERFLOW, 6);
  }

  // Takes the oldest value, null when the queue is empty. The value stays where
  // it is until later puts reach its slot again.
  T* get() {
    if (empty()) return nullptr;
    T* const value = &elements_.get()[head_];
    head_ = following(head_);
    return value;
  }

  int getSize() const {
    const int size = tail_ - head_;
    return size < 0 ? size + capacity_ : size;
  }
  bool empty() const { return head_ == tail_; }
  // The capacity given to the constructor, one more than the queue takes.
  int getCapacity() const { return capacity_; }

 private:
  int following(int index) const {
    return index + 1 == capacity_ ? 0 : index + 1;
  }

  std::unique_ptr<T[]> elements_;  // capacity_ of them, at least one
  int capacity_;
  int head_ = 0;  // the slot to take from; both ends are below capacity_
  int tail_ = 0;  // the slot to fill
};

}  // namespace urldb

#endif  // URLDB_COMMON_RING_QUEUE_H_
