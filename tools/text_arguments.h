#ifndef URLDB_TOOLS_TEXT_ARGUMENTS_H_
#define URLDB_TOOLS_TEXT_ARGUMENTS_H_

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace urldb {

// Gives `command` any number of arguments `name`, which go to `values` as they
// are written: "[a,b]" is one argument.
CLI::Option* addTextArguments(CLI::App* command, const std::string& name,
                              std::vector<std::string>* values,
                              const std::string& description);

}  // namespace urldb

#endif  // URLDB_TOOLS_TEXT_ARGUMENTS_H_
