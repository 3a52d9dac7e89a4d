#include "tools/dump_command.h"

#include <unistd.h>

#include <cstddef>
#include <iostream>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/error.h"
#include "tools/category_text.h"
#include "tools/escape.h"
#include "tools/name_codec.h"
#include "tools/open_database.h"
#include "tools/output.h"
#include "urldb/database_check.h"
#include "urldb/database_view.h"
#include "urldb/key_enumerator.h"
#include "urldb/urldb.h"

namespace urldb {

namespace {

void warn(const std::string& path, const std::string& text) {
  std::cerr << "urldb: " << escapeText(path + ": " + text) << std::endl;
}

// The list of a key, null when it has none that can be read.
std::unique_ptr<int[]> readList(URLDB& db, int id) {
  try {
    return std::unique_ptr<int[]>(db.searchRepository(id));
  } catch (const ErrException& error) {
    if (error.getErrCode() == ERR_NO_MEMORY) throw;
    return nullptr;
  }
}

// Finds the categories of a dump that a database built from it would not have
// as they are here.
class NameLosses {
 public:
  explicit NameLosses(const CategoryNames& names)
      : names_(names.view().names), asked_(kIDs) {}

  // What is lost of category `id`, in words that stand behind its number;
  // nothing when all of it stays, and when it was asked for before.
  std::string of(std::size_t id) {
    if (asked_[id]) return {};
    asked_[id] = true;
    const std::string_view name =
        id >= 1 && id <= names_.size() ? names_[id - 1] : "";
    if (name.empty()) return "has no name, the dump holds its number instead";
    const auto [first, isNew] = firstID_.try_emplace(name, id);
    if (!isNew)
      return "has the same name as category " + std::to_string(first->second) +
             ", the dump makes one of them";
    const std::string utf8 = toUtf8Name(name);
    if (toEucName(utf8) != name)
      return "has the name " + utf8 + ", which 'build' cannot read back";
    return {};
  }

 private:
  static constexpr std::size_t kIDs = 65536;  // an ID in a list has 16 bits

  std::span<const char* const> names_;
  std::vector<bool> asked_;  // by ID
  std::unordered_map<std::string_view, std::size_t> firstID_;
};

int runDump(const std::string& path) {
  URLDB db;
  openDatabase(&db, path);
  const std::vector<std::string> faults = checkDatabase(db, 1);
  if (!faults.empty()) {
    warn(path, "not sound: " + faults.front() +
                   "; the dump holds what can be read, 'urldb check' says "
                   "more");
  }

  const DatabaseView view = viewOf(db);
  CategoryText text(*view.names, escapeName);
  NameLosses losses(*view.names);
  bool complete = faults.empty();
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
    for (const int value : values) {
      for (const std::size_t id :
           {CategoryText::level1(value), CategoryText::level2(value)}) {
        const std::string loss = losses.of(id);
        if (loss.empty()) continue;
        complete = false;
        warn(path, "category " + std::to_string(id) + " " + loss);
      }
    }
    out.write(escapeKey(keys.key()) + "\t" + text.list(values) + "\n");
  }
  out.flush();
  return complete ? 0 : 1;
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
      "A category that would not come back in the same form, for want of a\n"
      "name of its own that can be read, is named on stderr (exit status 1).\n"
      "\n"
      "Examples:\n"
      "  urldb dump -d my.db > my.txt && urldb build -o copy.db my.txt\n"
      "  urldb dump -d my.db | grep '^MOC\\.ELPMAXE[/.:]'\n",
      runDump, status);
}

}  // namespace urldb
