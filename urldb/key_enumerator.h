#ifndef URLDB_URLDB_KEY_ENUMERATOR_H_
#define URLDB_URLDB_KEY_ENUMERATOR_H_

#include <cstdint>
#include <string>
#include <vector>

#include "urldb/child_links.h"
#include "urldb/double_array.h"

namespace urldb {

// Reads every key of a trie, in ascending order of unsigned bytes. The trie
// must not change meanwhile. Safe on a trie of any content: what hangs together
// from the root is read once.
class KeyEnumerator {
 public:
  // Throws ErrException code 1, section 60, when memory runs out (2 bytes a
  // cell).
  explicit KeyEnumerator(const DoubleArray& trie);

  // Moves on to the next key, the first at the first call. False at the end.
  // Throws likewise.
  bool next();

  // The key as it is stored, without the terminal byte, and its identifier.
  // Valid until the next call of next().
  const std::string& key() const { return key_; }
  int id() const { return id_; }

 private:
  struct Pending {
    int32_t cell;
    std::size_t depth;  // bytes of the key above the cell
    unsigned char label;
  };

  // Queues the children of cell `s`, whose key is `depth` bytes long.
  void open(int32_t s, std::size_t depth);
  // Takes one cell up: true when it is a leaf with a key.
  bool visit(const Pending& at);

  TrieView trie_;
  ChildLinks links_;
  std::vector<Pending> pending_;  // the next one last
  std::string key_;
  int id_ = 0;
};

}  // namespace urldb

#endif  // URLDB_URLDB_KEY_ENUMERATOR_H_
