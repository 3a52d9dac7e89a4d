#include "urldb/database_check.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <new>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "common/error.h"
#include "urldb/database_view.h"
#include "urldb/trie_check.h"

namespace urldb {
namespace {

bool isControlByte(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

class DatabaseChecker {
 public:
  DatabaseChecker(const URLDB& db, std::size_t limit)
      : view_(viewOf(db)), free_(freePositionsOf(db)), limit_(limit) {}

  std::vector<std::string> run() {
    if (view_.trie == nullptr) {
      fault({"no database is open"});
      return std::move(faults_);
    }
    names_ = view_.names->view().names.size();
    faults_ = checkTrie(*view_.trie, limit_);
    checkNames();
    checkHierarchy();
    checkIdentifiers();
    checkLists();
    checkFreePositions();
    return std::move(faults_);
  }

 private:
  // A piece of a sentence: words or a number.
  struct Piece {
    std::string text;
    Piece(const char* words) : text(words) {}                // NOLINT
    Piece(int64_t number) : text(std::to_string(number)) {}  // NOLINT
  };
  void fault(std::initializer_list<Piece> pieces) {
    if (faults_.size() >= limit_) return;
    std::string& sentence = faults_.emplace_back();
    for (const Piece& piece : pieces) sentence += piece.text;
  }

  bool isName(uint32_t id) const { return id >= 1 && id <= names_; }

  void checkNames() {
    constexpr std::size_t kMostNames = 32767;
    const CategoryView categories = view_.names->view();
    if (names_ > kMostNames)
      fault({static_cast<int64_t>(names_), " names are too many"});
    std::unordered_map<std::string_view, int64_t> firstID;  // by name
    int64_t id = 0;
    for (const std::string_view name : categories.names) {
      ++id;
      if (name.empty()) {
        fault({"category ", id, " has no name"});
        continue;
      }
      if (std::any_of(name.begin(), name.end(), isControlByte))
        fault({"the name of category ", id, " holds a control byte"});
      const auto [first, isNew] = firstID.try_emplace(name, id);
      if (!isNew)
        fault({"category ", id, " has the same name as category ",
               first->second});
    }
  }

  void checkHierarchy() {
    int before = 0;
    for (const CategoryBranch& branch : view_.names->view().branches()) {
      if (!isName(static_cast<uint32_t>(branch.level1)))
        fault({"level 1 of the hierarchy has the ID ", branch.level1,
               ", which has no name"});
      else if (branch.level1 <= before)
        fault({"level 1 of the hierarchy has the ID ", branch.level1,
               " behind the ID ", before});
      before = branch.level1;
      for (const int id : branch.level2) {
        if (!isName(static_cast<uint32_t>(id)))
          fault({"the hierarchy has the ID ", id, " below the ID ",
                 branch.level1, ", but it has no name"});
      }
    }
  }

  // What the trie gives for its keys against the URL index.
  void checkIdentifiers() {
    const TrieView trie = view_.trie->view();
    const std::size_t ids = view_.urlIndex.size();
    std::vector<bool> given(ids);
    for (int32_t s = 2; s <= trie.size; ++s) {
      if (trie.check[s] <= 0 || !trie.isLeaf(s)) continue;
      const int32_t record = trie.recordOf(s);
      const int32_t end = record == 0 ? 0 : trie.recordEnd(record);
      const int32_t id = end == 0 ? 0 : trie.identifierAt(end);
      if (id == 0) continue;  // a fault of the trie
      if (id < 1 || id >= view_.urlID || static_cast<std::size_t>(id) >= ids) {
        fault({"the key of cell ", s, " has the URL ID ", id,
               ", which was never given"});
        continue;
      }
      const auto index = static_cast<std::size_t>(id);
      if (given[index])
        fault({"the key of cell ", s, " has the URL ID ", id,
               ", as another key has"});
      given[index] = true;
      if (view_.urlIndex[index] == 0)
        fault({"URL ID ", id, ", of the key of cell ", s, ", has no list"});
    }
    for (std::size_t i = 0; i < ids; ++i) {
      if (view_.urlIndex[i] != 0 && !given[i])
        fault({"URL ID ", static_cast<int64_t>(i), " has a list but no key"});
    }
  }

  void checkLists() {
    owner_.assign(view_.repository.size(), 0);
    int64_t longest = 0;
    for (std::size_t i = 1; i < view_.urlIndex.size(); ++i) {
      if (view_.urlIndex[i] == 0) continue;
      const int64_t length =
          checkList(static_cast<int32_t>(i), view_.urlIndex[i]);
      if (length > longest) longest = length;
    }
    if (longest > 1 && longest > view_.maxCategoryChain)
      fault({"the longest list has ", longest, " values, but only ",
             view_.maxCategoryChain, " are recorded"});
  }

  // Claims the positions of a list for its URL ID. A list ends where it meets
  // another one, so that each position is looked at once. Returns its length.
  int64_t checkList(int32_t id, int64_t start) {
    int64_t position = start;
    for (bool more = true; more; ++position) {
      if (position < 1 || position >= view_.writeRepCateIDs) {
        fault({"the list of URL ID ", id, " reaches position ", position,
               ", outside the repository"});
        break;
      }
      const auto at = static_cast<std::size_t>(position);
      const int32_t value = view_.repository[at];
      if (value == URLDB::CLEAR_PATTERN) {
        fault({"the list of URL ID ", id, " reaches the free position ",
               position});
        break;
      }
      if (owner_[at] != 0) {
        fault({"position ", position, " is in the lists of the URL IDs ",
               owner_[at], " and ", id});
        break;
      }
      owner_[at] = id;
      more = (value & URLDB::LINK_MASK) != 0;
      checkValue(id, position, static_cast<uint32_t>(value));
    }
    return position - start;
  }

  void checkValue(int32_t id, int64_t position, uint32_t value) {
    for (const uint32_t half : {value >> 16, value & 0x7FFF}) {
      if (!isName(half))
        fault({"position ", position, ", in the list of URL ID ", id,
               ", has the category ", half, ", which has no name"});
    }
  }

  // Every position belongs to a list or is free; the free ones are known only
  // in a database that was opened for building.
  void checkFreePositions() {
    std::vector<bool> waiting(view_.repository.size());
    for (const int32_t position : free_) {
      if (position < 1 || position >= view_.writeRepCateIDs) {
        fault({"position ", position,
               " waits for reuse, but lies outside the repository"});
        continue;
      }
      const auto at = static_cast<std::size_t>(position);
      if (waiting[at]) fault({"position ", position, " waits for reuse twice"});
      waiting[at] = true;
      if (owner_[at] != 0)
        fault({"position ", position,
               " waits for reuse, but is in the list of URL ID ", owner_[at]});
    }
    for (std::size_t at = 0; at < view_.repository.size(); ++at) {
      if (owner_[at] != 0) continue;
      const auto position = static_cast<int64_t>(at);
      if (view_.repository[at] != URLDB::CLEAR_PATTERN)
        fault({"position ", position, " is in no list, but holds a value"});
      else if (!view_.finalized && position >= 1 &&
               position < view_.writeRepCateIDs && !waiting[at])
        fault({"position ", position,
               " is in no list and does not wait for reuse"});
    }
  }

  const DatabaseView view_;
  const std::vector<int32_t> free_;
  const std::size_t limit_;
  std::size_t names_ = 0;       // IDs 1 to this one have names
  std::vector<int32_t> owner_;  // by position: the URL ID whose list has it
  std::vector<std::string> faults_;
};

}  // namespace

std::vector<std::string> checkDatabase(const URLDB& db, std::size_t limit) {
  try {
    return DatabaseChecker(db, limit).run();
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, 3004);
  }
}

}  // namespace urldb
