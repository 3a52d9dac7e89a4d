#ifndef URLDB_URLDB_URLDB_H_
#define URLDB_URLDB_URLDB_H_

#include <array>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "common/growable_array.h"
#include "common/ring_queue.h"
#include "urldb/category_names.h"
#include "urldb/double_array.h"

namespace urldb {

struct DatabaseView;

// The URL-category database: maps a URL key to the list of category values
// recorded for it. A trie gives each key a URL ID, the URL index gives each ID
// the position of its list in the repository. All of it, and the category
// names, are one file (docs/urldb-file.md).
//
// It is opened either for building, with the caller's category names, or for
// lookups, without; then it is read-only ("finalized").
//
// A category value holds two IDs of the category names, level 1 in the high and
// level 2 in the low 16 bits. A category list is an int array made with new[]:
// word 0 the number n, words 1 to n the values in the order in which they were
// added; the caller releases it with delete[].
//
// Keys are NUL-terminated EUC-JP. Unless said otherwise, errors are
// ErrException with section 3004; code 1 when memory runs out. What the trie
// (section 60 and 61), the names (3001) and the queue of free positions (6)
// throw passes through.
class URLDB {
 public:
  static constexpr int MSG_SIZE = 512;  // of a text buffer
  static constexpr int NUM_INT = 8;     // integers in the file header
  static constexpr int VERSION = 2;     // of the format
  static constexpr int REQUIRE_VERSION =
      1;                              // of the engine, for a file written here
  static constexpr int GAIN = 50000;  // growth step of URL index and repository
  static constexpr int LINK_MASK = 0x8000;  // another value of the list follows
  static constexpr int CLEAR_PATTERN = -1;  // a free repository entry
  static constexpr int COPY_BUFFER = 0x400000;  // bytes

  URLDB();
  ~URLDB();
  URLDB(const URLDB&) = delete;
  URLDB& operator=(const URLDB&) = delete;

  // Prepares for one database file, as a fresh object whatever was open before.
  // With `names` it is opened for building: they stay the caller's, must
  // outlive the use, and take in the names of the file; up to `queueSize` - 1
  // repository positions can wait for reuse. Without `names` it is opened for
  // lookups, and `queueSize` is not used. `file` is read only when `read` is
  // true; it is also the default of writeFile. Returns the format version read,
  // 0 without reading, or -1 when the file cannot be opened (the database is
  // then open and empty). Throws what readFile throws, and code 22, section 6,
  // for a `queueSize` below 1; then everything stays as it was.
  int openFile(const char* file, CategoryNames* names, int queueSize,
               bool read);

  // Reads a file into `names`, `trie` and `freeList`, header and repository
  // into this object. With a null `trie` only header and names are read; with a
  // null `freeList` the free positions are left out. Returns the format
  // version, or -1 when the file cannot be opened. Throws, with ` in reading
  // "FILE"` behind the message: code 4 for a file that is cut short, 26 for a
  // foreign one, 34 "Required Engine Version: %d" for one that requires more
  // than version 2, 25 for contents that cannot be, 37 (section 6) when the
  // free positions do not fit the queue; then this object and `names` are
  // unchanged.
  int readFile(const char* file, CategoryNames* names, DoubleArray* trie,
               RingQueue<int>* freeList);

  // Reads header and names only, as readFile does. Throws code 22 "no file
  // name" for a null `file`, "CategoryNames = NULL" for null `names`.
  int readCategoryNames(const char* file, CategoryNames* names);

  // Checks the database (checkData) and writes it to `file`, null for the file
  // that was opened. Returns 0, or 1 when nothing was ever changed or the
  // database is finalized: then no file is touched. Throws what checkData
  // throws, code 2 with the path when the file cannot be created, code 5 when
  // it cannot be written; the database itself stays usable.
  int writeFile(const char* file);

  // Releases everything (the caller's names excepted): a new object.
  void close();
  void initialize();

  // Whether today's local date is not later than the freshness date; true
  // without a date.
  bool isFreshed() const;

  // Records the value `cateIDs` for the key `url`. Returns the URL ID, or 0
  // when the key has that value already. Throws code 31 "URLDB has finalized",
  // code 22 "add()" for a null or empty key or the value 0, code 38 (section
  // 3001) for a value with an ID without a name, code 37 (section 6) when the
  // queue of free positions is full: its list, queue and index are then
  // unchanged.
  int add(const char* url, int cateIDs);

  // The category list of exactly this key, or of the longest stored key that is
  // a prefix of it; null when there is none, or no database is open. Throws
  // code 22 "search()" or "searchMaxPrefix()" for a null or empty key.
  int* search(const char* url) const;
  int* searchMaxPrefix(const char* url) const;

  // The repository.

