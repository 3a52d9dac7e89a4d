#ifndef URLDB_TESTS_THROWN_BY_H_
#define URLDB_TESTS_THROWN_BY_H_

#include <string>

#include "common/error.h"

namespace urldb {

// What `call` throws, as "CODE/SECTION MESSAGE"; "" when it returns.
template <class Call>
std::string thrownBy(const Call& call) {
  try {
    call();
    return {};
  } catch (const ErrException& error) {
    return std::to_string(error.getErrCode()) + "/" +
           std::to_string(error.getSection()) + " " + error.getMessage();
  }
}

// The code alone, 0 when it returns.
template <class Call>
int codeThrownBy(const Call& call) {
  try {
    call();
    return 0;
  } catch (const ErrException& error) {
    return error.getErrCode();
  }
}

}  // namespace urldb

#endif  // URLDB_TESTS_THROWN_BY_H_
