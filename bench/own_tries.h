#ifndef URLDB_BENCH_OWN_TRIES_H_
#define URLDB_BENCH_OWN_TRIES_H_

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/keys.h"
#include "bench/text_list.h"
#include "urldb/category_names.h"
#include "urldb/database_lookup.h"
#include "urldb/double_array.h"
#include "urldb/key_match.h"
#include "urldb/urldb.h"

namespace urldb {

// This project's contenders, with the vocabulary of peers.h.

// The trie of a database on its own.
class TriePeer {
 public:
  explicit TriePeer(const KeySet& /*set*/) {}

  void add(const TextList::Item& key) {
    if (trie_.add(key.text, key.id) != 0)
      throw std::logic_error("double_array: key twice");
  }
  void finish() {}
  int exact(const TextList::Item& key) const { return trie_.search(key.text); }
  int longestPrefix(const TextList::Item& key) const {
    return trie_.searchMaxPrefix(key.text);
  }
  int longestAtEdge(const TextList::Item& key) const {
    return matchKey(trie_, key.text, MatchMode::kEdge).id;
  }
  // Writes the trie to a file and goes on with what that holds.
  void saveAndOpen(const std::string& path) {
    trie_.writeFile(path.c_str());
    trie_.readFile(path.c_str());
  }

 private:
  DoubleArray trie_{10240, 3};
};

// The whole engine: each key has its category, and an answer is the category
// list with it. A key counts as found when the list is the right one.
class DatabasePeer {
 public:
  explicit DatabasePeer(const KeySet& set) : categories_(set.categories) {
    for (const std::string& name : set.names) names_.addCateogry(name.c_str());
    constexpr int kQueueSize = 2;  // no key has a second value
    db_.openFile("", &names_, kQueueSize, false);
    keyOfId_.push_back(0);
    keyOfId_.reserve(set.keys.size() + 1);
  }

  void add(const TextList::Item& key) {
    if (db_.add(key.text, valueOf(key.id)) == 0)
      throw std::logic_error("urldb: key twice");
    keyOfId_.push_back(key.id);  // URL IDs are handed out one by one
  }
  void finish() {}
  int exact(const TextList::Item& key) const {
    return ask(key, MatchMode::kExact);
  }
  int longestPrefix(const TextList::Item& key) const {
    return ask(key, MatchMode::kAnyByte);
  }
  void save(const std::string& path) {
    if (db_.writeFile(path.c_str()) != 0)
      throw std::runtime_error("urldb: not written");
  }
  // Writes the database to a file and goes on with what that holds.
  void saveAndOpen(const std::string& path) {
    save(path);
    if (db_.openFile(path.c_str(), nullptr, 0, true) < 0)
      throw std::runtime_error("urldb: cannot open " + path);
  }

 private:
  int valueOf(int id) const {
    const int category = categories_[static_cast<std::size_t>(id) - 1];
    return category << 16 | category;
  }
  int ask(const TextList::Item& key, MatchMode mode) const {
    KeyMatch match;
    const std::unique_ptr<int[]> list(lookupKey(db_, key.text, mode, &match));
    if (list == nullptr) return 0;
    const int id = keyOfId_[static_cast<std::size_t>(match.id)];
    return list[0] == 1 && list[1] == valueOf(id) ? id : -1;
  }

  const std::vector<int>& categories_;
  CategoryNames names_;
  URLDB db_;
  std::vector<int> keyOfId_;  // by URL ID
};

}  // namespace urldb

#endif  // URLDB_BENCH_OWN_TRIES_H_
