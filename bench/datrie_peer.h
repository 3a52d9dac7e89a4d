#ifndef URLDB_BENCH_DATRIE_PEER_H_
#define URLDB_BENCH_DATRIE_PEER_H_

// Its "Bool" macros and types are C's own affair.
#include <datrie/trie.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <vector>

#include "bench/keys.h"
#include "bench/text_list.h"

namespace urldb {

// libdatrie, with the vocabulary of peers.h. Its keys are 32-bit characters:
// turning the bytes into those is part of what it takes.
class DatriePeer {
 public:
  // The alphabet is kept to the bytes that occur in keys, to its advantage.
  explicit DatriePeer(const KeySet& set) {
    std::array<bool, 256> occurs{};
    for (std::size_t i = 0; i < set.keys.size(); ++i) {
      for (const char c : set.keys[i].view())
        occurs[static_cast<unsigned char>(c)] = true;
    }
    const std::unique_ptr<AlphaMap, void (*)(AlphaMap*)> alphabet(
        alpha_map_new(), alpha_map_free);
    for (AlphaChar c = 1; c < 256; ++c) {
      if (occurs[c]) alpha_map_add_range(alphabet.get(), c, c);
    }
    trie_.reset(trie_new(alphabet.get()));
    if (trie_ == nullptr) throw std::runtime_error("libdatrie: no trie");
  }

  void add(const TextList::Item& key) {
    if (trie_store_if_absent(trie_.get(), characters(key), key.id) == 0)
      throw std::runtime_error("libdatrie: key not stored");
  }
  void finish() { state_.reset(trie_root(trie_.get())); }
  int exact(const TextList::Item& key) {
    TrieData id = 0;
    const bool found = trie_retrieve(trie_.get(), characters(key), &id) != 0;
    return found ? id : 0;
  }
  int longestPrefix(const TextList::Item& key) {
    trie_state_rewind(state_.get());
    int best = 0;
    for (std::size_t i = 0; i < key.length; ++i) {
      const auto c = static_cast<unsigned char>(key.text[i]);
      if (trie_state_walk(state_.get(), c) == 0) break;
      const TrieData id = trie_state_get_data(state_.get());
      if (id != TRIE_DATA_ERROR) best = id;
    }
    return best;
  }

 private:
  const AlphaChar* characters(const TextList::Item& key) {
    characters_.resize(key.length + 1);
    for (std::size_t i = 0; i < key.length; ++i)
      characters_[i] = static_cast<unsigned char>(key.text[i]);
    characters_[key.length] = 0;
    return characters_.data();
  }

  std::unique_ptr<Trie, void (*)(Trie*)> trie_{nullptr, trie_free};
  std::unique_ptr<TrieState, void (*)(TrieState*)> state_{nullptr,
                                                          trie_state_free};
  std::vector<AlphaChar> characters_;  // of the key in hand
};

}  // namespace urldb

#endif  // URLDB_BENCH_DATRIE_PEER_H_
