#ifndef URLDB_TESTS_TRIE_MODEL_H_
#define URLDB_TESTS_TRIE_MODEL_H_

#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <vector>

namespace urldb::model {

// A vector with int indexes, as cells and TAIL positions are.
template <class T>
struct Row {
  std::vector<T> items;

  T& operator[](int i) { return items[static_cast<std::size_t>(i)]; }
  const T& operator[](int i) const {
    return items[static_cast<std::size_t>(i)];
  }
  int size() const { return static_cast<int>(items.size()); }
  void resize(int n) { items.resize(static_cast<std::size_t>(n)); }
};

// Insertion into a double-array trie in its plainest form: the free list is
// walked link by link, every cell is looked at one by one, nothing is
// remembered. It shares no code with the engine, which must come to the same
// cells.
class PlainTrie {
 public:
  explicit PlainTrie(int gain) : gain_(gain) {
    allocBC(gain / 4);
    allocTail(gain);
    base[0] = 1;
    base[1] = 1;
    check[1] = -2;
  }

  // Keys are taken as they are. Returns 0 for a new key, else the stored
  // identifier.
  int add(const std::string& plainKey, int id) {
    const std::string key = plainKey + '\x7F';
    std::size_t at = 0;
    int s = 1;
    do {
      const int c = at < key.size() ? byteOf(key, at) : 0;
      const int t = base[s] + c;
      if (t < 1 || t > base[0] || check[t] != s) {
        if (t >= 1 && t <= base[0] && check[t] >= 1) {
          const int other = check[t];
          const std::set<int> mine = children(s);
          const std::set<int> theirs = children(other);
          if (theirs.size() > mine.size() + 1) {
            s = modify(s, s, c, mine);
          } else {
            s = modify(s, other, -1, theirs);
          }
        }
        insertString(s, posTail, key, at, id);
        return 0;
      }
      s = t;
      ++at;
    } while (base[s] >= 0);

    const int p = -base[s];
    std::string old = recordText(p);
    const int oldId = recordId(p);
    if (at == key.size() || key.substr(at) == old) return oldId;
    std::size_t oldAt = 0;
    while (key[at] == old[oldAt]) {
      const int c = byteOf(key, at);
      wBase(s, xCheck({c}));
      const int t = base[s] + c;
      wCheck(t, s);
      s = t;
      ++at;
      ++oldAt;
    }
    wBase(s, xCheck({byteOf(key, at), byteOf(old, oldAt)}));
    insertString(s, p, old, oldAt, oldId);
    insertString(s, posTail, key, at, id);
    return 0;
  }

  // Puts the records into cell order.
  void compact() {
    std::vector<unsigned char> fresh(1);
    for (int s = 1; s <= base[0]; ++s) {
      if (base[s] >= 0) continue;
      const int p = -base[s];
      const int length = static_cast<int>(recordText(p).size()) + 5;
      base[s] = -static_cast<int>(fresh.size());
      for (int i = 0; i < length; ++i) fresh.push_back(tail[p + i]);
    }
    posTail = static_cast<int>(fresh.size());
    fresh.resize(fresh.size() + 4);
    tail.items = fresh;
  }

  // The section of a file, made byte by byte. Compact first.
  std::string section(int convMode) const {
    std::string out = "_DYNAMIC_AC_";
    for (const int v :
         {1, 4, 0x21, convMode, base[0], emptyHead, emptyTail, posTail}) {
      appendBig(&out, v);
    }
    for (int s = 0; s <= base[0]; ++s) appendBig(&out, base[s]);
    for (int s = 0; s <= base[0]; ++s) appendBig(&out, check[s]);
    std::string text;
    for (int i = 0; i <= posTail; ++i) text += static_cast<char>(tail[i]);
    for (int s = 1; s <= base[0]; ++s) {
      if (base[s] >= 0) continue;
      const auto at =
          static_cast<std::size_t>(-base[s]) + recordText(-base[s]).size();
      std::swap(text[at + 1], text[at + 4]);
      std::swap(text[at + 2], text[at + 3]);
    }
    return out + text;
  }

  // Which kinds of step the insertions took: a test makes sure that all
  // occurred.
  struct Steps {
    int relocatedSelf = 0;
    int relocatedOther = 0;
    int ties = 0;
    int movedCurrent = 0;
    int reparented = 0;
    int beyondList = 0;
    int insideList = 0;
    int freedCells = 0;
  };

  Row<int32_t> base;
  Row<int32_t> check;
  Row<unsigned char> tail;
  int posTail = 1;
  int emptyHead = 1;
  int emptyTail = 1;
  Steps steps;

