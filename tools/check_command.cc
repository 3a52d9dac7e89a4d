#include "tools/check_command.h"

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "common/error.h"
#include "tools/database_counts.h"
#include "tools/escape.h"
#include "tools/open_database.h"
#include "tools/output.h"
#include "urldb/database_check.h"
#include "urldb/urldb.h"

namespace urldb {

namespace {

constexpr std::size_t kFaultsShown = 100;
constexpr std::size_t kFaultsCounted = 100000;

std::string soundText(const URLDB& db) {
  const DatabaseCounts counts = countDatabase(db);
  return "sound: " + std::to_string(counts.keys) + " keys, " +
         std::to_string(counts.values) + " category values, " +
         std::to_string(counts.usedCells) + " cells\n";
}

std::string faultsText(const std::vector<std::string>& faults) {
  std::string text;
  const std::size_t shown = std::min(faults.size(), kFaultsShown);
  for (std::size_t i = 0; i < shown; ++i)
    text += "not sound: " + escapeText(faults[i]) + "\n";
  if (faults.size() > shown) {
    text += "not sound: ";
    if (faults.size() == kFaultsCounted) text += "at least ";
    text += std::to_string(faults.size() - shown) + " more faults\n";
  }
  return text;
}

int runCheck(const std::string& path) {
  Output out(STDOUT_FILENO);
  std::vector<std::string> faults;
  CategoryNames names;
  URLDB db;
  try {
    openForCheck(&db, &names, path);
    faults = checkDatabase(db, kFaultsCounted);
    if (faults.empty()) out.write(soundText(db));
  } catch (const ErrException& error) {
    if (error.getErrCode() == ERR_NO_MEMORY) throw;
    faults.emplace_back(error.getMessage());
  }
  out.write(faultsText(faults));
  out.flush();
  return faults.empty() ? 0 : 1;
}

}  // namespace

void addCheckCommand(CLI::App& app, int* status) {
  addDatabaseCommand(
      app, "check", "Look at a whole database and say what is wrong and where",
      "Looks at the header, the names and their hierarchy, every cell of the\n"
      "trie, every key, every list of categories and the free positions.\n"
      "\n"
      "Prints one line 'sound: ...' and ends with 0, or a line for each fault\n"
      "(the first 100, and how many more) and ends with 1. A file that cannot\n"
      "be opened is status 2.\n"
      "\n"
      "Example:\n"
      "  urldb check -d my.db && cp my.db /srv/urldb/\n",
      runCheck, status);
}

}  // namespace urldb
