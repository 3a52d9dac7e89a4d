#ifndef URLDB_URLDB_NODE_LIST_H_
#define URLDB_URLDB_NODE_LIST_H_

#include <array>
#include <cstdint>
#include <iosfwd>

namespace urldb {

// The set of child labels of one trie node, 0 to 255, read in ascending order.
class NodeList {
 public:
  NodeList() { clear(); }

  // Adds label `c`. Returns 0, or -1 for a label outside 0 to 255, which
  // changes nothing. The size counts adds: a label added twice counts twice.
  int add(int c);

  // Empties the set.
  void clear();

  // Puts the cursor on the smallest label; without labels nothing happens.
  void rewind();
  // Whether a label is left to visit. Each call counts as one visit: call it
  // once before each next().
  bool hasNext();
  // The label at the cursor, which moves on to the next greater one and stays
  // at the greatest.
  int next();

  int getSize() const { return size_; }
  int getMin() const { return min_; }  // 300 in an empty set

  // Whether `c`, 0 to 255, is in the set.
  bool contains(int c) const {
    return ((words_[static_cast<unsigned>(c) / 32] >> (c % 32)) & 1U) != 0;
  }

  friend std::ostream& operator<<(std::ostream& os, const NodeList& list);

 private:
  std::array<uint32_t, 8> words_;  // bit c % 32 of word c / 32: label c
  int size_;
  int cursor_;
  int min_;
  int max_;   // 0 in an empty set
  int left_;  // labels still to visit
};

}  // namespace urldb

#endif  // URLDB_URLDB_NODE_LIST_H_
