#include "tools/text_arguments.h"

namespace urldb {

CLI::Option* addTextArguments(CLI::App* command, const std::string& name,
                              std::vector<std::string>* values,
                              const std::string& description) {
  constexpr int kAnyNumber = 1 << 28;
  constexpr int kNoEnd = -1;  // as the help shows it: "NAME..."
  // As if so many were wanted, and no "extra" arguments: those would have
  // "[a,b]" taken apart as a list.
  return command->add_option(name, *values, description)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->expected(kAnyNumber, kNoEnd)
      ->allow_extra_args(false)
      ->type_name("");
}

}  // namespace urldb
