#ifndef URLDB_TOOLS_URL_ARGUMENTS_H_
#define URLDB_TOOLS_URL_ARGUMENTS_H_

#include <CLI/CLI.hpp>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "tools/line_source.h"

namespace urldb {

// The URLs of a command line, one after another: those given as arguments, and
// the lines of standard input where an argument is "-", or when there is none.
class UrlArguments {
 public:
  // `beforeRead`: as LineSource has it.
  UrlArguments(std::vector<std::string> arguments,
               std::function<void()> beforeRead);

  // Puts the next URL into `url`, with any bytes it has; false after the last.
  // Throws ProgramError when standard input cannot be read.
  bool next(std::string* url);

 private:
  std::vector<std::string> arguments_;
  std::size_t position_ = 0;  // in arguments_; stays on "-" until input ends
  LineSource input_;
};

// Gives `command` the arguments "URL...", which go to `urls` as written.
void addUrlArguments(CLI::App* command, std::vector<std::string>* urls);

}  // namespace urldb

#endif  // URLDB_TOOLS_URL_ARGUMENTS_H_
