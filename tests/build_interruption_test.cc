// Builds that a signal ends: FILE and its folder are as they were.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "common/file_descriptor.h"
#include "tests/build_fixture.h"
#include "tests/temporary_folder.h"
#include "tests/terminal.h"

namespace urldb {
namespace {

class InterruptedBuild : public BuildCommand {
 protected:
  void SetUp() override {
    ASSERT_EQ(0, ::mkfifo(folder_.path("pipe").c_str(), 0600));
    makeOld();
  }

  void waitForTemporaryFile() const {
    for (int i = 0; i < 6000 && !temporaryFileIsThere(); ++i) ::usleep(10000);
    ASSERT_TRUE(temporaryFileIsThere());
  }

  // Interrupts a build that waits for its list, and looks at what remains.
  void interrupt(int signal, const char* name) {
    SCOPED_TRACE(name);
    const std::string messages = folder_.write("messages", "");
    const FileDescriptor err(::open(messages.c_str(), O_WRONLY | O_CLOEXEC));
    RunningBuild build(folder_, "pipe", err.get());
    waitForTemporaryFile();
    ::usleep(50000);  // it is at its list now, or is about to be
    build.send(signal);
    EXPECT_EQ(2, build.wait());
    EXPECT_EQ(std::string("urldb: interrupted by ") + name + "\n",
              folder_.read("messages"));
    expectOldUntouched();
  }

  void interruptAll() {
    interrupt(SIGINT, "SIGINT");
    interrupt(SIGTERM, "SIGTERM");
    interrupt(SIGHUP, "SIGHUP");
  }

  // Interrupts a build of many keys when `phase` shows on its terminal, until
  // one is caught before it has come to `next`.
  void interruptIn(const char* phase, const char* next) {
    std::string list;
    for (int i = 0; i < 100000; ++i)
      list += "host" + std::to_string(i * 7919) + ".com\n";
    folder_.write("list", list);
    bool caught = false;
    for (int attempt = 0; attempt < 20 && !caught; ++attempt) {
      folder_.write("db", old_);
      Terminal terminal;
      RunningBuild build(folder_, "list", terminal.fd());
      terminal.closeProgramSide();
      ASSERT_TRUE(terminal.waitFor(phase)) << terminal.waitForEnd();
      build.send(SIGTERM);
      const std::string shown = terminal.waitForEnd();
      const int status = build.wait();
      if (status == 0) continue;  // it was done before the signal came
      ASSERT_EQ(2, status) << shown;
      ASSERT_TRUE(holds(shown, "\r\x1B[Kurldb: interrupted by SIGTERM\r\n"))
          << shown;
      expectOldUntouched();
      caught = !holds(shown, next);
    }
    EXPECT_TRUE(caught);
  }
};

TEST_F(InterruptedBuild, WhileItWaitsForTheOtherEndOfAPipe) { interruptAll(); }

TEST_F(InterruptedBuild, WhileItWaitsForMoreLines) {
  const FileDescriptor writer(
      ::open(folder_.path("pipe").c_str(), O_RDWR | O_CLOEXEC));
  ASSERT_TRUE(writer.valid());
  ASSERT_EQ(6, ::write(writer.get(), "a.com\n", 6));
  interruptAll();
}

TEST_F(InterruptedBuild, WhileItAddsKeys) {
  interruptIn("\r\x1B[Kadding keys: ", "\r\x1B[Kwriting");
}

TEST_F(InterruptedBuild, WhileItWrites) {
  interruptIn("\r\x1B[Kwriting", "lines        kept");
}

}  // namespace
}  // namespace urldb
