#include "tools/info_command.h"

#include <unistd.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "tools/database_counts.h"
#include "tools/escape.h"
#include "tools/freshness_text.h"
#include "tools/open_database.h"
#include "tools/output.h"
#include "urldb/category_view.h"
#include "urldb/database_view.h"
#include "urldb/trie_view.h"
#include "urldb/urldb.h"

namespace urldb {

namespace {

std::string row(std::string_view label, std::string_view value) {
  constexpr std::size_t kColumn = 22;
  std::string text(label);
  text += ':';
  text.append(kColumn - text.size(), ' ');
  text += value;
  text += '\n';
  return text;
}

std::string row(std::string_view label, std::size_t value) {
  return row(label, std::to_string(value));
}

int runInfo(const std::string& path) {
  URLDB db;
  openDatabase(&db, path);
  const DatabaseView view = viewOf(db);
  const CategoryView names = view.names->view();
  const TrieView trie = view.trie->view();
  const DatabaseCounts counts = countDatabase(db);

  Output out(STDOUT_FILENO);
  out.write(row("file", escapeText(path)));
  out.write(row("format version", std::to_string(view.version)));
  out.write(row("written", escapeText(view.timeStamp)));
  out.write(row("fresh", freshnessText(db)));
  out.write(row("keys", counts.keys));
  out.write(row("category values", counts.values));
  out.write(row("longest list", counts.longestList));
  out.write(row("next URL ID", std::to_string(view.urlID)));
  out.write(row("category names", names.names.size()));
  out.write(row("level-1 categories", names.level1.size()));
  out.write(row("category pairs", counts.pairs));
  out.write(row("repository entries", view.repository.size()));
  out.write(row("free positions", counts.freePositions));
  out.write(row("trie cells used", counts.usedCells));
  out.write(row("trie cells free", counts.freeCells));
  out.write(row("TAIL bytes", std::to_string(trie.posTail)));
  out.flush();
  return 0;
}

}  // namespace

void addInfoCommand(CLI::App& app, int* status) {
  addDatabaseCommand(
      app, "info",
      "Print the header, the counters and the freshness of a database",
      "'fresh' compares the last day on which the database counts as fresh\n"
      "with today: 'until DATE' or 'expired since DATE (N days)'.\n"
      "\n"
      "Example:\n"
      "  urldb info -d my.db\n",
      runInfo, status);
}

}  // namespace urldb
