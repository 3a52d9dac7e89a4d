#include "tools/url_arguments.h"

#include <unistd.h>

#include <utility>

#include "common/error.h"
#include "tools/program_error.h"

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
  constexpr int kAnyNumber = 1 << 28;
  // A fixed number, as if all of them were wanted, and no "extra" arguments:
  // those would have "[a,b]" taken apart as a list.
  command
      ->add_option("URL", *urls,
                   "A URL; '-', or none at all: lines of standard input")
      ->expected(kAnyNumber)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false)
      ->type_name("");
}

}  // namespace urldb
