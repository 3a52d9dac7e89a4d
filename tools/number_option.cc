#include "tools/number_option.h"

#include <cstdint>

namespace urldb {

std::optional<int> parseDecimal(std::string_view text, int min, int max) {
  if (text.empty()) return std::nullopt;
  int64_t number = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    number = number * 10 + (c - '0');
    if (number > max) return std::nullopt;
  }
  if (number < min) return std::nullopt;
  return static_cast<int>(number);
}

CLI::Option* addNumberOption(CLI::App* command, const std::string& name,
                             int* number, int min, int max,
                             const std::string& description) {
  const auto take = [=](const std::string& text) {
    const std::optional<int> value = parseDecimal(text, min, max);
    if (!value)
      throw CLI::ValidationError(name, "'" + text + "' is no number from " +
                                           std::to_string(min) + " to " +
                                           std::to_string(max));
    *number = *value;
  };
  return command->add_option_function<std::string>(name, take, description)
      ->type_name("N");
}

}  // namespace urldb
