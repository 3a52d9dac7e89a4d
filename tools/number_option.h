#ifndef URLDB_TOOLS_NUMBER_OPTION_H_
#define URLDB_TOOLS_NUMBER_OPTION_H_

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace urldb {

// Reads a number that consists of decimal digits and nothing else, no sign, no
// blank, no prefix; leading zeros do not count. Nothing when it is written
// otherwise or lies outside `min` to `max`, which are not negative.
std::optional<int> parseDecimal(std::string_view text, int min, int max);

// Gives `command` an option N that is such a number and goes to `number`; any
// other argument is wrong usage.
CLI::Option* addNumberOption(CLI::App* command, const std::string& name,
                             int* number, int min, int max,
                             const std::string& description);

}  // namespace urldb

#endif  // URLDB_TOOLS_NUMBER_OPTION_H_