 private:
  static int byteOf(const std::string& text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
  }
  static void appendBig(std::string* out, int32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8) {
      *out += static_cast<char>((static_cast<uint32_t>(v) >> shift) & 0xFF);
    }
  }
  std::string recordText(int p) const {
    return reinterpret_cast<const char*>(&tail[p]);
  }
  int recordId(int p) const {
    int id = 0;
    std::memcpy(&id, &tail[p + static_cast<int>(recordText(p).size()) + 1], 4);
    return id;
  }

  std::set<int> children(int s) const {
    std::set<int> labels;
    for (int c = 255; c >= 1; --c) {
      const int t = base[s] + c;
      if (t >= 1 && t <= base[0] && check[t] == s) labels.insert(c);
    }
    return labels;
  }

  int insertString(int s, int pos, const std::string& text, std::size_t at,
                   int id) {
    const int t = base[s] + byteOf(text, at);
    wCheck(t, s);
    wBase(t, -pos);
    const std::string rest = text.substr(at + 1);
    const int length = static_cast<int>(rest.size()) + 5;
    if (posTail + length >= tail.size()) allocTail(posTail + length);
    std::memcpy(&tail[pos], rest.c_str(), rest.size() + 1);
    std::memcpy(&tail[pos + length - 4], &id, 4);
    if (pos == posTail) posTail += length;
    return t;
  }

  int xCheck(const std::set<int>& labels) {
    const int smallest = *labels.begin();
    if (smallest > base[0]) return 1;
    int f = emptyHead;
    for (; f <= base[0]; f = -check[f]) {
      const int b = f - smallest;
      if (b < 1) continue;
      bool fits = true;
      for (const int c : labels) {
        if (b + c <= base[0] && check[b + c] > 0) {
          fits = false;
          break;
        }
      }
      if (fits) {
        ++steps.insideList;
        return b;
      }
    }
    ++steps.beyondList;
    return f - smallest;
  }

  int modify(int current, int s, int c, const std::set<int>& list) {
    c > 0 ? ++steps.relocatedSelf : ++steps.relocatedOther;
    if (c < 0 && list.size() == children(current).size() + 1) ++steps.ties;
    const int oldBase = base[s];
    std::set<int> wanted = list;
    if (c >= 0) wanted.insert(c);
    wBase(s, xCheck(wanted));
    for (const int k : list) {
      const int from = oldBase + k;
      const int to = base[s] + k;
      wCheck(to, s);
      wBase(to, base[from]);
      if (base[from] > 0) {
        ++steps.reparented;
        for (int j = 1; j <= 255; ++j) {
          if (base[from] + j <= base[0] && check[base[from] + j] == from) {
            wCheck(base[from] + j, to);
          }
        }
        if (from == current) {
          current = to;
          ++steps.movedCurrent;
        }
      }
      wBase(from, 0);
      wCheck(from, 0);
    }
    return current;
  }

  void wBase(int i, int v) {
    if (i + 256 >= base.size()) allocBC(i + 256);
    base[i] = v;
    if (i > base[0]) setLink(i);
  }

  void wCheck(int i, int v) {
    if (i + 256 >= base.size()) allocBC(i + 256);
    if (check[i] < 0) {
      int p = emptyHead;
      while (-check[p] < i) p = -check[p];
      if (i != emptyHead) {
        check[p] = check[i];
        if (emptyTail == i) emptyTail = p;
      } else {
        if (emptyHead == emptyTail) emptyTail = -check[i];
        emptyHead = -check[i];
      }
    }
    if (v == 0) {
      ++steps.freedCells;
      int p = emptyHead;
      while (-check[p] < i) p = -check[p];
      if (i >= emptyHead) {
        check[i] = check[p];
        check[p] = -i;
        if (emptyTail == p) emptyTail = i;
      } else {
        check[i] = -emptyHead;
        if (emptyHead == emptyTail && emptyTail > base[0]) emptyTail = i;
        emptyHead = i;
      }
    } else {
      check[i] = v;
    }
    if (i > base[0]) setLink(i);
  }

  void setLink(int n) {
    base[0] = n;
    const int f = -check[emptyTail];
    if (f <= n - 1) {
      emptyTail = n - 1;
      for (int g = f; g <= n - 2; ++g) {
        base[g] = 0;
        check[g] = -(g + 1);
      }
      base[n - 1] = 0;
      check[n - 1] = -(n + 1);
    } else if (f != emptyTail) {
      check[emptyTail] = -(f + 1);
    } else {
      emptyTail = f + 1;
      emptyHead = emptyTail;
    }
  }

  void allocBC(int n) {
    if (n < base.size()) return;
    base.resize(n + gain_ / 4);
    check.resize(base.size());
  }

  void allocTail(int n) {
    if (n < tail.size()) return;
    tail.resize(n + gain_);
  }

  int gain_;
};

}  // namespace urldb::model

#endif  // URLDB_TESTS_TRIE_MODEL_H_
