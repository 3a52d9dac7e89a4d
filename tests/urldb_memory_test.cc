// What becomes of a database when memory runs out: the n-th allocation fails,
// for n = 1, 2, ... until the operation succeeds.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "tests/failing_new.h"
#include "tests/memory_file.h"
#include "tests/thrown_by.h"
#include "tests/tiny_database.h"
#include "urldb/database_check.h"
#include "urldb/database_view.h"
#include "urldb/urldb.h"

namespace urldb {
namespace {

// Runs `call` with its n-th allocation and all after it failing, for n from 1
// until it succeeds. Each failure must be code 1, and `afterwards` sees what it
// left. Returns how many there were.
long failEachAllocation(const std::function<void()>& call,
                        const std::function<void()>& afterwards) {
  for (long n = 1; n < 100000; ++n) {
    int code = 0;
    {
      const FailingNew failing(n);
      code = codeThrownBy(call);
    }
    if (code == 0) return n - 1;
    EXPECT_EQ(1, code) << "allocation " << n;
    afterwards();
  }
  ADD_FAILURE() << "never succeeds";
  return 0;
}

TEST(URLDBMemory, FailedOpeningKeepsWhatWasHeld) {
  const MemoryFile file(TinyDatabase::bytes());
  const std::string path = file.path();
  TinyDatabase tiny;
  const long failures = failEachAllocation(
      [&] { tiny.db.openFile(path.c_str(), &tiny.names, 100, true); },
      [&] {
        EXPECT_STREQ("", viewOf(tiny.db).fileName);
        EXPECT_EQ(4, viewOf(tiny.db).urlID);
        EXPECT_TRUE(checkDatabase(tiny.db, 10).empty());
      });
  EXPECT_LT(5, failures);
  EXPECT_EQ(path, viewOf(tiny.db).fileName);
  EXPECT_EQ(5, viewOf(tiny.db).urlID);
}

TEST(URLDBMemory, FailedNamesChangeNothing) {
  CategoryNames names;
  EXPECT_LT(
      0, failEachAllocation([&] { names.addCateogry("one"); },
                            [&] { EXPECT_EQ(0U, names.view().names.size()); }));
  EXPECT_STREQ("one", names.getNames(1));
  const std::string longName(100000, 'x');
  EXPECT_LT(
      0, failEachAllocation([&] { names.addCateogry(longName.c_str()); },
                            [&] { EXPECT_EQ(1U, names.view().names.size()); }));
  EXPECT_LT(0, failEachAllocation([&] { names.setHierarchical(pairOf(1, 2)); },
                                  [] {}));
  const auto branches = names.view().branches();
  ASSERT_EQ(1U, branches.size());
  EXPECT_EQ(std::vector<int>{2}, branches[0].level2);
}

TEST(URLDBMemory, FailedAddLeavesTheOtherKeys) {
  auto tiny = std::make_unique<TinyDatabase>();
  const std::string key(100000, 'k');
  int id = 0;
  const long failures = failEachAllocation(
      [&] { id = tiny->db.add(key.c_str(), pairOf(1, 1)); },
      [&] {
        EXPECT_EQ(3U, valuesOf(tiny->db.search("ab")).size());
        EXPECT_EQ(2U, valuesOf(tiny->db.search("ac")).size());
        EXPECT_EQ(1U, valuesOf(tiny->db.search("b")).size());
        tiny = std::make_unique<TinyDatabase>();
      });
  EXPECT_LT(0, failures);
  EXPECT_EQ(4, id);
  EXPECT_TRUE(checkDatabase(tiny->db, 10).empty());
}

TEST(URLDBMemory, FailedSearchIsCode1) {
  TinyDatabase tiny;
  std::unique_ptr<int[]> list;
  EXPECT_LT(
      0, failEachAllocation([&] { list.reset(tiny.db.search("ab")); }, [] {}));
  EXPECT_EQ(3, list[0]);
}

TEST(URLDBMemory, FailedCheckAndWriteLeaveTheDatabaseUsable) {
  const MemoryFile file;
  const std::string path = file.path();
  TinyDatabase tiny;
  EXPECT_LT(0, failEachAllocation([&] { tiny.db.checkData(); }, [] {}));
  EXPECT_LT(0, failEachAllocation(
                   [&] { tiny.db.writeFile(path.c_str()); },
                   [&] { EXPECT_TRUE(checkDatabase(tiny.db, 10).empty()); }));
  EXPECT_LT(0, failEachAllocation([&] { checkDatabase(tiny.db, 10); }, [] {}));
  URLDB db;
  EXPECT_EQ(2, db.openFile(path.c_str(), nullptr, 0, true));
  EXPECT_EQ(3U, valuesOf(db.search("ab")).size());
}

}  // namespace
}  // namespace urldb
