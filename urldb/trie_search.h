#ifndef URLDB_URLDB_TRIE_SEARCH_H_
#define URLDB_URLDB_TRIE_SEARCH_H_

#include <cstddef>
#include <cstring>

#include "urldb/inner_string.h"
#include "urldb/key_match.h"
#include "urldb/trie_view.h"

namespace urldb {

// The walks behind every lookup. `key` is a normalised key closed by the
// terminal byte and a NUL. Two array reads for each byte, no allocation, and
// safe on cells and records of any value.

// The identifier of exactly this key, or 0.
inline int32_t findExact(const TrieView& trie, const unsigned char* key) {
  constexpr unsigned char kTerm = InnerString::TERM_CHAR;
  // Local pointers spare the reload through the view at each step.
  const int32_t* const base = trie.base;
  const int32_t* const check = trie.check;
  const auto size = static_cast<uint32_t>(trie.size);
  int32_t s = 1;
  int32_t b = base[1];
  do {
    const unsigned char c = *key++;
    const uint32_t t = static_cast<uint32_t>(b) + c;
    // One comparison for both ends: cell 0 is caught as the highest number.
    if (t - 1 >= size || check[t] != s) return 0;
    s = static_cast<int32_t>(t);
    b = base[t];
    // Nothing follows the terminal byte: only a leaf can stand behind it.
    if (c == kTerm && b >= 0) return 0;
  } while (b >= 0);

  const int32_t record = trie.recordOf(s);
  if (record == 0) return 0;
  const unsigned char* const stored = trie.tail + record;
  // The key ends with the terminal byte and a NUL, so a walk that has passed
  // the terminal byte finds an empty record, and any other the rest of the
  // stored key.
  const std::size_t length = std::strlen(reinterpret_cast<const char*>(key));
  const int32_t room = trie.posTail - record;
  if (length >= static_cast<std::size_t>(room) ||
      std::memcmp(stored, key, length + 1) != 0) {
    return 0;
  }
  return trie.identifierAt(record + static_cast<int32_t>(length));
}

// The longest stored key that is a prefix of `key` and that `accepts`: a
// predicate that gets a pointer to the byte of `key` behind the stored one (the
// terminal byte where the key is used up). It is asked before the trie is.
template <class Accepts>
KeyMatch findLongestPrefix(const TrieView& trie, const unsigned char* key,
                           const Accepts& accepts) {
  constexpr unsigned char kTerm = InnerString::TERM_CHAR;
  const int32_t* const base = trie.base;
  const int32_t* const check = trie.check;
  const auto size = static_cast<uint32_t>(trie.size);
  const unsigned char* const start = key;
  KeyMatch best;
  const auto take = [&best, start](int32_t id, const unsigned char* end) {
    best = {id, id == 0 ? 0 : static_cast<std::size_t>(end - start)};
  };

  int32_t s = 1;
  for (;;) {
    const int32_t b = base[s];
    // A key that ends at this cell has the terminal byte as its next arc.
    if (accepts(key)) {
      const uint32_t end = static_cast<uint32_t>(b) + kTerm;
      if (end - 1 < size && check[end] == s && base[end] < 0) {
        const int32_t record = trie.recordOf(static_cast<int32_t>(end));
        const int32_t nul = record == 0 ? 0 : trie.recordEnd(record);
        if (nul != 0) take(trie.identifierAt(nul), key);
      }
    }
    const unsigned char c = *key++;
    const uint32_t t = static_cast<uint32_t>(b) + c;
    if (t - 1 >= size || check[t] != s) return best;
    if (c == kTerm) return best;  // the key is used up: seen above
    s = static_cast<int32_t>(t);
    if (base[t] < 0) break;
  }

  // A leaf: the rest of its key is a prefix of ours when the record's string
  // is, but for the terminal byte that closes it.
  const int32_t record = trie.recordOf(s);
  if (record == 0) return best;
  const unsigned char* stored = trie.tail + record;
  const unsigned char* const tailEnd = trie.tail + trie.posTail;
  while (stored + 1 < tailEnd && stored[0] != 0 && stored[1] != 0) {
    if (*stored != *key || *key == kTerm) return best;
    ++stored;
    ++key;
  }
  if (stored + 1 < tailEnd && stored[0] != 0 && accepts(key)) {
    take(trie.identifierAt(static_cast<int32_t>(stored + 1 - trie.tail)), key);
  }
  return best;
}

}  // namespace urldb

#endif  // URLDB_URLDB_TRIE_SEARCH_H_
