#include "urldb/key_enumerator.h"

#include <algorithm>
#include <new>

#include "common/error.h"

namespace urldb {
namespace {

constexpr unsigned char kTerm = DoubleArray::TERM_CHAR;

constexpr int kSection = 60;  // that of the trie

}  // namespace

KeyEnumerator::KeyEnumerator(const DoubleArray& trie) try
    : trie_(trie.view()), links_(trie_) {
  open(1, 0);
} catch (const std::bad_alloc&) {
  throw ErrException(ERR_NO_MEMORY, kSection);
}

void KeyEnumerator::open(int32_t s, std::size_t depth) {
  if (trie_.isLeaf(s)) return;
  const std::size_t begin = pending_.size();
  // The root has no parent, and its own link, if damage gave it one, is not
  // followed: every cell but the root has one parent, so none is reached twice.
  for (unsigned char c = links_.first(s); c != 0;) {
    const int32_t t = trie_.base[s] + c;
    if (t != 1) pending_.push_back({t, depth, c});
    c = links_.nextSibling(t);
  }
  const auto first = pending_.begin() + static_cast<std::ptrdiff_t>(begin);
  std::reverse(first, pending_.end());
  // The key that ends here comes before those that go on, whatever their bytes.
  const auto end = std::find_if(
      first, pending_.end(), [](const Pending& p) { return p.label == kTerm; });
  if (end != pending_.end()) std::rotate(end, end + 1, pending_.end());
}

bool KeyEnumerator::next() try {
  while (!pending_.empty()) {
    const Pending at = pending_.back();
    pending_.pop_back();
    if (visit(at)) return true;
  }
  return false;
} catch (const std::bad_alloc&) {
  throw ErrException(ERR_NO_MEMORY, kSection);
}

bool KeyEnumerator::visit(const Pending& at) {
  key_.resize(at.depth);
  if (at.label != kTerm) key_ += static_cast<char>(at.label);
  if (!trie_.isLeaf(at.cell)) {
    if (at.label != kTerm) open(at.cell, at.depth + 1);
    return false;
  }
  const int32_t record = trie_.recordOf(at.cell);
  const int32_t end = record == 0 ? 0 : trie_.recordEnd(record);
  if (end == 0) return false;
  // The record's string but for its terminal byte; empty behind a terminal arc.
  if (end > record) {
    key_.append(reinterpret_cast<const char*>(trie_.tail + record),
                static_cast<std::size_t>(end - record - 1));
  }
  id_ = trie_.identifierAt(end);
  return true;
}

}  // namespace urldb
