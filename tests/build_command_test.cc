#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "common/file_descriptor.h"
#include "tests/build_fixture.h"
#include "tests/run_program.h"
#include "tests/temporary_folder.h"
#include "tests/terminal.h"
#include "urldb/database_view.h"
#include "urldb/packed_date.h"
#include "urldb/urldb.h"

namespace urldb {
namespace {

TEST_F(BuildCommand, FolderOfListsBecomesADatabaseThatAnswers) {
  folder_.write("lists/news/domains", "example.com\n");
  folder_.write("lists/news/urls", "other.org/news\n");
  folder_.write("lists/sport/ball/domains",
                "\xEF\xBB\xBF"
                "ball.example\r\n");
  const ProgramResult result = build({folder_.path("lists")});
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("", result.err);
  EXPECT_EQ("news", lookup("http://www.example.com:8080/x"));
  EXPECT_EQ("news", lookup("www.other.org/news?today"));
  EXPECT_EQ("-", lookup("other.org/newspaper"));
  EXPECT_EQ("sport/ball", lookup("ball.example"));
  EXPECT_EQ(0, runProgram({kProgram, "check", "-d", db()}).status);
}

TEST_F(BuildCommand, ReportHasARowForEachListAndEachSourceAndAll) {
  folder_.write("lists/news/domains", "a.com\nA.com\n\n# x\nlabel\n");
  folder_.write("lists/news/urls", "a.com/x\n");
  folder_.write("more", "a.com\nsub.a.com\nb.com");
  const ProgramResult result =
      runShell(buildLine() + "lists sport=more 2>/dev/null; echo $?");
  const std::string bytes = std::to_string(folder_.read("db").size());
  EXPECT_EQ(
      "     lines        kept   duplicate     refused  list\n"
      "         6           2           1           1  lists\n"
      "         5           1           1           1    news/domains\n"
      "         1           1           0           0    news/urls\n"
      "         3           3           0           0  sport=more\n"
      "         9           5           1           1  total\n"
      // a.com, sub.a.com and b.com have three keys each, a.com/x has two. Those
      // of sub.a.com are also news, those of a.com/x also sport.
      "db: 11 keys, 2 categories, 5 categories given by covering keys, " +
          bytes + " bytes\n1\n",
      result.out);
}

TEST_F(BuildCommand, RefusedEntriesAreTold) {
  folder_.write("list", "a.com\nlabel\nb.com/\x01\xFFx\nc..d\n");
  const ProgramResult result = runShell(buildLine() + "news=list");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "list:2: single label, neither .tld nor http://label/: \"label\"\n"
      "list:3: control byte %01: \"b.com/%01\xFFx\"\n"
      "list:4: empty label in the host name: \"c..d\"\n",
      result.err);
  EXPECT_EQ("news", lookup("a.com"));
}

TEST_F(BuildCommand, LongRefusedEntryIsShownInPart) {
  const ProgramResult result =
      build({"news=/dev/stdin"}, std::string(10U << 20, 'x') + "\na.com");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("/dev/stdin:1: host name longer than 253 bytes: \"" +
                std::string(512, 'x') + "...\"\n",
            result.err.substr(0, 2000));
}

TEST_F(BuildCommand, RefusedFoldersAreToldAndCounted) {
  folder_.write("lists/a/b/c/domains", "a.com\n");
  folder_.write("lists/a/domains", "a.com\n");
  folder_.write("lists/a/urls/x", "");
  const ProgramResult result = runShell(buildLine() + "lists");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "lists/a/urls: a folder, where a list is expected\n"
      "lists/a/b/c: folders may nest only once\n",
      result.err);
  EXPECT_EQ("a", lookup("a.com"));
  EXPECT_TRUE(holds(
      result.out, "         0           0           0           1    a/b/c\n"));
}

