#include "urldb/node_list.h"

#include <algorithm>
#include <bit>
#include <ostream>

namespace urldb {

int NodeList::add(int c) {
  if (c < 0 || c > 255) return -1;
  words_[static_cast<unsigned>(c) / 32] |= 1U << (c % 32);
  ++size_;
  min_ = std::min(min_, c);
  max_ = std::max(max_, c);
  return 0;
}

void NodeList::clear() {
  words_.fill(0);
  size_ = 0;
  cursor_ = 0;
  min_ = 300;
  max_ = 0;
  left_ = 0;
}

void NodeList::rewind() {
  if (size_ < 1) return;
  cursor_ = min_;
  left_ = size_;
}

bool NodeList::hasNext() {
  if (left_ < 1) return false;
  --left_;
  return true;
}

int NodeList::next() {
  const int label = cursor_;
  if (label < max_) {
    const auto above = static_cast<unsigned>(label) + 1;
    unsigned word = above / 32;
    uint32_t bits = words_[word] & (~0U << (above % 32));
    while (bits == 0) bits = words_[++word];  // ends: max_ is above the cursor
    cursor_ = static_cast<int>(word * 32) + std::countr_zero(bits);
  }
  return label;
}

std::ostream& operator<<(std::ostream& os, const NodeList& list) {
  os << "--- NodeList ---\n size = " << list.size_ << "\n  min = " << list.min_
     << "\n  max = " << list.max_ << "\nnodes =";
  for (int c = 0; c < 256; ++c) {
    if (list.contains(c)) os << ' ' << c;
  }
  return os << '\n';
}

}  // namespace urldb
