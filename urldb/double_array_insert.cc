#include <algorithm>
#include <new>
#include <string>
#include <vector>

#include "common/error.h"
#include "urldb/double_array.h"
#include "urldb/tail_record.h"
#include "urldb/tail_string.h"
#include "urldb/trie_check.h"

// Insertion and the management of cells and TAIL.

namespace urldb {
namespace {

constexpr int kSection = 60;
constexpr int kSpareCells = 256;  // beyond any cell written: one for each label

NodeList listOf(int label) {
  NodeList list;
  list.add(label);
  return list;
}

}  // namespace

void DoubleArray::prepareToWrite() {
  if (prepared_) return;
  try {
    const std::vector<std::string> faults = checkTrie(*this, 1);
    if (!faults.empty()) {
      throw ErrException(ERR_INVALID_DATA, kSection, "%s",
                         faults.front().c_str());
    }
    FreeCells index;
    const int size = base_[0];
    index.grow(static_cast<std::size_t>(size) + kSpareCells + 1);
    for (int s = 2; s <= size; ++s) {
      if (check_[s] > 0) index.take(s);
    }
    freeCells_ = std::move(index);
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
  prepared_ = true;
}

int DoubleArray::add(const char* key, int id) {
  if (key == nullptr) {
    throw ErrException(ERR_INVALID_ARGUMENT, kSection, "key is NULL");
  }
  if (id == 0) throw ErrException(ERR_INVALID_ARGUMENT, kSection, "ID is 0");
  InnerString text(reinterpret_cast<const unsigned char*>(key), convMode_);
  prepareToWrite();

  int s = 1;
  const unsigned char* at = text.rest();
  do {
    const int c = *at;
    const int t = base_[s] + c;
    const bool inside = t >= 1 && t <= base_[0];
    const int owner = inside ? check_[t] : 0;
    if (owner != s) {
      reserveFor(text.keyLength());
      text.skip(static_cast<std::size_t>(at - text.rest()));
      if (owner > 0) {
        // The cell belongs to another parent: the one with fewer children
        // moves, counting the new one; on a tie that is the other.
        NodeList mine;
        NodeList others;
        getList(s, &mine);
        getList(owner, &others);
        s = others.getSize() > mine.getSize() + 1
                ? modify(s, s, c, &mine)
                : modify(s, owner, -1, &others);
      }
      insertString(s, posTail_, &text, id);
      return 0;
    }
    s = t;
    ++at;
  } while (base_[s] >= 0);

  // A leaf: either it is this key, or its record is split where the two part.
  const int record = -base_[s];
  text.skip(static_cast<std::size_t>(at - text.rest()));
  const unsigned char* const stored = tail_.data() + record;
  if (*at == 0 || text.compare(reinterpret_cast<const char*>(stored)) == 0) {
    return getObject(record);
  }
  TailString old(stored);
  const int oldId = getObject(record);
  reserveFor(text.keyLength() + static_cast<std::size_t>(old.length()));
  while (int{text} == int{old}) {
    NodeList shared = listOf(text);
    wBase(s, xCheck(&shared));
    const int t = base_[s] + int{text};
    wCheck(t, s);
    s = t;
    ++text;
    ++old;
  }
  NodeList fork = listOf(text);
  fork.add(old);
  wBase(s, xCheck(&fork));
  // The old remainder is shorter now: it is rewritten where it was.
  insertString(s, record, &old, oldId);
  insertString(s, posTail_, &text, id);
  return 0;
}

void DoubleArray::reserveFor(std::size_t bytes) {
  // Each byte that two keys share brings in one cell at most, beyond the
  // highest one; the fork behind them, moved children and the leaf 256 each.
  const int64_t cells = int64_t{base_[0]} + static_cast<int64_t>(bytes) +
                        int64_t{4} * kSpareCells + szGain_ / 4 + 2;
  const int64_t tail = int64_t{posTail_} + static_cast<int64_t>(bytes) +
                       kTailRecordOverhead + 1 + szGain_;
  if (cells > kMostElements || tail > kMostElements) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
  try {
    base_.reserve(static_cast<std::size_t>(cells));
    check_.reserve(static_cast<std::size_t>(cells));
    freeCells_.grow(static_cast<std::size_t>(cells) + kSpareCells);
    tail_.reserve(static_cast<std::size_t>(tail) + kSpareTail);
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
}

int DoubleArray::insertString(int s, int pos, BaseString* str, int id) {
  const int t = base_[s] + int{*str};
  wCheck(t, s);
  wBase(t, -pos);
  ++*str;
  const int length = str->length();
  const int64_t end = int64_t{posTail_} + length;
  if (end > kMostElements) throw ErrException(ERR_NO_MEMORY, kSection);
  allocTail(static_cast<int>(end));
  str->copyTo(tail_.data() + pos, id);
  if (pos == posTail_) posTail_ += length;
  return t;
}

int DoubleArray::modify(int current, int s, int c, NodeList* list) {
  const int oldBase = base_[s];
  NodeList wanted(*list);
  wanted.add(c);
  const int newBase = xCheck(&wanted);
  wBase(s, newBase);
  list->rewind();
  while (list->hasNext()) {
    const int label = list->next();
    const int from = oldBase + label;
    const int to = newBase + label;
    const int value = base_[from];
    wCheck(to, s);
    wBase(to, value);
    if (value > 0) {
      NodeList children;
      getList(from, &children);
      children.rewind();
      while (children.hasNext()) wCheck(value + children.next(), to);
      if (from == current) current = to;
    }
    wBase(from, 0);
    wCheck(from, 0);
  }
  return current;
}

int DoubleArray::xCheck(NodeList* list) {
  prepareToWrite();
  if (list->getMin() > base_[0]) return 1;
  // With no room among the free cells the first index beyond them, DA_SIZE + 1,
  // is the first that fits.
  return freeCells_.firstFit(*list) - list->getMin();
}

void DoubleArray::wBase(int i, int v) {
  if (int64_t{i} + kSpareCells >= static_cast<int64_t>(base_.size())) {
    allocBC(i + kSpareCells);
  }
  base_[i] = v;
  if (i > base_[0]) setLink(i);
}

void DoubleArray::wCheck(int i, int v) {
  prepareToWrite();
  if (int64_t{i} + kSpareCells >= static_cast<int64_t>(base_.size())) {
    allocBC(i + kSpareCells);
  }
  int32_t& cell = check_[i];
  if (v != 0) {
    if (cell < 0) {
      const int before = freeCells_.before(i);
      check_[before] = cell;
      if (emptyTail_ == i) emptyTail_ = before;
    }
    freeCells_.take(i);
    cell = v;
    if (i > base_[0]) setLink(i);
  } else if (cell > 0) {
    const int before = freeCells_.before(i);
    cell = check_[before];
    check_[before] = -i;
    if (emptyTail_ == before) emptyTail_ = i;
    freeCells_.release(i);
  }
}

void DoubleArray::setLink(int n) {
  base_[0] = n;
  const int first = -check_[emptyTail_];
  // The cells between the old end and cell n come in as free ones.
  for (int g = first; g < n; ++g) {
    base_[g] = 0;
    check_[g] = -(g + 1);
    emptyTail_ = g;
  }
  // Cell n itself is in use: the list ends with a link past it.
  check_[emptyTail_] = -(n + 1);
}

void DoubleArray::allocBC(int n) {
  if (n < static_cast<int64_t>(base_.size())) return;
  const int64_t size = int64_t{n} + szGain_ / 4;
  if (size > kMostElements) throw ErrException(ERR_NO_MEMORY, kSection);
  const auto cells = static_cast<std::size_t>(size);
  try {
    check_.resize(cells);
    freeCells_.grow(cells + kSpareCells);
    base_.resize(cells);
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
}

void DoubleArray::allocTail(int n) {
  if (n < static_cast<int64_t>(tail_.size())) return;
  const int64_t size = int64_t{n} + szGain_;
  if (size > kMostElements) throw ErrException(ERR_NO_MEMORY, kSection);
  resizeTail(&tail_, static_cast<std::size_t>(size));
}

void DoubleArray::resizeTail(GrowableArray<unsigned char>* tail,
                             std::size_t size) {
  try {
    // Down again, so that size() is the recorded capacity; the NULs stay
    // behind.
    tail->resize(size + kSpareTail);
    tail->resizeForOverwrite(size);
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
}

int DoubleArray::garbageTail() {
  prepareToWrite();
  const int size = base_[0];
  int total = 1;
  for (int s = 1; s <= size; ++s) {
    const int value = base_[s];
    if (value < 0) total += tailRecordSize(tail_.data() - value);
  }
  GrowableArray<unsigned char> compact;
  resizeTail(&compact, static_cast<std::size_t>(total) + 4);
  // From here on nothing can fail.
  int position = 1;
  for (int s = 1; s <= size; ++s) {
    int32_t& value = base_[s];
    if (value >= 0) continue;
    const unsigned char* const record = tail_.data() - value;
    const int length = tailRecordSize(record);
    std::copy_n(record, length, compact.data() + position);
    value = -position;
    position += length;
  }
  tail_ = std::move(compact);
  posTail_ = position;
  return posTail_;
}

}  // namespace urldb