TEST_F(BuildCommand, SourcesOfAllKinds) {
  folder_.write("hosts", "127.0.0.1 localhost\n0.0.0.0 ads.com track.com\n");
  folder_.write("entries", "a.com\tnews,sport/ball\n");
  folder_.write("dump", "#key\nMOC.B/\tnews\n");
  folder_.write("x=y", "c.com\tnews\n");
  const ProgramResult result = runShell(
      buildLine() + "ads=hosts entries dump ./x=y x/y=/dev/stdin", "d.com");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "hosts:1: localhost in a hosts line is that file's own business: "
      "\"localhost\"\n",
      result.err);
  EXPECT_EQ("ads", lookup("x.track.com"));
  EXPECT_EQ("news,sport/ball", lookup("a.com"));
  EXPECT_EQ("news", lookup("b.com/x"));
  EXPECT_EQ("-", lookup("www.b.com"));
  EXPECT_EQ("news", lookup("c.com"));
  EXPECT_EQ("x/y", lookup("d.com"));
}

TEST_F(BuildCommand, DumpBuildsTheSameAnswers) {
  folder_.write("entries",
                "a.com\tnews,\xE3\x83\x86\xE3\x82\xB9\xE3\x83\x88/ball\n"
                "a.com/%E3%83%86 #\tx\n"
                "a.com/%E3%83%86\tx y,#z\n"
                ".com\tlast%,a\n"
                "a.com/\xA5\xC6\tb\n");
  ASSERT_EQ(1, build({folder_.path("entries")}).status);
  const std::string first = dump();
  folder_.write("dump", first);
  ASSERT_EQ(0, build({folder_.path("dump")}).status);
  EXPECT_EQ(first, dump());
  EXPECT_TRUE(holds(first,
                    "MOC.A/%25E3%2583%2586\tx%20y,#z,news,"
                    "%E3%83%86%E3%82%B9%E3%83%88/ball,last%25,a\n"))
      << first;
}

TEST_F(BuildCommand, HierarchyFilePutsCategoriesUnderTheirLevel1) {
  folder_.write("hierarchy", "# c\nsport\tball\nball\ndance\tball\n");
  const ProgramResult result =
      runShell(buildLine() + "--hierarchy hierarchy ball=/dev/stdin", "a.com");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "hierarchy:3: no tab between level 1 and level 2: \"ball\"\n"
      "hierarchy:4: stands under sport already: \"dance%09ball\"\n",
      result.err);
  EXPECT_EQ("sport/ball", lookup("a.com"));
}

TEST_F(BuildCommand, HierarchyTakesTheKeysOfTheBaseIn) {
  folder_.write("first",
                "a.com\tball,news\nsub.a.com/x\tball\n"
                "b.com\tdance/ball,golf\n");
  ASSERT_EQ(0, build({folder_.path("first")}).status);
  const auto categories = [this] {
    return runProgram({kProgram, "categories", "-d", db()}).out;
  };
  const std::string names = categories().substr(0, categories().rfind('#'));
  folder_.write("hierarchy", "sport\tball\nsport\tgolf\n");
  const ProgramResult result =
      runShell(buildLine() + "--base db --hierarchy hierarchy ball=/dev/stdin",
               "c.com\na.com");
  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_EQ("sport/ball,news", lookup("a.com"));
  EXPECT_EQ("sport/ball,news", lookup("sub.a.com/x"));
  EXPECT_EQ("dance/ball,sport/golf", lookup("b.com"));
  EXPECT_EQ("sport/ball", lookup("c.com"));
  // Of the entries, a.com gives nothing new.
  EXPECT_TRUE(holds(result.out, "1           1           0  ball=/dev/stdin"))
      << result.out;
  // IDs are as they were, and pairs that no longer occur are gone.
  EXPECT_EQ(0U, categories().find(names)) << categories();
  EXPECT_TRUE(holds(categories(), "dance\tball\n"));
  EXPECT_TRUE(holds(categories(), "sport\tball\nsport\tgolf\n"));
  EXPECT_EQ(0, runProgram({kProgram, "check", "-d", db()}).status);
}

TEST_F(BuildCommand, HierarchyOfOneDatabaseServesTheNext) {
  folder_.write("dump",
                "#key\nMOC.A/\t#1%20#%2C/%20%21%20,%2F%25/!x,!y/#z,%23/q\n");
  ASSERT_EQ(0, build({folder_.path("dump")}).status);
  folder_.write("plain", "#key\nMOC.A/\t%20%21%20,!x,#z,q\n");
  const ProgramResult next =
      runShell("cd " + folder_.path() + " && " + kProgram +
               " categories -d db | sed -n '/^#hierarchy/,$p' > levels && " +
               kProgram + " build -o next --hierarchy levels plain && " +
               kProgram + " dump -d next");
  EXPECT_EQ("", next.err);
  EXPECT_TRUE(
      holds(next.out, "MOC.A/\t#1%20#%2C/%20!%20,%2F%25/!x,!y/#z,#/q\n"))
      << next.out;
}

