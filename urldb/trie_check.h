#ifndef URLDB_URLDB_TRIE_CHECK_H_
#define URLDB_URLDB_TRIE_CHECK_H_

#include <cstddef>
#include <string>
#include <vector>

namespace urldb {

class DoubleArray;

// Checks the whole structure of a trie: every cell in use hangs below the root
// by an arc on which parent and child agree, every inner node has children, the
// free list is complete and ascending, every record lies inside TAIL, ends,
// overlaps no other and has an identifier. Returns the faults in words, with
// cell numbers, at most `limit` of them; none means sound. Time and memory are
// linear in the size of the trie, whatever its content.
std::vector<std::string> checkTrie(const DoubleArray& trie, std::size_t limit);

}  // namespace urldb

#endif  // URLDB_URLDB_TRIE_CHECK_H_
