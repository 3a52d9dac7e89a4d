#include "common/last_error.h"

#include <cstdio>

#include "common/error.h"

namespace urldb {
namespace {

char lastError[1024];

}  // namespace

void setLastError(const ErrException& error) {
  std::snprintf(lastError, sizeof lastError, "[ERROR(%d)] %s",
                error.getSection(), error.getMessage());
}

const char* lastErrorText() { return lastError; }

}  // namespace urldb
