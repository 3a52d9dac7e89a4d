#include "tools/key_table.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "tools/program_error.h"
#include "url/euc_conv.h"
#include "urldb/key_match.h"

namespace urldb {

namespace {

constexpr std::size_t kMost = std::numeric_limits<uint32_t>::max();

uint64_t headOf(std::string_view key) {
  uint64_t head = 0;
  for (std::size_t i = 0; i < sizeof head; ++i) {
    head <<= 8;
    // A key has no NUL, so that a shorter one comes first.
    if (i < key.size()) head |= static_cast<unsigned char>(key[i]);
  }
  return head;
}

// The keys that begin the key in hand, the shortest first, each with the values
// that it has in the end.
class PrefixStack {
 public:
  // Leaves only what begins `key`.
  void keepPrefixesOf(std::string_view key) {
    while (!levels_.empty() &&
           key.substr(0, levels_.back().key.size()) != levels_.back().key) {
      values_.resize(levels_.back().begin);
      levels_.pop_back();
    }
  }

  // Puts `key` on top, without values.
  void push(std::string_view key) { levels_.push_back({key, values_.size()}); }

  // Adds a value to the key on top. False when it has that value already.
  bool add(int32_t value) {
    const auto begin =
        values_.begin() + static_cast<std::ptrdiff_t>(levels_.back().begin);
    if (std::find(begin, values_.end(), value) != values_.end()) return false;
    values_.push_back(value);
    return true;
  }

  // Adds the values of the keys that cover the key on top; returns how many of
  // them were new to it. The nearest of those keys has them all: covering is
  // transitive, because an edge of a key is an edge in every longer key that
  // begins with it, so what covers a key covers also the longer ones that cover
  // that key.
  std::size_t inherit() {
    const Level& top = levels_.back();
    std::size_t level = levels_.size() - 1;
    do {
      if (level == 0) return 0;
      --level;
    } while (!endsAtEdge(levels_[level].key, top.key));
    std::size_t added = 0;
    for (std::size_t i = levels_[level].begin; i < levels_[level + 1].begin;
         ++i)
      added += add(values_[i]) ? 1 : 0;
    return added;
  }

  // The values of the key on top.
  std::span<const int32_t> values() const {
    return std::span(values_).subspan(levels_.back().begin);
  }

 private:
  struct Level {
    std::string_view key;
    std::size_t begin;  // of its values, which end where the next level's begin
  };
  std::vector<Level> levels_;
  std::vector<int32_t> values_;
};

}  // namespace

KeyTable::Record KeyTable::store(std::string_view key) {
  const std::size_t begin = text_.size();
  const std::size_t end = begin + key.size() + 1;
  if (end > kMost) throw ProgramError("the lists hold more than 4 GiB of keys");
  text_.resize(end);
  char* const text = text_.data() + begin;
  key.copy(text, key.size());
  text[key.size()] = '\0';
  const auto length =
      static_cast<std::size_t>(EUCConv().convert(text, true, true));
  text_.resize(begin + length + 1);
  return {headOf({text, length}), static_cast<uint32_t>(begin),
          static_cast<uint32_t>(length), 0, 0};
}

void KeyTable::addRecord(Record record, int32_t value) {
  const std::size_t order = records_.size();
  if (order == kMost)
    throw ProgramError("the lists give more than 4294967295 keys");
  record.value = value;
  record.order = static_cast<uint32_t>(order);
  records_.resize(order + 1);
  records_[order] = record;
}

void KeyTable::addKnown(std::string_view key, int32_t value) {
  addRecord(store(key), value);
  knownCount_ = records_.size();
}

void KeyTable::addEntry(std::span<const std::string> keys,
                        std::span<const int32_t> values) {
  firstRecord_.push_back(static_cast<uint32_t>(records_.size()));
  for (const std::string& key : keys) {
    const Record record = store(key);
    for (const int32_t value : values) addRecord(record, value);
  }
}

bool KeyTable::precedes(const Record& a, const Record& b) const {
  if (a.head != b.head) return a.head < b.head;
  if (a.length > sizeof a.head && b.length > sizeof b.head) {
    const int order = std::memcmp(text_.data() + a.offset + sizeof a.head,
                                  text_.data() + b.offset + sizeof b.head,
                                  std::min(a.length, b.length) - sizeof a.head);
    if (order != 0) return order < 0;
  }
  if (a.length != b.length) return a.length < b.length;
  return a.order < b.order;
}

KeyTotals KeyTable::finish() {
  std::sort(
      records_.data(), records_.data() + records_.size(),
      [this](const Record& a, const Record& b) { return precedes(a, b); });
  kept_.resize(records_.size());
  KeyTotals totals;
  forEach([&totals](const Key& key) {
    ++totals.keys;
    totals.inherited += key.inherited;
    // A value behind n others moves them, and so gives up n positions.
    const std::size_t all = key.known.size() + key.fresh.size();
    for (std::size_t n = key.known.size(); n < all; ++n) totals.freed += n;
    if (all > totals.largestCount) {
      totals.largestKey = key.text;
      totals.largestCount = all;
    }
  });
  return totals;
}

void KeyTable::forEach(const std::function<void(const Key&)>& visit) {
  PrefixStack stack;
  const std::size_t count = records_.size();
  for (std::size_t next = 0; next < count;) {
    const std::string_view key = keyOf(records_[next]);
    stack.keepPrefixesOf(key);
    stack.push(key);
    std::size_t known = 0;
    for (; next < count && keyOf(records_[next]) == key; ++next) {
      const Record& record = records_[next];
      const bool added = stack.add(record.value);
      if (record.order < knownCount_) {
        known += added ? 1 : 0;
      } else if (added) {
        kept_[record.order] = true;
      }
    }
    const std::size_t inherited = stack.inherit();
    const std::span<const int32_t> values = stack.values();
    if (knownIsFresh_) known = 0;
    visit({key.data(), values.first(known), values.subspan(known), inherited});
  }
}

std::size_t KeyTable::keptEntries(std::size_t begin, std::size_t end) const {
  std::size_t kept = 0;
  for (std::size_t entry = begin; entry < end; ++entry) {
    const bool last = entry + 1 == firstRecord_.size();
    const std::size_t behind = last ? kept_.size() : firstRecord_[entry + 1];
    for (std::size_t i = firstRecord_[entry]; i < behind; ++i) {
      if (!kept_[i]) continue;
      ++kept;
      break;
    }
  }
  return kept;
}

}  // namespace urldb
