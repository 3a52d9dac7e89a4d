#include "tools/progress_line.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "tests/temporary_folder.h"
#include "tests/terminal.h"

namespace urldb {
namespace {

constexpr const char* kErase = "\r\x1B[K";

TEST(ProgressLine, NewPhaseIsShownAtOnceAndTheSameOneTenTimesASecond) {
  Terminal terminal;
  {
    const StandardErrorTo there(terminal.fd());
    ProgressLine line;
    line.show("reading a");
    line.show("sorting");
    line.show("adding", ": 0");
    for (int i = 0; i < 3; ++i) line.show("adding", ": 1");
    ::usleep(110000);
    line.show("adding", ": 2");
    line.clear();
    line.show("adding", ": 3");
  }
  std::string expected;
  for (const char* text :
       {"reading a", "sorting", "adding: 0", "adding: 2", "", "adding: 3", ""})
    expected.append(kErase).append(text);
  // Three calls may take a tenth of a second on a machine that is busy.
  const std::string shown = terminal.shown();
  if (shown.find("adding: 1") == std::string::npos) {
    EXPECT_EQ(expected, shown);
  }
  EXPECT_EQ(0U, shown.find(expected.substr(0, expected.find("adding: 2"))));
}

TEST(ProgressLine, ControlBytesAreNotSentToTheTerminal) {
  Terminal terminal;
  {
    const StandardErrorTo there(terminal.fd());
    ProgressLine line;
    line.show("reading \x1B[2J");
  }
  EXPECT_EQ(std::string(kErase) + "reading %1B[2J" + kErase, terminal.shown());
}

TEST(ProgressLine, NothingIsShownWhereNoTerminalIs) {
  const TemporaryFolder folder;
  const FileDescriptor file(
      ::open(folder.write("messages", "").c_str(), O_WRONLY | O_CLOEXEC));
  {
    const StandardErrorTo there(file.get());
    ProgressLine line;
    line.show("reading");
  }
  EXPECT_EQ("", folder.read("messages"));
}

}  // namespace
}  // namespace urldb
