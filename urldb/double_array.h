#ifndef URLDB_URLDB_DOUBLE_ARRAY_H_
#define URLDB_URLDB_DOUBLE_ARRAY_H_

#include <cstddef>
#include <cstdint>
#include <iosfwd>

#include "common/growable_array.h"
#include "urldb/base_string.h"
#include "urldb/free_cells.h"
#include "urldb/inner_string.h"
#include "urldb/node_list.h"
#include "urldb/trie_view.h"

namespace urldb {

// Maps byte strings to non-zero identifiers: a double-array trie for the
// branching front of each key, TAIL for the rest of it. How cells, free list
// and TAIL work: docs/trie.md; the section that writeFile writes:
// docs/urldb-file.md.
//
// A key is a NUL-terminated text without byte 127, which closes every stored
// key. Unless said otherwise, errors are ErrException with section 60: code 1
// when memory runs out, code 22 for a null key ("key is NULL"); a key that
// holds byte 127 is code 22, section 61.
class DoubleArray {
 public:
  static constexpr int VERSION = 4;  // of the file section
  static constexpr int NUM_INT = 4;  // counts in the file section
  static constexpr int STATUS_MASK_OS = 0xF;
  static constexpr int STATUS_OS_SOLARIS = 0;
  static constexpr int STATUS_OS_LINUX = 1;
  static constexpr int STATUS_MASK_TYPE = 0xF0;
  static constexpr int STATUS_TYPE_FAILURE = 0x10;
  static constexpr int STATUS_TYPE_EUC = 0x20;
  static constexpr int TERM_CHAR = InnerString::TERM_CHAR;

  // An empty trie. `szGain` is the growth step: bytes of TAIL, and four times
  // the cells; a negative one is code 22. `convMode` is how keys are
  // normalised, see InnerString.
  DoubleArray(int szGain, int convMode);
  ~DoubleArray() = default;
  DoubleArray(const DoubleArray&) = delete;
  DoubleArray& operator=(const DoubleArray&) = delete;

  // The identifier stored for exactly this key, or 0.
  int search(const char* key) const;
  // The identifier of the longest stored key that is a prefix of `key`, or 0.
  int searchMaxPrefix(const char* key) const;
  // The identifier of the record at TAIL position `p`, or 0 when `p` is outside
  // TAIL or no record ends behind it.
  int getObject(int p) const;
  // Adds the labels of the children of cell `s` to `list`; returns its size.
  int getList(int s, NodeList* list) const;

  // Stores `id` for `key`. Returns 0 when the key was new; otherwise the
  // identifier that it has, which stays. Code 22 for the id 0 ("ID is 0"). A
  // trie that was read from a file is checked as a whole before the first
  // insertion; one that is not sound is code 25 with the first fault as text.
  // After an error the trie is as it was before.
  int add(const char* key, int id);

  // The steps of an insertion. They keep the invariants below between
  // themselves and trust their arguments.

  // Hangs a leaf under `s` for the current byte of `str`, with the record of
  // what follows at TAIL position `pos` (posTail for a new record). Returns its
  // cell.
  int insertString(int s, int pos, BaseString* str, int id);
  // Moves the children of `s`, `list`, to a base that also has room for label
  // `c`
  // (-1: none). Returns where cell `current` lives afterwards.
  int modify(int current, int s, int c, NodeList* list);
  // The lowest base at which every label of `list` falls on a free cell.
  int xCheck(NodeList* list);
  // The only writers of cells: they grow the arrays, keep the free list and
  // extend DA_SIZE. A CHECK of 0 frees the cell.
  void wBase(int i, int v);
  void wCheck(int i, int v);
  // Makes `n` the highest cell and links the cells that this brings in.
  void setLink(int n);
  // Room for index `n` in BASE and CHECK, or in TAIL.
  void allocBC(int n);
  void allocTail(int n);
  // Brings the records of TAIL into cell order without holes. Returns the new
  // posTail. What is not sound is refused as add() does; on an error nothing
  // has changed.
  int garbageTail();

  // Writes the section at the descriptor's position, after a compaction. Code 5
  // when it cannot all be written; the trie itself stays usable.
  void writeFile(int fd);
  // Reads a section at the descriptor's position and replaces the content; on
  // an error the trie is unchanged. Code 4 for a section that is cut short, 26
  // "Invalid Header" or "Invalid Endian", 34 for a version above VERSION, 25
  // for counts that cannot be or records that overlap.
  void readFile(int fd);
  // The same on a file of its own: code 3 with the path when it cannot be
  // opened, and any other code with the path right behind its fixed text.
  // Return the result of closing.
  int writeFile(const char* path);
  int readFile(const char* path);

  // Arrays as the section holds them. The reader's arrays are the caller's, to
  // be released with delete[].
  static int* readIntBuffer(int fd, int count);
  static unsigned char* readTailBuffer(int fd, int size);
  static void writeIntBuffer(int fd, int* array, int count);
  void writeTailBuffer(int fd) const;
  // Reverses the identifier bytes of every record that a leaf among the cells 1
  // to `daSize` points to; a record without an end is passed over. Code 25 when
  // the records overlap so much that they cannot be records.
  static void convEndianForTail(const int* base, int daSize,
                                unsigned char* tail, int tailSize);

  // A look at cells and TAIL, valid until the next change.
  TrieView view() const;

  friend std::ostream& operator<<(std::ostream& os, const DoubleArray& trie);

 private:
  // Cell numbers and TAIL positions are ints; the arrays end a little before
  // those do.
  static constexpr int kMostElements = 0x7FFFFFFF - 1024;
  static constexpr std::size_t kSpareTail = 8;

  // Throws unless the trie can be written to: see add().
  void prepareToWrite();
  // Takes all the memory that the insertion of a key of `bytes` bytes can need,
  // so that it fails before the first change or not at all.
  void reserveFor(std::size_t bytes);
  static void resizeTail(GrowableArray<unsigned char>* tail, std::size_t size);

  // Cell s, 1 <= s <= DA_SIZE (kept in base_[0]):
  //   base_[s] > 0   inner node; its child by label c is cell base_[s] + c
  //   base_[s] < 0   leaf; its record starts at tail_[-base_[s]]
  //   check_[s] > 0  the parent;  check_[s] < 0  free, the next free cell is
  //   -check_[s]
  // The root, cell 1, heads the free list although it is in use, and is never
  // taken from it. The list ascends and ends with a link to DA_SIZE + 1. Cells
  // beyond DA_SIZE hold 0 and count as free. Only wBase and wCheck write cells
  // (setLink for them); they keep 256 spare ones above any they write, so that
  // base + label stays inside the arrays of a trie that is being built.
  GrowableArray<int32_t> base_;   // size(): szBC
  GrowableArray<int32_t> check_;  // as long as base_
  // Records (tail_record.h) from position 1 to posTail_ - 1; size(): szTail.
  // Behind them lie kSpareTail NULs, so that the identifier behind a NUL
  // anywhere before posTail_ can be fetched. Only resizeTail changes the size.
  GrowableArray<unsigned char> tail_;
  int posTail_ = 1;
  int szGain_;
  int emptyHead_ = 1;
  int emptyTail_ = 1;
  int status_ = STATUS_OS_LINUX | STATUS_TYPE_EUC;
  int convMode_;
  // The free list once more, as an index. Empty (prepared_ false) after a read,
  // until the first write needs it.
  FreeCells freeCells_;
  bool prepared_ = true;
};

}  // namespace urldb

#endif  // URLDB_URLDB_DOUBLE_ARRAY_H_
