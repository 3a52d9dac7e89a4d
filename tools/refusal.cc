#include "tools/refusal.h"

#include <sstream>

#include "tools/escape.h"

namespace urldb {

std::string refusalText(const ErrException& error) {
  std::ostringstream text;
  text << error;
  return escapeText(text.str());
}

std::string refusalLine(std::string_view url, const ErrException& error) {
  return escapeText(url) + "\t!" + refusalText(error) + "\n";
}

}  // namespace urldb