TEST_F(BuildCommand, BaseMayBeTheFileItself) {
  ASSERT_EQ(0, build({"news=/dev/stdin"}, "a.com\n").status);
  const ProgramResult result =
      build({"--base", db(), "sport=/dev/stdin"}, "a.com\nsub.a.com\n");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("news,sport", lookup("a.com"));
  EXPECT_EQ("sport,news", lookup("sub.a.com"));
  for (const char* list : {"n0.com\n", "n1.com\n", "n2.com\n"})
    ASSERT_EQ(0, build({"--base", db(), "more=/dev/stdin"}, list).status);
  EXPECT_EQ("news,sport", lookup("a.com"));
  EXPECT_EQ("more", lookup("n0.com"));
  EXPECT_EQ(0, runProgram({kProgram, "check", "-d", db()}).status);
}

TEST_F(BuildCommand, FreshnessDateIsSetAnew) {
  const auto dateOf = [this] {
    URLDB opened;
    EXPECT_EQ(2, opened.openFile(db().c_str(), nullptr, 0, true));
    return unpackDate(viewOf(opened).freshDate);
  };
  // The date of the test may change while it runs.
  const auto expectIn = [&](int days) {
    constexpr std::time_t kDay = 24 * 60 * 60;
    const std::time_t now = std::time(nullptr);
    const FreshDate date = dateOf();
    std::time_t earliest = now + (days - 1) * kDay;
    std::time_t latest = now + (days + 1) * kDay;
    EXPECT_LE(localDate(earliest), date) << days;
    EXPECT_GE(localDate(latest), date) << days;
  };
  ASSERT_EQ(0, build({"a=/dev/stdin"}, "a.com").status);
  expectIn(31);
  ASSERT_EQ(0,
            build({"--fresh-days", "36500", "a=/dev/stdin"}, "a.com").status);
  expectIn(36500);
  // Nothing new in it but the date.
  ASSERT_EQ(
      0, build({"--base", db(), "--fresh-days", "7", "a=/dev/stdin"}, "a.com")
             .status);
  expectIn(7);
  ASSERT_EQ(0, build({"--base", db(), "a=/dev/stdin"}, "a.com").status);
  expectIn(31);
}

TEST_F(BuildCommand, WithoutAUsableEntryTheOldDatabaseStays) {
  folder_.write("lists/README", "");
  folder_.write("list", "label\n");
  makeOld();
  constexpr const char* kNone =
      "urldb: no usable entry: db is left as it was\n";
  const struct {
    const char* sources;
    std::string messages;
  } cases[] = {
      {"a=/dev/stdin", kNone},
      {"lists",
       std::string("urldb: lists: no folder in it holds domains or urls\n") +
           kNone},
      {"a=list",
       std::string("list:1: single label, neither .tld nor http://label/: "
                   "\"label\"\n") +
           kNone},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.sources);
    const ProgramResult result =
        runShell(buildLine() + c.sources, "# nothing\n");
    EXPECT_EQ(2, result.status);
    EXPECT_EQ(c.messages, result.err);
    EXPECT_EQ("", result.out);
    expectOldUntouched();
  }
}

TEST_F(BuildCommand, WithoutAUsableEntryTheKeysOfABaseAreEnough) {
  makeOld();
  const ProgramResult result =
      runShell(buildLine() + "--base db a=/dev/stdin", "# nothing\n");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("", result.err);
  EXPECT_EQ("old", lookup("old.com"));
}

