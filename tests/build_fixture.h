#ifndef URLDB_TESTS_BUILD_FIXTURE_H_
#define URLDB_TESTS_BUILD_FIXTURE_H_

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tests/run_program.h"
#include "tests/temporary_folder.h"

namespace urldb {

inline constexpr const char* kProgram = URLDB_PROGRAM;

inline bool holds(const std::string& text, std::string_view part) {
  return text.find(part) != std::string::npos;
}

class BuildCommand : public testing::Test {
 protected:
  using Arguments = std::vector<std::string>;

  // Runs `urldb build -o <db> arguments...`.
  ProgramResult build(const Arguments& arguments,
                      std::string_view input = {}) const {
    Arguments command = {kProgram, "build", "-o", db()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runProgram(command, input);
  }

  // The same from the folder, for shell lines.
  std::string buildLine() const {
    return "cd " + folder_.path() + " && " + kProgram + " build -o db ";
  }

  // The categories of a URL, as `urldb lookup` prints them.
  std::string lookup(const std::string& url) const {
    const ProgramResult result =
        runProgram({kProgram, "lookup", "-d", db()}, url + "\n");
    EXPECT_EQ("", result.err);
    const std::size_t tab = result.out.find('\t');
    if (tab == std::string::npos) return "no answer: " + result.out;
    return result.out.substr(tab + 1, result.out.size() - tab - 2);
  }

  std::string dump() const {
    const ProgramResult result = runProgram({kProgram, "dump", "-d", db()});
    EXPECT_EQ(0, result.status) << result.err;
    return result.out;
  }

  // A database to be kept, and what it must still be afterwards.
  void makeOld() {
    ASSERT_EQ(0, build({"old=/dev/stdin"}, "old.com\n").status);
    old_ = folder_.read("db");
  }
  void expectOldUntouched() const {
    EXPECT_TRUE(old_ == folder_.read("db")) << "the database has changed";
    expectNoTemporaryFile();
  }
  void expectNoTemporaryFile() const { EXPECT_FALSE(temporaryFileIsThere()); }

  bool temporaryFileIsThere() const {
    for (const auto& entry :
         std::filesystem::directory_iterator(folder_.path())) {
      if (entry.path().filename().string().rfind(".urldb-", 0) == 0)
        return true;
    }
    return false;
  }

  std::string db() const { return folder_.path("db"); }

  TemporaryFolder folder_;
  std::string old_;
};

// A build that runs while the test goes on.
class RunningBuild {
 public:
  // Runs `urldb build -o folder/db a=folder/LIST`, its messages on `err`.
  RunningBuild(const TemporaryFolder& folder, const char* list, int err) {
    const std::string target = folder.path("db");
    const std::string source = "a=" + folder.path(list);
    child_ = ::fork();
    if (child_ != 0) return;
    ::dup2(err, 1);
    ::dup2(err, 2);
    ::execl(kProgram, kProgram, "build", "-o", target.c_str(), source.c_str(),
            static_cast<char*>(nullptr));
    ::_exit(127);
  }
  RunningBuild(const RunningBuild&) = delete;
  RunningBuild& operator=(const RunningBuild&) = delete;
  ~RunningBuild() {
    if (child_ > 0) wait();
  }

  void send(int signal) const { ::kill(child_, signal); }

  int wait() {
    int status = 0;
    while (::waitpid(child_, &status, 0) < 0 && errno == EINTR) {
    }
    child_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }

 private:
  pid_t child_;
};

}  // namespace urldb

#endif  // URLDB_TESTS_BUILD_FIXTURE_H_
