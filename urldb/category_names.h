#ifndef URLDB_URLDB_CATEGORY_NAMES_H_
#define URLDB_URLDB_CATEGORY_NAMES_H_

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <vector>

#include "common/growable_array.h"
#include "common/mem_block.h"
#include "urldb/category_view.h"

namespace urldb {

// The category names of a database: ID n, from 1, is the n-th name added.
// Beside them stands the hierarchy: which pairs of a level-1 and a level-2 ID
// occur. A pair is one word with the level-1 ID in the high and the level-2 ID
// in the low 16 bits. The file section is described in docs/urldb-file.md.
//
// Names are EUC-JP and NUL-terminated. Errors are ErrException with section
// 3001; code 1 when memory runs out.
class CategoryNames {
 public:
  static constexpr int GAIN = 500;  // growth step of the tables, in entries

  CategoryNames();
  ~CategoryNames() = default;
  CategoryNames(const CategoryNames&) = delete;
  CategoryNames& operator=(const CategoryNames&) = delete;

  // Stores a copy of `name` with full-width ASCII forms folded to one byte
  // each, and returns its ID. The same name twice gets two IDs. Throws code 22
  // "add()" for a null or empty name, code 31 "CategoryID too LARGE!!!" behind
  // 32767 names.
  int addCateogry(const char* name);

  // The name of `id`; the text stays this object's, until the next readFile.
  // Throws code 38 for an ID without a name.
  const char* getNames(int id) const;

  // Records the pair `cateIDs`; one that is recorded already changes nothing,
  // and with the level-2 ID 0 only the level-1 ID is recorded. Throws code 37
  // "too much Category(1)" for the 32768th level-1 ID and "too much
  // Category(2)" for the 65536th level-2 node, which is then not recorded.
  void setHierarchical(int cateIDs);

  // Forgets all pairs.
  void clearHierarchical();

  // Where the level-1 ID `key`, in bits 16 to 30, stands in the level-1 table:
  // its index + 1, or minus the index at which it would be inserted (so 0 or
  // below when it is not there).
  int searchLevel1(int key) const;

  // Reads the section at the descriptor's position and replaces all content; on
  // an error nothing has changed. Returns text size + 4 * (names + level-1
  // entries + level-2 nodes) + 4. Throws code 4 for a section that is cut
  // short; code 25 for a negative count, a name outside the text, names that
  // overlap without measure, and level-2 links that leave the table or meet
  // each other. A table that was read has one level-2 node more than was
  // stored, unused and 0.
  int readFile(int fd);

  // Writes the section at the descriptor's position. Returns what readFile
  // returns for it. Throws code 5 when it cannot all be written, code 37 when
  // the names do not fit a section (2 GiB of text).
  int writeFile(int fd) const;

  // One line for each name: its ID, ":", the name.
  void outputNames(std::ostream& os) const;
  // One line for each level-1 ID that has level-2 IDs: the level-1 ID, ":", the
  // level-2 IDs separated by ",".
  void outputHierarchical(std::ostream& os) const;

  // A look at names and hierarchy, valid until the next change.
  CategoryView view() const;

  // Exchanges all content. Texts from getNames stay valid with their new owner.
  void swap(CategoryNames& other) noexcept;

 private:
  // The texts of names_: those that were added lie in the pool, those that were
  // read in readText_.
  std::unique_ptr<MemBlock> pool_;
  GrowableArray<unsigned char> readText_;
  std::vector<const char*> names_;

  // Ascending by bits 16 to 30, a level-1 ID. The low 16 bits are the first
  // level-2 node of that ID, 0 for none.
  std::vector<int32_t> level1_;
  // Nodes from index 1 on; word 0 is unused. The low 16 bits are a level-2 ID,
  // the high 16 bits the next node of the same level-1 ID, 0 at the end. Every
  // chain stays inside the table, and no two meet: readFile refuses others, and
  // setHierarchical only appends.
  std::vector<int32_t> level2_;
};

}  // namespace urldb

#endif  // URLDB_URLDB_CATEGORY_NAMES_H_
