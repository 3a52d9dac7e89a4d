#ifndef URLDB_TOOLS_BUILD_COMMAND_H_
#define URLDB_TOOLS_BUILD_COMMAND_H_

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tools/output.h"

namespace urldb {

struct BuildOptions {
  std::string file;                      // the database to write
  std::optional<std::string> base;       // the database to start from
  std::optional<std::string> hierarchy;  // the hierarchy file
  int freshDays = 31;
  std::vector<std::string> sources;
};

// Builds a database and puts it in the place of `file` when it is complete and
// sound. Writes the report to `out`, what was refused to `err`, as long as
// that can be written: neither changes the outcome. Returns 0,
// or 1 when something was refused. Throws ProgramError and ErrException for
// what ends a build; the file is then as it was.
int runBuild(const BuildOptions& options, Output& out, Output& err);

// `urldb build`. As addKeyCommand.
void addBuildCommand(CLI::App& app, int* status);

}  // namespace urldb

#endif  // URLDB_TOOLS_BUILD_COMMAND_H_
