#ifndef URLDB_URLDB_KEY_MATCH_H_
#define URLDB_URLDB_KEY_MATCH_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace urldb {

class DoubleArray;

// Which stored key answers for an asked one.
enum class MatchMode {
  kExact = 1,    // the key itself
  kEdge = 3,     // the longest prefix that ends at an edge
  kAnyByte = 4,  // the longest prefix, wherever it ends
};

// A stored key that answers: its identifier, 0 for none, and its length in
// bytes. It is that much of the beginning of normalisedKey().
struct KeyMatch {
  int id = 0;
  std::size_t length = 0;
};

// Finds the stored key that answers for `key`. Throws as DoubleArray::search.
KeyMatch matchKey(const DoubleArray& trie, const char* key, MatchMode mode);

// `key` in the form in which `trie` stores and compares it. Throws likewise.
std::string normalisedKey(const DoubleArray& trie, const char* key);

// Whether `stored`, a prefix of `asked`, ends at an edge of it: one of / . : ?
// # & = ; is its last byte or the next one of `asked`, or `asked` is used up.
// So h/dir answers for h/dir, h/dir/x and h/dir?q, and not for h/dirty.
bool endsAtEdge(std::string_view stored, std::string_view asked);

}  // namespace urldb

#endif  // URLDB_URLDB_KEY_MATCH_H_
