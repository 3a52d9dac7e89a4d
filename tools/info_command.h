#ifndef URLDB_TOOLS_INFO_COMMAND_H_
#define URLDB_TOOLS_INFO_COMMAND_H_

#include <CLI/CLI.hpp>

namespace urldb {

// `urldb info`: the header, the counters and the freshness of a database. As
// addKeyCommand.
void addInfoCommand(CLI::App& app, int* status);

}  // namespace urldb

#endif  // URLDB_TOOLS_INFO_COMMAND_H_
