#ifndef URLDB_TOOLS_CHECK_COMMAND_H_
#define URLDB_TOOLS_CHECK_COMMAND_H_

#include <CLI/CLI.hpp>

namespace urldb {

// `urldb check`: whether a database is sound, and what is wrong with it. As
// addKeyCommand.
void addCheckCommand(CLI::App& app, int* status);

}  // namespace urldb

#endif  // URLDB_TOOLS_CHECK_COMMAND_H_
