#include "urldb/double_array.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <ostream>
#include <string>

#include "common/error.h"
#include "urldb/trie_search.h"

namespace urldb {
namespace {

constexpr int kSection = 60;

}  // namespace

DoubleArray::DoubleArray(int szGain, int convMode)
    : szGain_(szGain), convMode_(convMode) {
  if (szGain < 0) {
    throw ErrException(ERR_INVALID_ARGUMENT, kSection, "szGain = %d", szGain);
  }
  // The root needs cells 0 and 1, however small the step.
  allocBC(std::max(szGain / 4, 1));
  if (base_.size() < 2) allocBC(2);
  allocTail(szGain);
  base_[0] = 1;
  base_[1] = 1;
  check_[1] = -2;
}

TrieView DoubleArray::view() const {
  return {base_.data(), check_.data(), base_[0], emptyHead_,
          emptyTail_,   tail_.data(),  posTail_, convMode_};
}

int DoubleArray::search(const char* key) const {
  if (key == nullptr) {
    throw ErrException(ERR_INVALID_ARGUMENT, kSection, "key is NULL");
  }
  const InnerString text(reinterpret_cast<const unsigned char*>(key),
                         convMode_);
  return findExact(view(), text.rest());
}

int DoubleArray::searchMaxPrefix(const char* key) const {
  if (key == nullptr) {
    throw ErrException(ERR_INVALID_ARGUMENT, kSection, "key is NULL");
  }
  const InnerString text(reinterpret_cast<const unsigned char*>(key),
                         convMode_);
  const auto everywhere = [](const unsigned char*) { return true; };
  return findLongestPrefix(view(), text.rest(), everywhere).id;
}

int DoubleArray::getObject(int p) const {
  if (p < 1) return 0;
  const TrieView cells = view();
  const int32_t end = cells.recordEnd(p);
  return end == 0 ? 0 : cells.identifierAt(end);
}

int DoubleArray::getList(int s, NodeList* list) const {
  // The children lie in a row of cells, one for each label; `t` is a cell of
  // it, t - base its label.
  const int64_t base = base_[s];
  const int64_t last = std::min<int64_t>(base + 255, base_[0]);
  const auto label = [base](int64_t t) { return static_cast<int>(t - base); };
  // CHECK is scanned in small blocks that the compiler turns into wide
  // compares; most of them hold no child.
  constexpr int kBlock = 16;
  int64_t t = std::max<int64_t>(base + 1, 1);
  for (; t + kBlock - 1 <= last; t += kBlock) {
    const int32_t* const block = check_.data() + t;
    bool found = false;
    for (int i = 0; i < kBlock; ++i) found |= block[i] == s;
    if (!found) continue;
    for (int i = 0; i < kBlock; ++i) {
      if (block[i] == s) list->add(label(t + i));
    }
  }
  for (; t <= last; ++t) {
    if (check_[t] == s) list->add(label(t));
  }
  return list->getSize();
}

namespace {

constexpr int kColumns = 10;

// Rows of kColumns values, each behind the index of its first one.
template <class Value>
void dumpRows(std::ostream& os, const char* label, int64_t count, Value value) {
  os << label;
  for (int column = 1; column <= kColumns; ++column) {
    os << " +" << column / 10 << column % 10;
  }
  for (int64_t i = 0; i < count; ++i) {
    if (i % kColumns == 0) os << '\n' << i << ':';
    os << ' ' << value(i);
  }
  os << '\n';
}

}  // namespace

std::ostream& operator<<(std::ostream& os, const DoubleArray& trie) {
  const int size = trie.base_[0];
  os << "--- Double Array Info. ---\n"
     << "      szBC = " << trie.base_.size() << '\n'
     << "   DA_SIZE = " << size << '\n'
     << "    szGain = " << trie.szGain_ << '\n'
     << " emptyHead = " << trie.emptyHead_ << '\n'
     << " emptyTail = " << trie.emptyTail_ << '\n'
     << "    szTail = " << trie.tail_.size() << '\n'
     << "   posTail = " << trie.posTail_ << '\n'
     << "--------------------------\n";
  const auto at = [](const auto& array) {
    return [&array](int64_t i) { return static_cast<int>(array[i]); };
  };
  dumpRows(os, "    BASE: ", int64_t{size} + 1, at(trie.base_));
  dumpRows(os, "   CHECK: ", int64_t{size} + 1, at(trie.check_));
  dumpRows(os, "    TAIL:", int64_t{trie.posTail_} + 1, at(trie.tail_));
  return os;
}

}  // namespace urldb
