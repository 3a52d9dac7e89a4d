#ifndef URLDB_TESTS_TRIE_EXERCISE_H_
#define URLDB_TESTS_TRIE_EXERCISE_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

#include "common/error.h"
#include "tests/trie_section.h"
#include "urldb/double_array.h"
#include "urldb/key_enumerator.h"
#include "urldb/key_match.h"
#include "urldb/trie_check.h"

namespace urldb {

// Uses a trie of unknown origin in every way that a program may. Nothing may
// crash; what must hold of any trie, and what must hold of one that the check
// calls sound, is looked at. Serves the tests of damaged sections and the fuzz
// target alike.
class TrieExercise {
 public:
  explicit TrieExercise(DoubleArray* trie) : trie_(trie) {}

  // What does not hold, in words; empty when all is well.
  std::string run() {
    sound_ = checkTrie(*trie_, 1).empty();
    const std::size_t faults = checkTrie(*trie_, 10).size();
    expect(sound_ == (faults == 0), "the check changed its mind");
    expect(faults <= 10, "more faults than asked for");
    enumerate();
    for (const std::string& key : asked_) search(key);
    look();
    if (sound_) rewrite();
    extend();
    return wrong_;
  }

 private:
  void expect(bool holds, const char* what) {
    if (!holds && wrong_.empty()) wrong_ = what;
  }

  void enumerate() {
    const int64_t cells = trie_->view().size;
    int64_t count = 0;
    std::string last;
    for (KeyEnumerator all(*trie_); all.next(); ++count) {
      if (count == cells) return expect(false, "more keys than cells");
      const bool ascends = count == 0 || last < all.key();
      expect(ascends || !sound_, "keys do not ascend");
      expect(all.id() != 0 || !sound_, "a key with the identifier 0");
      last = all.key();
      if (count < 20) asked_.push_back(last);
      if (sound_) keys_[last] = all.id();
    }
    for (std::size_t i = 0, n = asked_.size(); i < n; ++i) {
      asked_.push_back(asked_[i] + "/x");
    }
  }

  // Whether the trie would look for `key` in just this form.
  bool isNormal(const std::string& key) const {
    return normalisedKey(*trie_, key.c_str()) == key;
  }

  void search(const std::string& key) {
    try {
      const char* text = key.c_str();
      const int id = trie_->search(text);
      const int prefix = trie_->searchMaxPrefix(text);
      const std::string normal = normalisedKey(*trie_, text);
      const KeyMatch exact = matchKey(*trie_, text, MatchMode::kExact);
      const KeyMatch edge = matchKey(*trie_, text, MatchMode::kEdge);
      const KeyMatch any = matchKey(*trie_, text, MatchMode::kAnyByte);
      expect(exact.id == id, "exact match and search differ");
      expect(any.id == prefix, "match at any byte and prefix search differ");
      for (const KeyMatch& match : {exact, edge, any}) {
        expect(match.length <= normal.size(), "match longer than the key");
        if (!sound_ || match.id == 0) continue;
        const auto stored = keys_.find(normal.substr(0, match.length));
        expect(stored != keys_.end() && stored->second == match.id,
               "match that is no stored key");
      }
      if (!sound_) return;
      expect(any.length >= edge.length && edge.length >= exact.length,
             "a wider mode finds less");
      const auto stored = keys_.find(normal);
      expect(id == (stored == keys_.end() ? 0 : stored->second),
             "search and enumeration differ");
    } catch (const ErrException& error) {
      // Only a damaged trie has keys that cannot be asked for.
      expect(error.getErrCode() == ERR_INVALID_ARGUMENT && !sound_,
             "search throws");
    }
  }

  void look() {
    const TrieView view = trie_->view();
    for (int s = 0; s <= view.size; ++s) {
      NodeList list;
      trie_->getList(s, &list);
    }
    for (const int p : {INT32_MIN, -1, 0, view.posTail + 5, INT32_MAX}) {
      expect(trie_->getObject(p) == 0, "an object outside TAIL");
    }
    // Each may read TAIL to its end.
    for (int p = 1; p <= std::min(view.posTail, 300); ++p) {
      trie_->getObject(p);
      trie_->getObject(view.posTail - p);
    }
    struct Nowhere : std::streambuf {
      int overflow(int c) override { return c; }
    } nowhere;
    std::ostream os(&nowhere);
    os << *trie_;
  }

  // A sound trie survives a write and a read with the same keys, and is the
  // same afterwards.
  void rewrite() {
    const std::string section = sectionOf(*trie_);
    expect(keysOf(*trie_) == keys_, "keys lost by writing");
    DoubleArray fresh(16, 0);
    readSection(&fresh, section);
    expect(checkTrie(fresh, 1).empty(), "sound no more after a rewrite");
    expect(keysOf(fresh) == keys_, "keys lost by writing and reading");
    expect(sectionOf(fresh) == section, "written differently the second time");
  }

  void extend() {
    // The empty key, short ones, splits of stored keys, and a long one.
    std::vector<std::string> added = {"", "\x01", "a", "\xFE\xFE",
                                      std::string(600, 'k')};
    for (const std::string& key : asked_) {
      added.push_back(key + "zz");
      if (key.size() > 1) added.push_back(key.substr(0, key.size() / 2));
    }
    try {
      for (const std::string& key : added) {
        const int id = static_cast<int>(key.size()) + 1000;
        if (!isNormal(key)) continue;
        const auto stored = keys_.find(key);
        const int answer = trie_->add(key.c_str(), id);
        expect(
            answer == (stored == keys_.end() ? 0 : stored->second) || !sound_,
            "add and enumeration differ");
        keys_.emplace(key, id);
      }
      expect(sound_, "a damaged trie was extended");
      if (!sound_) return;
      expect(checkTrie(*trie_, 1).empty(), "extending left faults");
      expect(keysOf(*trie_) == keys_, "keys lost by extending");
      rewrite();
    } catch (const ErrException& error) {
      expect(!sound_ && (error.getErrCode() == ERR_INVALID_DATA ||
                         error.getErrCode() == ERR_INVALID_ARGUMENT),
             "extending a sound trie throws");
      try {
        sectionOf(*trie_);
        expect(false, "a damaged trie was written");
      } catch (const ErrException& refused) {
        expect(refused.getErrCode() == ERR_INVALID_DATA,
               "writing a damaged trie is another error");
      }
    }
  }

  DoubleArray* trie_;
  bool sound_ = false;
  Keys keys_;  // of a sound trie
  std::vector<std::string> asked_ = {
      "",         "a",    "b/",   "\x01", "\x01\x02",
      "\x01\x03", "\x03", "\xFF", "ab",   std::string(600, '/')};
  std::string wrong_;
};

}  // namespace urldb

#endif  // URLDB_TESTS_TRIE_EXERCISE_H_
