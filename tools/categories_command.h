#ifndef URLDB_TOOLS_CATEGORIES_COMMAND_H_
#define URLDB_TOOLS_CATEGORIES_COMMAND_H_

#include <CLI/CLI.hpp>

namespace urldb {

// `urldb categories`: the names of the categories and their hierarchy. As
// addKeyCommand.
void addCategoriesCommand(CLI::App& app, int* status);

}  // namespace urldb

#endif  // URLDB_TOOLS_CATEGORIES_COMMAND_H_
