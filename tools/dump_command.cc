#include "tools/dump_command.h"

#include <unistd.h>

#include <cstddef>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "common/error.h"
#include "tools/category_text.h"
#include "tools/escape.h"
#include "tools/open_database.h"
#include "tools/output.h"
#include "urldb/database_check.h"
#include "urldb/database_view.h"
#include "urldb/key_enumerator.h"
#include "urldb/urldb.h"

namespace urldb {

namespace {

// The list of a key, null when it has none that can be read.
std::unique_ptr<int[]> readList(URLDB& db, int id) {
  try {
    return std::unique_ptr<int[]>(db.searchRepository(id));
  } catch (const ErrException& error) {
    if (error.getErrCode() == ERR_NO_MEMORY) throw;
    return nullptr;
  }
}

int runDump(const std::string& path) {
  URLDB db;
  openDatabase(&db, path);
  const std::vector<std::string> faults = checkDatabase(db, 1);
  if (!faults.empty()) {
    std::cerr << "urldb: " << escapeText(path)
              << ": not sound: " << escapeText(faults.front())
              << "; the dump holds what can be read, 'urldb check' says more"
              << std::endl;
  }

  const DatabaseView view = viewOf(db);
  CategoryText text(*view.names, escapeName);
  Output out(STDOUT_FILENO);
  out.write("#key\n");
  // Lists share no position, unless the database is not sound: then this keeps
  // the dump from growing without measure.
  std::size_t left = view.repository.size();
  KeyEnumerator keys(*view.trie);
  while (keys.next()) {
    const auto list = readList(db, keys.id());
    const auto values = listValues(list.get());
    if (values.empty()) continue;  // a fault, and reported as one
    if (values.size() > left) break;
    left -= values.size();
    out.write(escapeKey(keys.key()) + "\t" + text.list(values) + "\n");
  }
  out.flush();
  return faults.empty() ? 0 : 1;
}

}  // namespace

void addDumpCommand(CLI::App& app, int* status) {
  addDatabaseCommand(
      app, "dump", "Print every key with its categories, as 'build' reads them",
      "Keys come in the order of their bytes. The first line is #key, the\n"
      "others are KEY<TAB>category,category.\n"
      "Bytes outside 0x21 to 0x7E and % are printed as %XX, in names also\n"
      "the signs , and /.\n"
      "\n"
      "Examples:\n"
      "  urldb dump -d my.db > my.txt && urldb build -o copy.db my.txt\n"
      "  urldb dump -d my.db | grep '^MOC\\.ELPMAXE[/.:]'\n",
      runDump, status);
}

}  // namespace urldb
