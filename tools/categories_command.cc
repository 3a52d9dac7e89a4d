#include "tools/categories_command.h"

#include <unistd.h>

#include <cstddef>
#include <string>

#include "tools/category_text.h"
#include "tools/escape.h"
#include "tools/open_database.h"
#include "tools/output.h"
#include "urldb/category_view.h"
#include "urldb/database_view.h"
#include "urldb/urldb.h"

namespace urldb {

namespace {

int runCategories(const std::string& path) {
  URLDB db;
  openDatabase(&db, path);
  const CategoryNames& names = *viewOf(db).names;
  const CategoryView view = names.view();
  CategoryText shown(names, escapeText);
  CategoryText escaped(names, escapeName);

  Output out(STDOUT_FILENO);
  out.write("# names: ID<TAB>NAME\n");
  for (std::size_t id = 1; id <= view.names.size(); ++id)
    out.write(std::to_string(id) + "\t" + shown.name(id) + "\n");
  out.write("#hierarchy\n");
  for (const CategoryBranch& branch : view.branches()) {
    for (const int level2 : branch.level2) {
      // A category without levels is recorded as a pair with itself.
      if (level2 == branch.level1) continue;
      out.write(escaped.name(static_cast<std::size_t>(branch.level1)) + "\t" +
                escaped.name(static_cast<std::size_t>(level2)) + "\n");
    }
  }
  out.flush();
  return 0;
}

}  // namespace

void addCategoriesCommand(CLI::App& app, int* status) {
  addDatabaseCommand(
      app, "categories",
      "Print the names of the categories and their hierarchy",
      "Two sections, each behind a line that begins with #:\n"
      "  ID<TAB>NAME          every name\n"
      "  LEVEL1<TAB>LEVEL2    every pair; categories without levels are left\n"
      "                       out\n"
      "The second, with its first line #hierarchy, is what 'urldb build\n"
      "--hierarchy' reads. In its names bytes outside 0x21 to 0x7E and % , /\n"
      "are printed as %XX.\n"
      "\n"
      "Examples:\n"
      "  urldb categories -d my.db\n"
      "  urldb categories -d my.db | sed -n '/^#hierarchy/,$p' > levels.txt\n",
      runCategories, status);
}

}  // namespace urldb
