#ifndef URLDB_BENCH_PEERS_H_
#define URLDB_BENCH_PEERS_H_

#include <absl/container/flat_hash_map.h>
#include <absl/strings/string_view.h>
#include <cdb.h>
#include <fcntl.h>
#include <marisa.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/keys.h"
#include "bench/text_list.h"
#include "common/file_descriptor.h"
#include "tests/temporary_folder.h"

namespace urldb {

// Other people's containers, all with one vocabulary:
//   Peer(const KeySet&)       empty; what the keys are is known beforehand
//   add(key), finish()        takes each key with its ID; makes it ready
//   int exact(query)          the ID of exactly this key, or 0
//   int longestPrefix(query)  that of the longest key that it begins with, or 0

// Tables that know whole keys only find a prefix by trying all that could be
// stored, longest first: every key ends with one of these three bytes.
template <class Probe>
int probeAtEdges(std::string_view key, const Probe& probe) {
  for (std::size_t end = key.size(); end > 0; --end) {
    const char last = key[end - 1];
    if (last != '/' && last != '.' && last != ':') continue;
    if (const int id = probe(key.substr(0, end)); id != 0) return id;
  }
  return 0;
}

class FlatHashMapPeer {
 public:
  explicit FlatHashMapPeer(const KeySet& /*set*/) {}

  void add(const TextList::Item& key) {
    map_.emplace(std::string(key.view()), key.id);
  }
  void finish() {}
  int exact(const TextList::Item& key) const { return find(key.view()); }
  int longestPrefix(const TextList::Item& key) const {
    return probeAtEdges(key.view(),
                        [this](std::string_view part) { return find(part); });
  }

 private:
  int find(std::string_view key) const {
    const auto found = map_.find(absl::string_view(key.data(), key.size()));
    return found == map_.end() ? 0 : found->second;
  }

  absl::flat_hash_map<std::string, int> map_;
};

// Numbers its keys itself; IDs come from a table beside it.
class MarisaPeer {
 public:
  explicit MarisaPeer(const KeySet& /*set*/) {}

  void add(const TextList::Item& key) {
    keys_.push_back(key.text, key.length);
    given_.push_back(key.id);
  }
  void finish() {
    trie_.build(keys_);
    ids_.resize(given_.size());
    for (std::size_t i = 0; i < given_.size(); ++i)
      ids_[keys_[i].id()] = given_[i];
    keys_.reset();
    given_ = {};
  }
  int exact(const TextList::Item& key) {
    agent_.set_query(key.text, key.length);
    return trie_.lookup(agent_) ? ids_[agent_.key().id()] : 0;
  }
  int longestPrefix(const TextList::Item& key) {
    agent_.set_query(key.text, key.length);
    int id = 0;
    while (trie_.common_prefix_search(agent_)) id = ids_[agent_.key().id()];
    return id;
  }

 private:
  marisa::Keyset keys_;
  std::vector<int> given_;
  marisa::Trie trie_;
  marisa::Agent agent_;
  std::vector<int> ids_;  // by the trie's own number
};

// A file; reading maps it into memory.
class TinycdbPeer {
 public:
  explicit TinycdbPeer(const KeySet& /*set*/)
      : file_(::open(folder_.path("keys.cdb").c_str(),
                     O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
    if (!file_.valid() || cdb_make_start(&make_, file_.get()) != 0)
      throw std::runtime_error("tinycdb: cannot create a file");
  }
  TinycdbPeer(const TinycdbPeer&) = delete;
  TinycdbPeer& operator=(const TinycdbPeer&) = delete;
  ~TinycdbPeer() {
    if (ready_) cdb_free(&cdb_);
  }

  void add(const TextList::Item& key) {
    if (cdb_make_add(&make_, key.text, static_cast<unsigned>(key.length),
                     &key.id, sizeof key.id) != 0)
      throw std::runtime_error("tinycdb: cannot write");
  }
  void finish() {
    if (cdb_make_finish(&make_) != 0 || cdb_init(&cdb_, file_.get()) != 0)
      throw std::runtime_error("tinycdb: cannot finish the file");
    ready_ = true;
  }
  int exact(const TextList::Item& key) { return find(key.view()); }
  int longestPrefix(const TextList::Item& key) {
    return probeAtEdges(key.view(),
                        [this](std::string_view part) { return find(part); });
  }

 private:
  int find(std::string_view key) {
    if (cdb_find(&cdb_, key.data(), static_cast<unsigned>(key.size())) <= 0)
      return 0;
    int id = 0;
    std::memcpy(&id, cdb_getdata(&cdb_), sizeof id);
    return id;
  }

  TemporaryFolder folder_;
  FileDescriptor file_;
  cdb_make make_{};
  cdb cdb_{};
  bool ready_ = false;
};

}  // namespace urldb

#endif  // URLDB_BENCH_PEERS_H_
