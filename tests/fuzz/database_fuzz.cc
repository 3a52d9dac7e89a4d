// Any bytes as a database file: what opens must be safe to search, to dump, to
// check and to extend, and what the check calls sound must survive being saved.

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "common/error.h"
#include "urldb/database_check.h"
#include "urldb/database_lookup.h"
#include "urldb/database_view.h"
#include "urldb/key_enumerator.h"
#include "urldb/urldb.h"

namespace urldb {
namespace {

// A file in memory with a path of its own.
class MemoryFile {
 public:
  MemoryFile() : fd_(memfd_create("database", MFD_CLOEXEC)) {}
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { close(fd_); }

  void fill(const uint8_t* data, std::size_t size) const {
    if (ftruncate(fd_, 0) != 0 ||
        pwrite(fd_, data, size, 0) != static_cast<ssize_t>(size)) {
      std::abort();
    }
  }
  std::string path() const { return "/proc/self/fd/" + std::to_string(fd_); }

 private:
  int fd_;
};

void require(bool held) {
  if (!held) std::abort();
}

using Content = std::map<std::string, std::vector<int>>;

std::vector<int> searched(const URLDB& db, const char* key, MatchMode mode) {
  try {
    const std::unique_ptr<int[]> list(lookupKey(db, key, mode));
    if (list == nullptr) return {};
    return {list.get() + 1, list.get() + 1 + list[0]};
  } catch (const ErrException&) {
    return {};
  }
}

void searchAround(const URLDB& db, const std::string& key) {
  for (const MatchMode mode :
       {MatchMode::kExact, MatchMode::kEdge, MatchMode::kAnyByte}) {
    for (const std::string& asked :
         {key, key + "/x", key + "x", key.substr(0, key.size() / 2)}) {
      if (!asked.empty()) searched(db, asked.c_str(), mode);
    }
  }
}

Content contentOf(const URLDB& db) {
  Content content;
  int left = 2000;  // a small file may hold many long keys
  for (KeyEnumerator keys(*viewOf(db).trie); left > 0 && keys.next(); --left) {
    const std::string& key = keys.key();
    searchAround(db, key);
    if (!key.empty()) {
      content[key] = searched(db, key.c_str(), MatchMode::kExact);
    }
  }
  return content;
}

Content lookUp(const std::string& path, bool* sound) {
  URLDB db;
  db.openFile(path.c_str(), nullptr, 0, true);
  std::ostringstream dump;
  dump << db << *viewOf(db).trie;
  viewOf(db).names->outputNames(dump);
  viewOf(db).names->outputHierarchical(dump);
  *sound = checkDatabase(db, 10).empty();
  for (const char* key :
       {"a", "moc.elpmaxe/", "\x7F", "\xA5\xC6/x", "A.B:C/D?E#F"}) {
    searchAround(db, key);
  }
  return contentOf(db);
}

// Opens for building, adds a little, saves, and reads again.
void extend(const std::string& path, const Content& before) {
  constexpr int kQueue = 1 << 20;
  CategoryNames names;
  URLDB db;
  db.openFile(path.c_str(), &names, kQueue, true);
  // Only here: the free positions are read for building alone.
  const bool sound = checkDatabase(db, 10).empty();
  const MemoryFile saved;
  try {
    const int id = names.addCateogry("fuzz");
    const int value = (id << 16) | id;
    names.setHierarchical(value);
    for (const char* key : {"a", "AB", "moc.elpmaxe/", "\x01\xFF"}) {
      db.add(key, value);
    }
    db.writeFile(saved.path().c_str());
  } catch (const ErrException& error) {
    // A sound database that fits its queue can be extended and saved.
    const bool full = error.getErrCode() == ERR_OVERFLOW ||
                      error.getErrCode() == ERR_INVALID_STATUS;
    require(!sound || full);
    return;
  }
  if (!sound) return;
  bool stillSound = false;
  const Content after = lookUp(saved.path(), &stillSound);
  require(stillSound);
  for (const auto& [key, values] : before) {
    const auto found = after.find(key);
    if (found == after.end()) {
      require(after.size() >= 2000);
      continue;
    }
    require(found->second.size() >= values.size());
    require(std::equal(values.begin(), values.end(), found->second.begin()));
  }
}

}  // namespace
}  // namespace urldb

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const urldb::MemoryFile file;
  file.fill(data, size);
  urldb::Content content;
  try {
    bool sound = false;  // what the check says here is only exercised
    content = urldb::lookUp(file.path(), &sound);
  } catch (const urldb::ErrException&) {
    return 0;
  }
  try {
    urldb::extend(file.path(), content);
  } catch (const urldb::ErrException&) {
    // Free positions that cannot be are refused for building alone.
  }
  return 0;
}
