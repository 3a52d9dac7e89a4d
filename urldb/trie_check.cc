#include "urldb/trie_check.h"

#include <cstdint>

#include "urldb/child_links.h"
#include "urldb/double_array.h"

namespace urldb {
namespace {

class TrieChecker {
 public:
  TrieChecker(const TrieView& trie, std::size_t limit)
      : trie_(trie), limit_(limit) {}

  std::vector<std::string> run() {
    checkArcs();
    checkReach();
    checkFreeList();
    checkTail();
    return std::move(faults_);
  }

 private:
  void fault(std::string text) {
    if (faults_.size() < limit_) faults_.push_back(std::move(text));
  }
  static std::string cell(int64_t s) { return "cell " + std::to_string(s); }

  bool inUse(int32_t s) const { return s == 1 || trie_.check[s] > 0; }

  // Each cell in use against its parent.
  void checkArcs() {
    if (trie_.base[1] < 1) fault("cell 1, the root, is no inner node");
    if (trie_.check[1] >= 0)
      fault("cell 1, the root, does not head the free list");
    for (int32_t t = 2; t <= trie_.size; ++t) {
      const int32_t parent = trie_.check[t];
      if (parent == 0) {
        fault(cell(t) + " is neither in use nor free");
      } else if (parent < 0 && trie_.base[t] != 0) {
        fault(cell(t) + " is free but has a BASE");
      } else if (parent > trie_.size) {
        fault(cell(t) + " has the parent " + std::to_string(parent) +
              ", beyond the last cell");
      } else if (parent > 0) {
        const int64_t label = int64_t{t} - trie_.base[parent];
        if (parent != 1 && trie_.check[parent] <= 0) {
          fault(cell(t) + " has the parent " + std::to_string(parent) +
                ", which is free");
        } else if (trie_.base[parent] < 1) {
          fault(cell(t) + " has the parent " + std::to_string(parent) +
                ", which is no inner node");
        } else if (label < 1 || label > 255) {
          fault(cell(t) + " is out of reach of its parent " +
                std::to_string(parent));
        } else if (label == DoubleArray::TERM_CHAR && trie_.base[t] >= 0) {
          fault(cell(t) + " ends a key but is no leaf");
        }
      }
    }
  }

  // Cells that agree with their parents can still form a ring of their own, and
  // an inner node can be without children.
  void checkReach() {
    const ChildLinks links(trie_);
    std::vector<int32_t> open = {1};
    int64_t reached = 0;
    while (!open.empty()) {
      const int32_t s = open.back();
      open.pop_back();
      ++reached;
      if (trie_.isLeaf(s)) continue;
      unsigned char c = links.first(s);
      // An empty trie has a root as it was made.
      if (c == 0 && (s != 1 || trie_.base[s] != 1)) {
        fault(cell(s) + " is an inner node without children");
      }
      while (c != 0) {
        const int32_t t = trie_.base[s] + c;
        if (t != 1) open.push_back(t);
        c = links.nextSibling(t);
      }
    }
    int64_t used = 0;
    for (int32_t s = 1; s <= trie_.size; ++s) used += inUse(s) ? 1 : 0;
    if (used != reached) {
      fault(std::to_string(used) + " cells are in use, but " +
            std::to_string(reached) + " hang below the root");
    }
  }

  // The root heads the list; every free cell links to the next one, the last to
  // the cell beyond the end.
  void checkFreeList() {
    if (trie_.emptyHead != 1) {
      fault("the free list begins at cell " + std::to_string(trie_.emptyHead) +
            " and not at the root");
    }
    int32_t last = 1;
    for (int32_t s = 2; s <= trie_.size; ++s) {
      if (trie_.check[s] >= 0) continue;
      checkLink(last, s);
      last = s;
    }
    checkLink(last, int64_t{trie_.size} + 1);
    if (trie_.emptyTail != last) {
      fault("the free list ends at cell " + std::to_string(trie_.emptyTail) +
            " and not at " + std::to_string(last));
    }
  }

  void checkLink(int32_t from, int64_t to) {
    if (-int64_t{trie_.check[from]} == to) return;
    fault("free " + cell(from) + " links to " +
          std::to_string(-int64_t{trie_.check[from]}) + " and not to " +
          std::to_string(to));
  }

  void checkTail() {
    // A byte of TAIL belongs to one record: each is looked at once.
    std::vector<bool> taken(static_cast<std::size_t>(trie_.posTail) + 1);
    for (int32_t s = 1; s <= trie_.size; ++s) {
      if (!inUse(s) || !trie_.isLeaf(s)) continue;
      const int32_t start = trie_.recordOf(s);
      if (start == 0) {
        fault(cell(s) + " has its record at " +
              std::to_string(-int64_t{trie_.base[s]}) + ", outside TAIL");
        continue;
      }
      checkRecord(s, start, taken);
    }
  }

  void checkRecord(int32_t s, int32_t start, std::vector<bool>& taken) {
    const std::string record =
        cell(s) + " has a record at " + std::to_string(start);
    const auto used = static_cast<std::size_t>(trie_.posTail);
    // Marks a byte as this record's; says what is wrong with it otherwise.
    const auto take = [&](std::size_t at, const char* beyond) {
      if (at >= used) {
        fault(record + beyond);
        return false;
      }
      if (taken[at]) {
        fault(record + " that overlaps another");
        return false;
      }
      taken[at] = true;
      return true;
    };
    auto end = static_cast<std::size_t>(start);
    for (;; ++end) {
      if (!take(end, " that does not end")) return;
      if (trie_.tail[end] == 0) break;
    }
    for (std::size_t i = 1; i <= sizeof(int32_t); ++i) {
      if (!take(end + i, " without room for its identifier")) return;
    }
    const auto nul = static_cast<int32_t>(end);
    if (!closesKey(s, start, nul)) fault(record + " that does not close a key");
    if (trie_.identifierAt(nul) == 0) {
      fault(record + " with the identifier 0");
    }
  }

  // Whether the string of the record of leaf `s` holds the terminal byte once,
  // at its end; behind the terminal arc it is empty.
  bool closesKey(int32_t s, int32_t start, int32_t end) const {
    const auto length = static_cast<std::size_t>(end - start);
    const int32_t parent = trie_.check[s];
    if (parent > 0 && parent <= trie_.size &&
        int64_t{s} - trie_.base[parent] == DoubleArray::TERM_CHAR) {
      return length == 0;
    }
    const unsigned char* const text = trie_.tail + start;
    return length > 0 && std::memchr(text, DoubleArray::TERM_CHAR, length) ==
                             text + length - 1;
  }

  const TrieView trie_;
  const std::size_t limit_;
  std::vector<std::string> faults_;
};

}  // namespace

std::vector<std::string> checkTrie(const DoubleArray& trie, std::size_t limit) {
  return TrieChecker(trie.view(), limit).run();
}

}  // namespace urldb