  // Adds a value to the list of a URL ID. Returns the ID, or 0 when the value
  // is there already. Throws code 22 "addRepository()" when either is 0, code
  // 25 for an ID that is negative or more than one growth step beyond the
  // index, and the errors of searchRepository and of a full queue as described
  // above.
  int addRepository(int urlID, int cateIDs);
  // The category list of a URL ID; null for the ID 0. Throws code 25 for an ID
  // outside the index or a list outside the repository, code 31 "value is
  // clear(%d)" for a list that runs into the free position named.
  int* searchRepository(int urlID) const;
  // Room for position `needed`.
  void allocRepCateIDs(int needed);
  // The repository section, at the descriptor's position. Reading replaces the
  // arrays; on an error they are unchanged. Writing leaves the free positions
  // in reverse order. Code 4 or 5 for a section that cannot all be read or
  // written, 25 for counts or free positions that cannot be.
  void readURL2CateIDs(int fd, RingQueue<int>* freeList);
  void writeURL2CateIDs(int fd);

  // What a write checks first: every list is whole and holds known IDs only,
  // and lists and free positions make up the repository. The free positions are
  // left in reverse order. Throws code 25 "in checkData(free)" or "in
  // checkData(pattern)", what searchRepository throws, and code 38 (section
  // 3001) for an unknown ID.
  void checkData();

  // Copies a database file; neither is opened as a database, and what follows
  // the magic is taken as it stands. Throws, each with the path: code 3 and 2
  // when source or destination cannot be opened, 4 and 5 when they cannot be
  // read or written, 26 for a source with another magic (the destination is
  // then empty).
  void copy(const char* source, const char* destination);

  // A report of header fields and counters.
  friend std::ostream& operator<<(std::ostream& os, const URLDB& db);
  // Access for what stands beside this class.
  friend DatabaseView viewOf(const URLDB& db);
  friend std::vector<int32_t> freePositionsOf(const URLDB& db);
  friend void setFreshDays(URLDB& db, int days);

 private:
  struct Header;  // what a file begins with

  URLDB& operator=(URLDB&&) = default;  // replaces everything at once

  static Header readHeader(int fd);
  void writeHeader(int fd);
  int* listOf(const char* url, const char* caller,
              int (DoubleArray::*find)(const char*) const) const;
  // Takes the memory that a new key's list can need, so that a new key gets its
  // list or is not stored. Recorded sizes do not change.
  void reserveForNewList();
  // The entry of the URL index, 0 beyond its end.
  int32_t indexEntry(int urlID) const;
  // Where the list of a URL ID starts. Throws code 25 outside the repository.
  std::size_t listStart(int urlID) const;
  // The entry at a position inside a list. Throws "value is clear(%d)".
  int32_t valueAt(std::size_t position) const;
  // The number of values in the list at `start`.
  int listLength(std::size_t start) const;
  // Checks the list of a URL ID and returns its length. `checked` holds the
  // length of the list from each position on that has been checked before, else
  // 0.
  int checkList(int urlID, std::vector<int32_t>* checked) const;
  // Takes every free position out and puts them back in reverse order. Returns
  // them in the order in which they came out.
  GrowableArray<int32_t> reverseFreeList();

  std::unique_ptr<CategoryNames> ownNames_;  // only in lookup use
  CategoryNames* names_ = nullptr;           // ownNames_ or the caller's
  std::unique_ptr<DoubleArray> trie_;
  std::string fileName_;
  int32_t version_ = VERSION;
  bool modified_ = false;  // there is something to write
  bool bFinalized_ = false;

  // By URL ID: the position of its list, 0 for none. IDs from 1 to urlID_ - 1
  // have been given out; one without a list is left over from a load
  // (docs/urldb-file.md).
  GrowableArray<int32_t> urlIndex_;  // size(): numIdxURLID
  int32_t urlID_ = 1;
  // Lists of consecutive entries, all but the last with LINK_MASK; position 0
  // is never used. Every position from 1 to writeRepCateIDs_ - 1 belongs either
  // to one list or to freeList_ and is CLEAR_PATTERN; so is everything from
  // there on.
  GrowableArray<int32_t> repository_;  // size(): numRepCateIDs
  int32_t writeRepCateIDs_ = 1;
  int32_t maxCategoryChain_ = 0;
  std::unique_ptr<RingQueue<int>> freeList_;  // only in build use

  std::array<char, 32> timeStamp_{};
  uint32_t freshDate_ = 0;
  // Carried from file to file as they are.
  std::array<char, 4> opaque4_{};
  std::array<char, 10> opaque10_{};
};

}  // namespace urldb

// URLDB::copy for callers without exceptions: returns 0, or -1 with the reason
// in the last-error text (common/last_error.h).
extern "C" int URLDB_copy(const char* source, const char* destination);

namespace urldb {
using ::URLDB_copy;
}

#endif  // URLDB_URLDB_URLDB_H_
