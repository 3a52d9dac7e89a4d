#include "tools/source_tree.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/temporary_folder.h"
#include "tests/unprivileged.h"
#include "tools/program_error.h"

namespace urldb {
namespace {

using Lines = std::vector<std::string>;

class SourceTree : public testing::Test {
 protected:
  void link(const std::string& target, const std::string& name) {
    std::filesystem::create_symlink(target, folder_.path(name));
  }

  void makeFolder(const std::string& name) {
    std::filesystem::create_directories(folder_.path(name));
  }

  // "category: name" for each list that the folder gives.
  Lines lists() {
    Lines lines;
    for (const ListFile& list : source().lists) {
      EXPECT_EQ(folder_.path(list.shownName), list.path);
      EXPECT_TRUE(list.category.has_value());
      const Category category = list.category.value_or(Category{});
      lines.push_back((category.level1.empty() ? "" : category.level1 + "/") +
                      category.name + ": " + list.shownName);
    }
    return lines;
  }

  // "name: reason" for each path that it refuses.
  Lines refusals() {
    Lines lines;
    for (const RefusedPath& refused : source().refused) {
      EXPECT_EQ(folder_.path(refused.shownName), refused.path);
      lines.push_back(refused.shownName + ": " + refused.reason);
    }
    return lines;
  }

  ListSource source() { return findLists(folder_.path()); }

  // Why an argument cannot be used.
  static std::string failure(const std::string& argument) {
    try {
      findLists(argument);
      return {};
    } catch (const ProgramError& error) {
      return error.what();
    }
  }

