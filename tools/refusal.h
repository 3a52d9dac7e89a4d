#ifndef URLDB_TOOLS_REFUSAL_H_
#define URLDB_TOOLS_REFUSAL_H_

#include <string>
#include <string_view>

#include "common/error.h"

namespace urldb {

// Why something was refused: "[ERROR(<section>)] <message>", control bytes
// written %XX.
std::string refusalText(const ErrException& error);

// The line that stands for a URL without an answer:
// "URL<TAB>![ERROR(<section>)] <message>" and a line end.
std::string refusalLine(std::string_view url, const ErrException& error);

}  // namespace urldb

#endif  // URLDB_TOOLS_REFUSAL_H_