TEST_F(BuildCommand, WrongUsageIsStatus2) {
  folder_.write("list", "a.com\n");
  makeOld();
  for (const char* arguments :
       {"", "--fresh-days -1 a=list", "--fresh-days 36501 a=list",
        "--fresh-days x a=list", "a/b/c=list", "=list", "--nothing a=list",
        "--fresh-days 0x10 a=list", "--fresh-days '' a=list", "--base"}) {
    SCOPED_TRACE(arguments);
    const ProgramResult result = runShell(buildLine() + arguments);
    EXPECT_EQ(2, result.status);
    EXPECT_EQ("", result.out);
    EXPECT_EQ("urldb: ", result.err.substr(0, 7));
    expectOldUntouched();
  }
  EXPECT_EQ(2, runProgram({kProgram, "build", "a=list"}).status);
  const ProgramResult help = runProgram({kProgram, "build", "--help"});
  EXPECT_EQ(0, help.status);
  EXPECT_FALSE(holds(help.out, "INT")) << help.out;
  EXPECT_TRUE(holds(help.out, " SOURCE...")) << help.out;
  EXPECT_TRUE(holds(help.out, "\nExamples:\n  urldb build -o ")) << help.out;
}

TEST_F(BuildCommand, FreshDaysAreDecimal) {
  ASSERT_EQ(0, build({"--fresh-days", "010", "a=/dev/stdin"}, "a.com").status);
  const std::string ten = folder_.read("db");
  ASSERT_EQ(0, build({"--fresh-days", "10", "a=/dev/stdin"}, "a.com").status);
  URLDB opened;
  ASSERT_EQ(2, opened.openFile(db().c_str(), nullptr, 0, true));
  const uint32_t date = viewOf(opened).freshDate;
  folder_.write("db", ten);
  URLDB other;
  ASSERT_EQ(2, other.openFile(db().c_str(), nullptr, 0, true));
  EXPECT_EQ(date, viewOf(other).freshDate);
}

TEST_F(BuildCommand, SourceInBracketsIsOneSource) {
  folder_.write("[a,b]", "a.com\tnews\n");
  folder_.write("a", "b.com\tnews\n");
  folder_.write("b", "c.com\tnews\n");
  const ProgramResult result = runShell(buildLine() + "'[a,b]' a");
  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_EQ("news", lookup("a.com"));
  EXPECT_EQ("news", lookup("b.com"));
  EXPECT_EQ("-", lookup("c.com"));
}

TEST_F(BuildCommand, EmptyFileNameIsNamedAsOne) {
  folder_.write("list", "a.com\n");
  const std::string from = "cd " + folder_.path() + " && " + kProgram;
  for (const char* arguments :
       {" build -o '' a=list", " build -o db ''",
        " build -o db a=", " build -o db --base '' a=list",
        " build -o db --hierarchy '' a=list", " info -d ''"}) {
    SCOPED_TRACE(arguments);
    const ProgramResult result = runShell(from + arguments);
    EXPECT_EQ(2, result.status);
    EXPECT_EQ("urldb: the name of a file is empty\n", result.err);
  }
}

TEST_F(BuildCommand, BaseThatIsNoRegularFileIsStatus2) {
  ASSERT_EQ(0, ::mkfifo(folder_.path("pipe").c_str(), 0600));
  makeOld();
  for (const char* base : {"pipe", ".", "/dev/null"}) {
    SCOPED_TRACE(base);
    const ProgramResult result =
        runShell(buildLine() + "a=/dev/stdin --base " + base, "a.com");
    EXPECT_EQ(2, result.status);
    EXPECT_EQ(std::string("urldb: ") + base + ": not a regular file\n",
              result.err);
    expectOldUntouched();
  }
}

