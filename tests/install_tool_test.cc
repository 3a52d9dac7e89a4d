// The install tool as it is shipped, on its own paths: it runs in a mount
// namespace of its own, where /opt is an empty file system in memory.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>

#include "tests/run_program.h"
#include "tests/temporary_folder.h"
#include "tests/tiny_database.h"
#include "urldb/urldb.h"

namespace urldb {
namespace {

constexpr char kFolder[] = "/opt/Tarvex/KV/data/db";
constexpr char kShipped[] = "/opt/Tarvex/KV/data/db/urldb.org";
constexpr char kWorking[] = "/opt/Tarvex/KV/data/db/urldb";

constexpr int kNoNamespace = 77;
constexpr int kFailed = 78;

// Makes /opt private and empty. False where the system does not allow that.
bool enterPrivateRoot() {
  if (::unshare(CLONE_NEWNS) != 0 &&
      ::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
    return false;
  return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         ::mount("none", "/opt", "tmpfs", 0, "size=64m") == 0;
}

void copyFile(const std::string& from, const std::string& to) {
  std::filesystem::copy_file(from, to,
                             std::filesystem::copy_options::overwrite_existing);
}

class InstallTool : public testing::Test {
 protected:
  // Runs the tool among the files that `prepare` lays down in the private /opt,
  // and keeps what it printed and which files it left. Null where there is no
  // private root.
  bool run(const std::function<void()>& prepare) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(inPrivateRoot(prepare));
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    EXPECT_TRUE(code == 0 || code == kNoNamespace)
        << "the set-up ended with " << code;
    return code == 0;
  }
  int inPrivateRoot(const std::function<void()>& prepare) {
    try {
      if (!enterPrivateRoot()) return kNoNamespace;
      std::filesystem::create_directories(kFolder);
      prepare();
      const ProgramResult result = runProgram({URLDB_INSTALL_PROGRAM});
      folder_.write("status", std::to_string(result.status));
      folder_.write("printed", result.out + result.err);
      for (const char* const name : {"urldb", "urldb.org"}) {
        const std::string file = std::string(kFolder) + "/" + name;
        if (std::filesystem::exists(file)) copyFile(file, folder_.path(name));
      }
      return 0;
    } catch (...) {
      return kFailed;
    }
  }
  bool isLeft(const char* name) {
    return std::filesystem::exists(folder_.path(name));
  }
  void expectSilentSuccess() {
    EXPECT_EQ("0", folder_.read("status"));
    EXPECT_EQ("", folder_.read("printed"));
  }

  TemporaryFolder folder_;
};

#define SKIP_WITHOUT_PRIVATE_ROOT(ran) \
  if (!(ran)) GTEST_SKIP() << "no private /opt can be made here"

TEST_F(InstallTool, PutsTheShippedDatabaseIntoPlaceAndRemovesIt) {
  const std::string shipped = folder_.path("shipped");
  TinyDatabase().db.writeFile(shipped.c_str());
  const bool ran = run([&] { copyFile(shipped, kShipped); });
  SKIP_WITHOUT_PRIVATE_ROOT(ran);
  expectSilentSuccess();
  EXPECT_EQ(folder_.read("shipped"), folder_.read("urldb"));
  EXPECT_FALSE(isLeft("urldb.org"));
}

TEST_F(InstallTool, ReplacesAnOlderWorkingDatabase) {
  const std::string shipped = folder_.path("shipped");
  TinyDatabase().db.writeFile(shipped.c_str());
  const std::string old = folder_.write("old", std::string(100000, 'x'));
  const bool ran = run([&] {
    copyFile(shipped, kShipped);
    copyFile(old, kWorking);
  });
  SKIP_WITHOUT_PRIVATE_ROOT(ran);
  expectSilentSuccess();
  EXPECT_EQ(folder_.read("shipped"), folder_.read("urldb"));
}

TEST_F(InstallTool, BadShippedFileIsRemovedAllTheSame) {
  const std::string bad =
      folder_.write("bad", "_URL_DATABASE-" + std::string(100, 'x'));
  const bool ran = run([&] { copyFile(bad, kShipped); });
  SKIP_WITHOUT_PRIVATE_ROOT(ran);
  expectSilentSuccess();
  EXPECT_FALSE(isLeft("urldb.org"));
  EXPECT_EQ("", folder_.read("urldb"));
}

TEST_F(InstallTool, FullDiskIsAFailedCopyAndTheShippedFileIsRemoved) {
  const std::string shipped = folder_.path("shipped");
  TinyDatabase().db.writeFile(shipped.c_str());
  const bool ran = run([&] {
    copyFile(shipped, kShipped);
    const rlimit small = {512, RLIM_INFINITY};  // the file has more
    ::setrlimit(RLIMIT_FSIZE, &small);
  });
  SKIP_WITHOUT_PRIVATE_ROOT(ran);
  expectSilentSuccess();
  EXPECT_FALSE(isLeft("urldb.org"));
}

TEST_F(InstallTool, MissingShippedFileIsNoFailure) {
  const std::string old = folder_.write("old", "the working database");
  const bool ran = run([&] { copyFile(old, kWorking); });
  SKIP_WITHOUT_PRIVATE_ROOT(ran);
  expectSilentSuccess();
  EXPECT_FALSE(isLeft("urldb.org"));
  EXPECT_EQ("the working database", folder_.read("urldb"));
}

TEST_F(InstallTool, MissingFolderIsNoFailure) {
  const bool ran = run([] { std::filesystem::remove_all("/opt/Tarvex"); });
  SKIP_WITHOUT_PRIVATE_ROOT(ran);
  expectSilentSuccess();
}

// Runs the tool with arguments; the shipped file of a private root must
// survive.
TEST_F(InstallTool, HelpAndVersionOnlyPrint) {
  const ProgramResult help = runProgram({URLDB_INSTALL_PROGRAM, "--help"});
  EXPECT_EQ(0, help.status);
  EXPECT_EQ("", help.err);
  EXPECT_EQ(0U, help.out.find("usage: urldb-install"));
  EXPECT_NE(std::string::npos, help.out.find(kShipped));

  const ProgramResult version =
      runProgram({URLDB_INSTALL_PROGRAM, "--version"});
  EXPECT_EQ(0, version.status);
  EXPECT_EQ("", version.err);
  EXPECT_EQ(0U, version.out.find("urldb-install "));
  EXPECT_EQ('\n', version.out.back());
}

TEST_F(InstallTool, AnyOtherArgumentIsWrongUsage) {
  for (const char* argument : {"", "-h", "--helpme", "file", "--", "-"}) {
    const ProgramResult result = runProgram({URLDB_INSTALL_PROGRAM, argument});
    EXPECT_EQ(2, result.status) << argument;
    EXPECT_EQ("", result.out);
    EXPECT_EQ("usage: urldb-install [--help | --version]\n", result.err);
  }
  EXPECT_EQ(2, runProgram({URLDB_INSTALL_PROGRAM, "--help", "--help"}).status);
}

TEST_F(InstallTool, WithArgumentsNoFileIsTouched) {
  const std::string shipped = folder_.write("shipped", "shipped");
  const bool ran = run([&] {
    std::filesystem::remove_all("/opt/Tarvex");
    std::filesystem::create_directories(kFolder);
    copyFile(shipped, kShipped);
    for (const char* argument : {"--help", "--version", "--other"})
      runProgram({URLDB_INSTALL_PROGRAM, argument});
    // Out of the way of the run without arguments that follows.
    copyFile(kShipped, folder_.path("kept"));
    if (std::filesystem::exists(kWorking))
      copyFile(kWorking, folder_.path("made"));
  });
  SKIP_WITHOUT_PRIVATE_ROOT(ran);
  EXPECT_EQ("shipped", folder_.read("kept"));
  EXPECT_FALSE(isLeft("made"));
}

}  // namespace
}  // namespace urldb
