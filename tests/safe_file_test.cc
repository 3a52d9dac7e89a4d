#include "tools/safe_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/temporary_folder.h"
#include "tests/unprivileged.h"
#include "tools/program_error.h"

namespace urldb {
namespace {

class SafeFileTest : public testing::Test {
 protected:
  static void writeTo(const SafeFile& file, const std::string& text) {
    std::ofstream stream(file.temporaryPath(), std::ios::binary);
    stream << text;
    stream.close();
    ASSERT_TRUE(stream);
  }

  std::size_t filesInFolder() const {
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry :
         std::filesystem::directory_iterator(folder_.path()))
      ++files;
    return files;
  }

  static std::string failure(const std::string& target) {
    try {
      const SafeFile file(target);
      return {};
    } catch (const ProgramError& error) {
      return error.what();
    }
  }

  mode_t modeOf(const std::string& name) const {
    struct stat status {};
    EXPECT_EQ(0, ::stat(folder_.path(name).c_str(), &status));
    return status.st_mode & 07777;
  }

  TemporaryFolder folder_;
};

TEST_F(SafeFileTest, CommitPutsTheNewContentInPlace) {
  folder_.write("db", "old");
  {
    SafeFile file(folder_.path("db"));
    writeTo(file, "new");
    EXPECT_EQ("old", folder_.read("db"));
    file.flush();
    EXPECT_TRUE(file.commit());
    EXPECT_EQ("new", folder_.read("db"));
  }
  EXPECT_EQ("new", folder_.read("db"));
  EXPECT_EQ(1U, filesInFolder());
}

TEST_F(SafeFileTest, CommitMakesAFileThatWasNotThere) {
  SafeFile file(folder_.path("db"));
  writeTo(file, "new");
  EXPECT_FALSE(std::filesystem::exists(folder_.path("db")));
  EXPECT_TRUE(file.commit());
  EXPECT_EQ("new", folder_.read("db"));
}

TEST_F(SafeFileTest, WithoutCommitNothingRemains) {
  folder_.write("db", "old");
  {
    const SafeFile file(folder_.path("db"));
    writeTo(file, "new");
    EXPECT_EQ(2U, filesInFolder());
  }
  EXPECT_EQ("old", folder_.read("db"));
  EXPECT_EQ(1U, filesInFolder());
}

TEST_F(SafeFileTest, ModeIsThatOfAnOrdinaryFile) {
  const mode_t former = ::umask(027);
  {
    SafeFile file(folder_.path("db"));
    file.commit();
  }
  ::umask(former);
  EXPECT_EQ(0640U, modeOf("db"));
}

TEST_F(SafeFileTest, SymbolicLinkKeepsAndItsTargetIsReplaced) {
  folder_.write("files/real", "old");
  std::filesystem::create_symlink("real", folder_.path("files/second"));
  std::filesystem::create_symlink("files/second", folder_.path("db"));
  SafeFile file(folder_.path("db"));
  EXPECT_EQ(folder_.path("files"),
            std::filesystem::path(file.temporaryPath()).parent_path().string());
  writeTo(file, "new");
  EXPECT_TRUE(file.commit());
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.path("db")));
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.path("files/second")));
  EXPECT_EQ("new", folder_.read("files/real"));
}

TEST_F(SafeFileTest, LinkToNothingMakesItsTarget) {
  std::filesystem::create_symlink(folder_.path("real"), folder_.path("db"));
  SafeFile file(folder_.path("db"));
  writeTo(file, "new");
  EXPECT_TRUE(file.commit());
  EXPECT_EQ("new", folder_.read("real"));
}

TEST_F(SafeFileTest, LoopOfLinksIsAnError) {
  std::filesystem::create_symlink("b", folder_.path("a"));
  std::filesystem::create_symlink("a", folder_.path("b"));
  EXPECT_EQ(folder_.path("a") + ": too many symbolic links",
            failure(folder_.path("a")));
}

TEST_F(SafeFileTest, LongestNameLeavesRoomForTheTemporaryFile) {
  const std::string name(255, 'x');
  SafeFile file(folder_.path(name));
  writeTo(file, "new");
  EXPECT_TRUE(file.commit());
  EXPECT_EQ("new", folder_.read(name));
}

TEST_F(SafeFileTest, TargetsThatCannotBeReplaced) {
  const std::string plain = folder_.write("plain", "");
  EXPECT_EQ("the name of a file is empty", failure(""));
  EXPECT_EQ(folder_.path() + ": not a regular file", failure(folder_.path()));
  EXPECT_EQ("/dev/null: not a regular file", failure("/dev/null"));
  EXPECT_EQ(plain + "/db: Not a directory", failure(plain + "/db"));
  const std::string missing = folder_.path("missing");
  EXPECT_EQ(missing +
                ": cannot create a file in this folder: No such file or "
                "directory",
            failure(missing + "/db"));
  EXPECT_EQ(1U, filesInFolder());
}

TEST_F(SafeFileTest, ReadOnlyFolderIsAnError) {
  ASSERT_EQ(0, ::chmod(folder_.path().c_str(), 0555));
  {
    const Unprivileged user;
    if (!user.bound()) GTEST_SKIP() << "root cannot give up its rights here";
    EXPECT_EQ(folder_.path() +
                  ": cannot create a file in this folder: Permission denied",
              failure(folder_.path("db")));
  }
  ASSERT_EQ(0, ::chmod(folder_.path().c_str(), 0700));
  EXPECT_EQ(0U, filesInFolder());
}

TEST_F(SafeFileTest, TargetThatHasBecomeAFolderIsAnErrorOfTheCommit) {
  {
    SafeFile file(folder_.path("db"));
    std::filesystem::create_directory(folder_.path("db"));
    EXPECT_THROW(file.commit(), ProgramError);
  }
  EXPECT_EQ(1U, filesInFolder());
}

}  // namespace
}  // namespace urldb
