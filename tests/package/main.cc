// Uses the installed library, and nothing else of the project: one trie in
// memory, one database file there and back.

#include <cstdio>
#include <memory>

#include "common/error.h"
#include "urldb/category_names.h"
#include "urldb/double_array.h"
#include "urldb/urldb.h"

namespace {

bool trieAnswers() {
  urldb::DoubleArray trie(1024, 0);
  return trie.add("gro.elpmaxe/", 7) == 0 && trie.search("gro.elpmaxe/") == 7 &&
         trie.searchMaxPrefix("gro.elpmaxe/news") == 7 &&
         trie.search("gro.elpmaxe") == 0;
}

bool databaseAnswers(const char* path) {
  urldb::CategoryNames names;
  const int id = names.addCateogry("news");
  {
    urldb::URLDB writer;
    writer.openFile(path, &names, 16, false);
    writer.add("gro.elpmaxe/", (id << 16) | id);
    if (writer.writeFile(nullptr) != 0) return false;
  }
  urldb::URLDB reader;
  reader.openFile(path, nullptr, 0, true);
  const std::unique_ptr<int[]> list(
      reader.searchMaxPrefix("gro.elpmaxe/today"));
  return list != nullptr && list[0] == 1 && list[1] == ((id << 16) | id);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  try {
    if (trieAnswers() && databaseAnswers(argv[1])) {
      std::puts("looked up");
      return 0;
    }
  } catch (const urldb::ErrException&) {
    std::fputs("exception\n", stderr);
  }
  return 1;
}
