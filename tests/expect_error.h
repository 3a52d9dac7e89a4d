#ifndef URLDB_TESTS_EXPECT_ERROR_H_
#define URLDB_TESTS_EXPECT_ERROR_H_

#include <gtest/gtest.h>

#include <utility>

#include "common/error.h"

namespace urldb {

// Expects `action()` to throw an ErrException with this code, section and
// message; without a message, with the fixed text of the code.
template <class Action>
void expectError(ErrorCode code, int section, const char* message,
                 Action&& action) {
  try {
    std::forward<Action>(action)();
    ADD_FAILURE() << "nothing thrown instead of \"" << message << '"';
  } catch (const ErrException& error) {
    EXPECT_EQ(code, error.getErrCode());
    EXPECT_EQ(section, error.getSection());
    EXPECT_STREQ(message, error.getMessage());
  }
}
template <class Action>
void expectError(ErrorCode code, int section, Action&& action) {
  expectError(code, section, ErrorMessage[code], std::forward<Action>(action));
}

}  // namespace urldb

#endif  // URLDB_TESTS_EXPECT_ERROR_H_
