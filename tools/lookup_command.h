#ifndef URLDB_TOOLS_LOOKUP_COMMAND_H_
#define URLDB_TOOLS_LOOKUP_COMMAND_H_

#include <CLI/CLI.hpp>

namespace urldb {

// `urldb lookup`: the categories of each URL. As
// addKeyCommand.
void addLookupCommand(CLI::App& app, int* status);

}  // namespace urldb

#endif  // URLDB_TOOLS_LOOKUP_COMMAND_H_