TEST_F(BuildCommand, FilesThatCannotBeReadAreStatus2) {
  makeOld();
  const struct {
    const char* arguments;
    const char* message;
  } cases[] = {
      {"no-such-file", "urldb: no-such-file: No such file or directory\n"},
      {"a=no-such-file", "urldb: no-such-file: No such file or directory\n"},
      {"a=.", "urldb: .: a folder, where a list is expected\n"},
      {"a=/dev/null",
       "urldb: /dev/null: neither a file nor a pipe, where a list is "
       "expected\n"},
      {"--hierarchy nowhere a=/dev/stdin",
       "urldb: nowhere: No such file or directory\n"},
      {"--base nowhere a=/dev/stdin",
       "urldb: nowhere: No such file or directory\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.arguments);
    const ProgramResult result = runShell(buildLine() + c.arguments, "a.com");
    EXPECT_EQ(2, result.status);
    EXPECT_EQ(c.message, result.err);
    EXPECT_EQ("", result.out);
    expectOldUntouched();
  }
}

TEST_F(BuildCommand, TargetThatCannotBeWrittenShowsBeforeListsAreRead) {
  // Nobody writes to this pipe: reading it would never end.
  ASSERT_EQ(0, ::mkfifo(folder_.path("pipe").c_str(), 0600));
  folder_.write("plain", "");
  for (const char* target : {"missing/db", "plain/db", "/dev/null", "."}) {
    SCOPED_TRACE(target);
    const ProgramResult result =
        runShell("cd " + folder_.path() + " && exec " + kProgram +
                 " build a=pipe -o " + target);
    EXPECT_EQ(2, result.status);
    EXPECT_EQ("urldb: ", result.err.substr(0, 7));
    EXPECT_TRUE(holds(result.err, "\n"));
  }
  expectNoTemporaryFile();
}

TEST_F(BuildCommand, FullDiskLeavesTheOldDatabase) {
  makeOld();
  std::string list;
  for (int i = 0; i < 20000; ++i)
    list += "host" + std::to_string(i * 7919) + ".com\n";
  // In blocks of 512 or 1024 bytes: far below the database, at several places
  // of it.
  for (const char* blocks : {"0", "1", "40", "200"}) {
    SCOPED_TRACE(blocks);
    const ProgramResult result =
        runShell(std::string("ulimit -f ") + blocks + "; " + buildLine() +
                     "a=/dev/stdin",
                 list);
    EXPECT_EQ(2, result.status);
    EXPECT_EQ("urldb: db: Can't Write File; is there room on the disk?\n",
              result.err);
    expectOldUntouched();
  }
}

TEST_F(BuildCommand, UnsoundBaseIsStatus2) {
  ASSERT_EQ(0, build({"news=/dev/stdin"}, "a.com\nb.com\nb.com/x").status);
  const std::string good = folder_.read("db");
  makeOld();
  const auto tryBase = [this](const std::string& bytes) {
    folder_.write("base", bytes);
    const ProgramResult result =
        runShell(buildLine() + "--base base a=/dev/stdin", "c.com");
    if (result.status == 2) expectOldUntouched();
    return result;
  };
  // The last list of the repository: a position of a list that is free.
  std::string damaged = good;
  damaged.replace(damaged.size() - 4, 4, "\xFF\xFF\xFF\xFF");
  ProgramResult result = tryBase(damaged);
  EXPECT_EQ(2, result.status);
  EXPECT_TRUE(holds(result.err, "\nurldb: base: not a sound database\n"))
      << result.err;
  EXPECT_EQ("base: ", result.err.substr(0, 6));

  result = tryBase("no database at all");
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("urldb: base: ", result.err.substr(0, 13));
  // Whatever byte is wrong, the outcome is a sound database or none.
  for (std::size_t i = 0; i < good.size(); i += 7) {
    SCOPED_TRACE(i);
    damaged = good;
    damaged[i] = static_cast<char>(damaged[i] ^ 0x55);
    result = tryBase(damaged);
    ASSERT_TRUE(result.status == 0 || result.status == 2) << result.err;
    if (result.status == 2) continue;
    ASSERT_EQ(0, runProgram({kProgram, "check", "-d", db()}).status);
    folder_.write("db", old_);
  }
  for (std::size_t size = 0; size < good.size(); size += 97) {
    SCOPED_TRACE(size);
    EXPECT_EQ(2, tryBase(good.substr(0, size)).status);
  }
}

TEST_F(BuildCommand, FullNameTableIsStatus2) {
  makeOld();
  std::string entries;
  for (int i = 0; i <= 32767; ++i)
    entries += "a.com\tname" + std::to_string(i) + "\n";
  folder_.write("entries", entries);
  const ProgramResult result = runShell(buildLine() + "entries");
  EXPECT_EQ(2, result.status);
  EXPECT_EQ(
      "urldb: category name32767: a database has room for 32767 category "
      "names, and all are taken\n",
      result.err);
  expectOldUntouched();
}

TEST_F(BuildCommand, SymbolicLinkIsWrittenThrough) {
  folder_.write("files/real", "");
  std::filesystem::create_symlink("files/real", db());
  ASSERT_EQ(0, build({"news=/dev/stdin"}, "a.com").status);
  EXPECT_TRUE(std::filesystem::is_symlink(db()));
  EXPECT_FALSE(folder_.read("files/real").empty());
  EXPECT_EQ("news", lookup("a.com"));
}

TEST_F(BuildCommand, ReportThatNobodyReadsChangesNothing) {
  folder_.write("list", "a.com\n");
  ProgramResult result = runShell(buildLine() + "news=list >&-");
  EXPECT_EQ(0, result.status);
  EXPECT_TRUE(holds(result.err, "urldb: the report: ")) << result.err;
  EXPECT_EQ("news", lookup("a.com"));
  result = runShell(buildLine() + "sport=list > /dev/full");
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("sport", lookup("a.com"));
}

TEST_F(BuildCommand, RefusalsThatNobodyReadsChangeNothing) {
  folder_.write("list", "a.com\nlabel\n");
  for (const char* to : {"2>&-", "2>/dev/full"}) {
    SCOPED_TRACE(to);
    EXPECT_EQ(1, runShell(buildLine() + "news=list " + to).status);
    EXPECT_EQ("news", lookup("a.com"));
    std::string labels = "b.com\n";  // more refusals than are collected
    for (int i = 0; i < 5000; ++i) labels += "label\n";
    EXPECT_EQ(1,
              runShell(buildLine() + "sport=/dev/stdin " + to, labels).status);
    EXPECT_EQ("sport", lookup("b.com"));
    // Nor is the reason of an end covered by them.
    EXPECT_EQ(2, runShell(buildLine() + "news=list nowhere " + to).status);
  }
}

TEST_F(BuildCommand, ProgressIsShownOnATerminalOnly) {
  ASSERT_EQ(0, ::mkfifo(folder_.path("pipe").c_str(), 0600));
  Terminal terminal;
  RunningBuild build(folder_, "pipe", terminal.fd());
  terminal.closeProgramSide();
  {
    const FileDescriptor writer(
        ::open(folder_.path("pipe").c_str(), O_WRONLY | O_CLOEXEC));
    ASSERT_EQ(6, ::write(writer.get(), "a.com\n", 6));
  }
  const std::string shown = terminal.waitForEnd();
  // Each phase shows, however short it is.
  for (const char* phase :
       {"reading ", "sorting", "adding keys: 0 of 3", "writing", "checking"})
    EXPECT_TRUE(holds(shown, std::string("\r\x1B[K") + phase)) << shown;
  // It is gone before the report comes.
  const std::size_t report = shown.find("     lines");
  ASSERT_NE(std::string::npos, report) << shown;
  EXPECT_EQ("\r\x1B[K", shown.substr(report - 4, 4));
}

// Runs a command as an ordinary user, for whom file permissions count.
ProgramResult runAsUser(const std::vector<std::string>& command) {
  if (::geteuid() != 0) return runProgram(command);
  // The user of the child only: threads and files of the test stay root's.
  std::vector<std::string> line = {"setpriv", "--reuid=65534", "--regid=65534",
                                   "--clear-groups", "--"};
  line.insert(line.end(), command.begin(), command.end());
  return runProgram(line);
}

TEST_F(BuildCommand, ReadOnlyFolderLeavesTheOldDatabase) {
  namespace fs = std::filesystem;
  if (runAsUser({kProgram, "--version"}).status != 0)
    GTEST_SKIP() << "no ordinary user may run the program here";
  const std::string list = folder_.write("list", "a.com\n");
  makeOld();
  fs::permissions(folder_.path(), static_cast<fs::perms>(0555));
  const ProgramResult result =
      runAsUser({kProgram, "build", "-o", db(), "a=" + list});
  fs::permissions(folder_.path(), static_cast<fs::perms>(0755));
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("urldb: " + folder_.path() +
                ": cannot create a file in this folder: Permission denied\n",
            result.err);
  EXPECT_EQ("", result.out);
  expectOldUntouched();
}

TEST_F(BuildCommand, OtherCommandsMeetALimitOnFileSizesAsAnError) {
  std::string list;
  for (int i = 0; i < 2000; ++i) list += "host" + std::to_string(i) + ".com\n";
  ASSERT_EQ(0, build({"a=/dev/stdin"}, list).status);
  const ProgramResult result =
      runShell("ulimit -f 1; " + std::string(kProgram) + " dump -d " + db() +
               " > " + folder_.path("dump"));
  EXPECT_EQ(2, result.status);
  EXPECT_EQ("urldb: standard output: File too large\n", result.err);
}

}  // namespace
}  // namespace urldb