  TemporaryFolder folder_;
};

TEST_F(SourceTree, CategoriesComeInOrderAndDomainsBeforeUrls) {
  for (const char* name : {"b/urls", "b/domains", "a/urls", "B/domains"})
    folder_.write(name, "");
  EXPECT_EQ((Lines{"B: B/domains", "a: a/urls", "b: b/domains", "b: b/urls"}),
            lists());
  EXPECT_EQ(Lines{}, refusals());
  EXPECT_TRUE(source().folder);
}

TEST_F(SourceTree, FoldersMayNestOnceForPairs) {
  for (const char* name : {"sport/golf/urls", "sport/ball/domains",
                           "sport/ball/urls", "sport/domains"})
    folder_.write(name, "");
  EXPECT_EQ(
      (Lines{"sport: sport/domains", "sport/ball: sport/ball/domains",
             "sport/ball: sport/ball/urls", "sport/golf: sport/golf/urls"}),
      lists());
}

TEST_F(SourceTree, DeeperFoldersAreRefused) {
  folder_.write("sport/ball/foot/domains", "");
  makeFolder("sport/ball/.hidden");
  EXPECT_EQ(Lines{}, lists());
  EXPECT_EQ(Lines{"sport/ball/foot: folders may nest only once"}, refusals());
}

TEST_F(SourceTree, OtherFilesAreLeftAlone) {
  for (const char* name : {"README", "a/expressions", "a/domains.old",
                           "a/b/usage", ".git/domains", "domains", "a/urls"})
    folder_.write(name, "");
  link("README", "link");
  link("../README", "a/link");
  EXPECT_EQ(Lines{"a: a/urls"}, lists());
  EXPECT_EQ(Lines{}, refusals());
}

TEST_F(SourceTree, FolderWithoutListsGivesNothing) {
  makeFolder("a/b");
  EXPECT_EQ(Lines{}, lists());
  EXPECT_EQ(Lines{}, refusals());
}

TEST_F(SourceTree, NamesThatAreNoCategoryAreRefused) {
  folder_.write("\xFF/domains", "");
  folder_.write("a/\xFF/domains", "");
  EXPECT_EQ(Lines{}, lists());
  EXPECT_EQ((Lines{"a/\xFF: the folder's name is no usable category",
                   "\xFF: the folder's name is no usable category"}),
            refusals());
}

TEST_F(SourceTree, SymbolicLinksAreFollowedOnce) {
  folder_.write("publicite/domains", "");
  link("publicite", "ads");
  link("../publicite/domains", "publicite/urls");
  folder_.write("sport/domains", "");
  link("../publicite", "sport/pub");
  EXPECT_EQ((Lines{"ads: ads/domains", "publicite: publicite/domains",
                   "publicite: publicite/urls", "sport: sport/domains",
                   "sport/pub: sport/pub/domains"}),
            lists());
  EXPECT_EQ((Lines{"ads/urls: a symbolic link behind another one",
                   "sport/pub/urls: a symbolic link behind another one"}),
            refusals());
}

TEST_F(SourceTree, LinkGivenAsSourceCountsAsNone) {
  folder_.write("lists/a/domains", "");
  link("a", "lists/b");
  link("lists", "current");
  EXPECT_EQ(2U, findLists(folder_.path("current")).lists.size());
  EXPECT_TRUE(findLists(folder_.path("current")).refused.empty());
}

TEST_F(SourceTree, LoopsOfLinksEnd) {
  folder_.write("a/domains", "");
  link("..", "a/up");
  link("self", "self");
  link(".", "dot");
  EXPECT_EQ((Lines{"a: a/domains", "dot/a: dot/a/domains"}), lists());
  EXPECT_EQ((Lines{"a/up/a: folders may nest only once",
                   "a/up/dot: a symbolic link behind another one",
                   "a/up/self: Too many levels of symbolic links",
                   "dot/a/up: a symbolic link behind another one",
                   "dot/dot: a symbolic link behind another one",
                   "dot/self: Too many levels of symbolic links",
                   "self: Too many levels of symbolic links"}),
            refusals());
}

TEST_F(SourceTree, LinkThatLeadsNowhereIsRefused) {
  link("nowhere", "a");
  EXPECT_EQ(Lines{"a: a symbolic link that leads nowhere"}, refusals());
}

TEST_F(SourceTree, CategoryAndFile) {
  const std::string file = folder_.write("a=b", "");
  const ListSource plain = findLists("sport=" + file);
  ASSERT_EQ(1U, plain.lists.size());
  EXPECT_EQ(file, plain.lists[0].path);
  EXPECT_EQ("sport=" + file, plain.lists[0].shownName);
  EXPECT_EQ("", plain.lists[0].category->level1);
  EXPECT_EQ("sport", plain.lists[0].category->name);
  EXPECT_FALSE(plain.folder);

  const ListSource pair = findLists("sport/ball=" + file);
  EXPECT_EQ("sport", pair.lists.at(0).category->level1);
  EXPECT_EQ("ball", pair.lists.at(0).category->name);
}

TEST_F(SourceTree, PathThatHoldsEqualsSignsIsKnownByItsBeginning) {
  const std::string file = folder_.write("a=b", "");
  EXPECT_FALSE(findLists(file).lists.at(0).category.has_value());
  EXPECT_EQ("./no=file: No such file or directory", failure("./no=file"));
  EXPECT_EQ("../no=file: No such file or directory", failure("../no=file"));
}

TEST_F(SourceTree, UnusableCategoryIsAnError) {
  const std::string file = folder_.write("list", "");
  for (const char* name : {"", "/", "a/", "/a", "a/b/c", "a\tb", "\xFF"}) {
    SCOPED_TRACE(name);
    if (name[0] == '/') continue;  // a path
    EXPECT_NE(std::string::npos,
              failure(std::string(name) + "=" + file)
                  .find("' is no usable category; give NAME or"));
  }
}

TEST_F(SourceTree, WhatIsNoListIsAnError) {
  makeFolder("folder");
  const std::string pipe = folder_.path("pipe");
  ASSERT_EQ(0, ::mkfifo(pipe.c_str(), 0600));
  const std::string folder = folder_.path("folder");
  EXPECT_EQ(folder + ": a folder, where a list is expected",
            failure("a=" + folder));
  EXPECT_EQ("/dev/null: neither a file nor a pipe, where a list is expected",
            failure("a=/dev/null"));
  EXPECT_EQ("no-such-file: No such file or directory", failure("no-such-file"));
  EXPECT_EQ("no-such-file: No such file or directory",
            failure("a=no-such-file"));
  EXPECT_EQ("", failure("a=" + pipe));
  EXPECT_EQ("", failure("a=/dev/stdin"));
}

TEST_F(SourceTree, WhatHasTheNameOfAListAndIsNoneIsRefused) {
  makeFolder("a/domains");
  folder_.write("a/urls", "");
  makeFolder("b");
  ASSERT_EQ(0, ::mkfifo(folder_.path("b/domains").c_str(), 0600));
  link("nowhere", "b/urls");
  makeFolder("c");
  link("/dev/null", "c/domains");
  link("urls", "c/urls");
  EXPECT_EQ(Lines{"a: a/urls"}, lists());
  EXPECT_EQ((Lines{"a/domains: a folder, where a list is expected",
                   "b/domains: a pipe, where a list file is expected",
                   "b/urls: a symbolic link that leads nowhere",
                   "c/domains: neither a file nor a pipe, where a list is "
                   "expected",
                   "c/urls: Too many levels of symbolic links"}),
            refusals());
}

TEST_F(SourceTree, FolderOfListsBehindALinkIsRefusedAsAList) {
  folder_.write("domains/x", "");
  folder_.write("lists/a/domains", "");
  link("..", "lists/up");
  const ListSource source = findLists(folder_.path("lists"));
  Lines refused;
  for (const RefusedPath& path : source.refused)
    refused.push_back(path.shownName + ": " + path.reason);
  EXPECT_EQ((Lines{"up/domains: a folder, where a list is expected",
                   "up/lists/a: folders may nest only once",
                   "up/lists/up: a symbolic link behind another one"}),
            refused);
  ASSERT_EQ(1U, source.lists.size());
  EXPECT_EQ("a/domains", source.lists[0].shownName);
}

TEST_F(SourceTree, EmptyNameIsAnError) {
  EXPECT_EQ("the name of a file is empty", failure(""));
  EXPECT_EQ("the name of a file is empty", failure("a="));
}

TEST_F(SourceTree, UnreadableListAndFolderAreErrors) {
  const std::string list = folder_.write("a/domains", "");
  const std::string folder = folder_.path("a");
  const ListFile file = source().lists.at(0);
  ASSERT_EQ(0, ::chmod(list.c_str(), 0));
  ASSERT_EQ(0, ::chmod(folder_.path().c_str(), 0755));
  {
    const Unprivileged user;
    if (!user.bound()) GTEST_SKIP() << "root cannot give up its rights here";
    try {
      openList(file);
      ADD_FAILURE() << "an unreadable list was opened";
    } catch (const ProgramError& error) {
      EXPECT_EQ(list + ": Permission denied", std::string(error.what()));
    }
  }
  ASSERT_EQ(0, ::chmod(folder.c_str(), 0));
  {
    const Unprivileged user;
    EXPECT_EQ(folder + ": Permission denied", failure(folder_.path()));
  }
  ASSERT_EQ(0, ::chmod(folder.c_str(), 0700));
}

TEST_F(SourceTree, OpenedListIsReadFromItsStart) {
  const std::string path = folder_.write("list", "a.com");
  const FileDescriptor file = openList(findLists(path).lists.at(0));
  char bytes[8] = {};
  EXPECT_EQ(5, ::read(file.get(), bytes, sizeof bytes));
  EXPECT_STREQ("a.com", bytes);
}

}  // namespace
}  // namespace urldb
