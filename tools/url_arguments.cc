#include "tools/url_arguments.h"

#include <unistd.h>

#include <utility>

#include "common/error.h"
#include "tools/program_error.h"
#include "tools/text_arguments.h"

namespace urldb {

UrlArguments::UrlArguments(std::vector<std::string> arguments,
                           std::function<void()> beforeRead)
    : arguments_(std::move(arguments)),
      input_(STDIN_FILENO, std::move(beforeRead)) {
  if (arguments_.empty()) arguments_.emplace_back("-");
}

bool UrlArguments::next(std::string* url) {
  for (; position_ < arguments_.size(); ++position_) {
    if (arguments_[position_] != "-") {
      *url = std::move(arguments_[position_++]);
      return true;
    }
    try {
      if (input_.next(url)) return true;
    } catch (const ErrException& error) {
      throw ProgramError(std::string("standard input: ") + error.getMessage());
    }
  }
  return false;
}

void addUrlArguments(CLI::App* command, std::vector<std::string>* urls) {
  addTextArguments(command, "URL", urls,
                   "A URL; '-', or none at all: lines of standard input");
}

}  // namespace urldb
