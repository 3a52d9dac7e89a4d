#ifndef URLDB_TOOLS_KEY_COMMAND_H_
#define URLDB_TOOLS_KEY_COMMAND_H_

#include <CLI/CLI.hpp>

namespace urldb {

// `urldb key`: the lookup key of each URL. Every command of the program has
// such a function; parsing runs the command that was asked for and leaves its
// exit status in `*status`, which must outlive `app`.
void addKeyCommand(CLI::App& app, int* status);

}  // namespace urldb

#endif  // URLDB_TOOLS_KEY_COMMAND_H_
