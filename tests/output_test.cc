#include "tools/output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "common/file_descriptor.h"
#include "tests/terminal.h"
#include "tools/program_error.h"

namespace urldb {
namespace {

// What is said when `fd` cannot be written.
std::string failureOf(int fd) {
  Output output(fd);
  try {
    output.write("text");
    output.flush();
    return {};
  } catch (const ProgramError& error) {
    return error.what();
  }
}

TEST(Output, FailureNamesTheStreamThatFailed) {
  const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
  ASSERT_TRUE(full.valid());
  std::string failure;
  {
    const StandardErrorTo there(full.get());
    failure = failureOf(STDERR_FILENO);
  }
  EXPECT_EQ("standard error: No space left on device", failure);
  EXPECT_EQ("standard output: No space left on device", failureOf(full.get()));
}

}  // namespace
}  // namespace urldb
