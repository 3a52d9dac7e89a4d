#ifndef URLDB_TOOLS_KEY_TABLE_H_
#define URLDB_TOOLS_KEY_TABLE_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/growable_array.h"

namespace urldb {

// What a database will hold in all.
struct KeyTotals {
  std::size_t keys = 0;
  // Values that a key has only because a shorter one covers it.
  uint64_t inherited = 0;
  // Repository positions that are given up while values are added one by one:
  // a list that grows moves as a whole.
  uint64_t freed = 0;
  // The key with the most values, the first of them in order, and their number.
  std::string largestKey;
  std::size_t largestCount = 0;
};

// Collects the keys of all lists with their values, and works out which values
// each key gets in the end. Each list stands alone, but a search answers with
// one key only; so a key also gets the values of the shorter keys that cover
// it. Keys are compared in the form in which a trie stores them.
class KeyTable {
 public:
  // A key with all its values, in their order.
  struct Key {
    const char* text;                // normalised, ends with a NUL
    std::span<const int32_t> known;  // what the database holds already
    std::span<const int32_t> fresh;  // what is still to be added
    std::size_t inherited;           // how many of all come from shorter keys
  };

  // A value that the database to be extended holds already. Comes before the
  // first addEntry(). Keys hold neither NUL nor 0x7F and are not empty. Throws
  // ProgramError when the keys grow beyond 4 GiB, std::bad_alloc.
  void addKnown(std::string_view key, int32_t value);

  // The database is made anew: what addKnown() gave is to be added like all the
  // rest.
  void addKnownAgain() { knownIsFresh_ = true; }

  // One entry of a list: each of its keys gets each of the values.
  void addEntry(std::span<const std::string> keys,
                std::span<const int32_t> values);

  std::size_t entries() const { return firstRecord_.size(); }

  // Ends the collecting.
  KeyTotals finish();

  // Everything from here on comes after finish().

  // Calls `visit` for each key, in ascending order of unsigned bytes. What it
  // is given lasts as long as the call.
  void forEach(const std::function<void(const Key&)>& visit);

  // How many of the entries from number `begin` up to `end` gave anything that
  // neither an earlier entry nor the database had given: numbers as entries()
  // counted them.
  std::size_t keptEntries(std::size_t begin, std::size_t end) const;

 private:
  struct Record {
    uint64_t head;  // the key's first 8 bytes, big-endian: most comparisons end
                    // here, without a look at the text
    uint32_t offset;  // of the key in text_
    uint32_t length;
    int32_t value;
    uint32_t order;  // number of records before this one
  };

  Record store(std::string_view key);
  void addRecord(Record record, int32_t value);
  std::string_view keyOf(const Record& record) const {
    return {text_.data() + record.offset, record.length};
  }
  bool precedes(const Record& a, const Record& b) const;

  GrowableArray<char> text_;  // normalised keys, each with a NUL behind it
  GrowableArray<Record> records_;
  std::size_t knownCount_ = 0;  // the first records, of addKnown()
  bool knownIsFresh_ = false;
  std::vector<uint32_t> firstRecord_;  // of each entry
  std::vector<bool> kept_;             // by Record::order: gave something new
};

}  // namespace urldb

#endif  // URLDB_TOOLS_KEY_TABLE_H_
