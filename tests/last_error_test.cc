#include "common/last_error.h"

#include <gtest/gtest.h>

#include <string>

#include "common/error.h"

namespace urldb {
namespace {

// In one test, because the text belongs to the process.
TEST(LastError, IsEmptyAtFirstAndThenTheLatestError) {
  EXPECT_STREQ("", lastErrorText());
  setLastError(ErrException(ERR_CANT_OPEN_FILE, 3004, "%s", "a.db"));
  EXPECT_STREQ("[ERROR(3004)] Can't Open File: a.db", lastErrorText());
  setLastError(ErrException(ERR_NO_MEMORY, -1));
  EXPECT_STREQ("[ERROR(-1)] No Memory", lastErrorText());
}

TEST(LastError, TakesTheLongestMessageAndNoFormatFromIt) {
  const std::string text = "%s%n" + std::string(600, 'a');
  setLastError(ErrException(ERR_EXTENSION, 5, "%s", text.c_str()));
  EXPECT_EQ("[ERROR(5)] " + text.substr(0, 511), lastErrorText());
}

}  // namespace
}  // namespace urldb
