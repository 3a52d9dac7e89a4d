#ifndef URLDB_TOOLS_DUMP_COMMAND_H_
#define URLDB_TOOLS_DUMP_COMMAND_H_

#include <CLI/CLI.hpp>

namespace urldb {

// `urldb dump`: every key of a database with its categories. As
// addKeyCommand.
void addDumpCommand(CLI::App& app, int* status);

}  // namespace urldb

#endif  // URLDB_TOOLS_DUMP_COMMAND_H_
