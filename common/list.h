#ifndef URLDB_COMMON_LIST_H_
#define URLDB_COMMON_LIST_H_

#include <new>

#include "common/error.h"

namespace urldb {

// A list of plain values that grows at its end and is read in the order of
// adding, with one read cursor of its own. It never owns what a value points
// to. Its errors have section 1.
template <class T>
class List {
 public:
  List() = default;
  List(const List&) = delete;
  List& operator=(const List&) = delete;
  ~List() { removeAll(); }

  // Becomes empty without freeing the nodes, which belong to nobody then.
  void init() {
    first_ = nullptr;
    end_ = &first_;
    cursor_ = &first_;
    size_ = 0;
  }

  // Frees every node and becomes empty.
  void removeAll() {
    Node* node = first_;
    while (node != nullptr) {
      Node* const next = node->next;
      delete node;
      node = next;
    }
    init();
  }

  // Appends `v` and returns the new number of values. A read that is under way
  // reaches it. Throws code 1 when memory runs out.
  int add(const T& v) {
    try {
      *end_ = new Node{v, nullptr};
    } catch (const std::bad_alloc&) {
      throw ErrException(ERR_NO_MEMORY, 1);
    }
    end_ = &(*end_)->next;
    return ++size_;
  }

  int getSize() const { return size_; }

  // The next value read is the first one, as it is in a new list.
  void rewind() { cursor_ = &first_; }
  bool hasNext() const { return *cursor_ != nullptr; }
  // The value at the cursor, which moves on. Throws code 38 at the end.
  T next() {
    Node* const node = *cursor_;
    if (node == nullptr) throw ErrException(ERR_NO_SUCH_ELEMENT, 1);
    cursor_ = &node->next;
    return node->value;
  }

 private:
  struct Node {
    T value;
    Node* next;
  };

  Node* first_ = nullptr;
  Node** end_ = &first_;  // the link that the next add fills, null until then
  Node** cursor_ = &first_;  // the link to the value read next
  int size_ = 0;
};

}  // namespace urldb

#endif  // URLDB_COMMON_LIST_H_
