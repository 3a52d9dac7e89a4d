#include <fcntl.h>
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "common/file_descriptor.h"
#include "tests/temporary_folder.h"
#include "tests/thrown_by.h"
#include "tests/tiny_database.h"
#include "urldb/database_view.h"
#include "urldb/urldb.h"

namespace urldb {
namespace {

using Positions = std::vector<int32_t>;

// A database opened for building, whose repository the tests fill by URL ID.
class URLDBRepository : public testing::Test {
 protected:
  URLDBRepository() { open(100); }
  void open(int queueSize) { db_.openFile("x", &names_, queueSize, false); }

  // Entries `first` to `last` of the repository.
  Positions entries(int first, int last) const {
    const auto all = viewOf(db_).repository;
    return {all.begin() + first, all.begin() + last + 1};
  }
  int indexOf(int urlID) const {
    return viewOf(db_).urlIndex[static_cast<std::size_t>(urlID)];
  }
  Values list(int urlID) const { return valuesOf(db_.searchRepository(urlID)); }

  std::string written() {
    const FileDescriptor fd(::creat(folder_.path("out").c_str(), 0600));
    db_.writeURL2CateIDs(fd.get());
    return folder_.read("out");
  }
  void read(std::string_view bytes, RingQueue<int>* queue) {
    const FileDescriptor fd(
        ::open(folder_.write("in", bytes).c_str(), O_RDONLY));
    db_.readURL2CateIDs(fd.get(), queue);
  }

  TemporaryFolder folder_;
  CategoryNames names_;
  URLDB db_;
};

TEST_F(URLDBRepository, OneValueIsOneEntryWithoutTheMark) {
  EXPECT_EQ(7, db_.addRepository(7, 0x10002));
  EXPECT_EQ(1, indexOf(7));
  EXPECT_EQ((Positions{-1, 0x10002, -1}), entries(0, 2));
  EXPECT_EQ(Values{0x10002}, list(7));
  EXPECT_EQ(0, viewOf(db_).maxCategoryChain);
}

TEST_F(URLDBRepository, ThreeValuesLieInARow) {
  for (const int value : {0x10001, 0x20002, 0x30003})
    db_.addRepository(1, value);
  const int start = indexOf(1);
  EXPECT_EQ((Positions{0x18001, 0x28002, 0x30003}), entries(start, start + 2));
  EXPECT_EQ((Values{0x10001, 0x20002, 0x30003}), list(1));
  EXPECT_EQ(3, viewOf(db_).maxCategoryChain);
}

TEST_F(URLDBRepository, KnownValueChangesNothing) {
  db_.addRepository(1, 5);
  db_.addRepository(1, 6);
  const Positions before = entries(0, 10);
  EXPECT_EQ(0, db_.addRepository(1, 5));
  EXPECT_EQ(0, db_.addRepository(1, 6));
  EXPECT_EQ(before, entries(0, 10));
  EXPECT_EQ((Positions{1}), freePositionsOf(db_));
}

TEST_F(URLDBRepository, FreedPositionGoesToTheNextNewList) {
  db_.addRepository(1, 5);
  db_.addRepository(1, 6);
  EXPECT_EQ(Positions{1}, freePositionsOf(db_));
  EXPECT_EQ(-1, entries(1, 1)[0]);
  db_.addRepository(2, 7);
  EXPECT_EQ(1, indexOf(2));
  EXPECT_TRUE(freePositionsOf(db_).empty());
  EXPECT_EQ(4, viewOf(db_).writeRepCateIDs);
}

TEST_F(URLDBRepository, MovingAListFreesItsPositionsInOrder) {
  db_.addRepository(1, 5);
  db_.addRepository(1, 6);
  db_.addRepository(1, 7);
  EXPECT_EQ((Positions{1, 2, 3}), freePositionsOf(db_));
  EXPECT_EQ((Positions{-1, -1, -1}), entries(1, 3));
  EXPECT_EQ(4, indexOf(1));
}

TEST_F(URLDBRepository, LongestListOnlyGrows) {
  db_.addRepository(1, 5);
  EXPECT_EQ(0, viewOf(db_).maxCategoryChain);
  db_.addRepository(2, 5);
  db_.addRepository(2, 6);
  EXPECT_EQ(2, viewOf(db_).maxCategoryChain);
  db_.addRepository(1, 6);
  EXPECT_EQ(2, viewOf(db_).maxCategoryChain);
}

TEST_F(URLDBRepository, ZeroArgumentsAreRefused) {
  EXPECT_EQ("22/3004 Invalid Argument: addRepository()",
            thrownBy([&] { db_.addRepository(0, 5); }));
  EXPECT_EQ("22/3004 Invalid Argument: addRepository()",
            thrownBy([&] { db_.addRepository(5, 0); }));
  EXPECT_EQ(nullptr, db_.searchRepository(0));
}

TEST_F(URLDBRepository, Id50000GrowsAFullIndexByOneStep) {
  db_.addRepository(49999, 5);
  EXPECT_EQ(50000, viewOf(db_).numIdxURLID);
  db_.addRepository(50000, 5);
  EXPECT_EQ(100000, viewOf(db_).numIdxURLID);
  EXPECT_EQ(0, indexOf(99999));
  EXPECT_EQ(Values{5}, list(49999));
}

TEST_F(URLDBRepository, IdsOutOfReachAreRefused) {
  EXPECT_EQ("25/3004 Invalid Data: URL ID 50000",
            thrownBy([&] { db_.addRepository(50000, 5); }));
  EXPECT_EQ("25/3004 Invalid Data: URL ID -1",
            thrownBy([&] { db_.addRepository(-1, 5); }));
  EXPECT_EQ("25/3004 Invalid Data: URL ID 1",
            thrownBy([&] { db_.searchRepository(1); }));
  EXPECT_EQ("25/3004 Invalid Data: URL ID -7",
            thrownBy([&] { db_.searchRepository(-7); }));
  EXPECT_EQ(0, viewOf(db_).numIdxURLID);
}

TEST_F(URLDBRepository, IdWithoutAListReadsPositionZero) {
  db_.addRepository(1, 5);
  EXPECT_EQ("31/3004 Invalid Status: value is clear(0)",
            thrownBy([&] { db_.searchRepository(2); }));
}

TEST_F(URLDBRepository, RepositoryGrowsByTheStepBeyondTheNeed) {
  db_.addRepository(1, 5);
  EXPECT_EQ(50002, viewOf(db_).numRepCateIDs);
  db_.allocRepCateIDs(50001);
  EXPECT_EQ(50002, viewOf(db_).numRepCateIDs);
  db_.allocRepCateIDs(50002);
  EXPECT_EQ(100002, viewOf(db_).numRepCateIDs);
  EXPECT_EQ(Positions(3, -1), entries(99999, 100001));
  EXPECT_EQ(Values{5}, list(1));
  EXPECT_EQ("37/3004 Overflow: repository",
            thrownBy([&] { db_.allocRepCateIDs(INT_MAX); }));
}

TEST_F(URLDBRepository, FullQueueIsFoundBeforeAnythingChanges) {
  open(4);  // takes 3 positions
  for (const int id : {1, 2}) db_.addRepository(id, 5);
  for (const int value : {6, 7}) db_.addRepository(1, value);
  ASSERT_EQ((Positions{1, 3, 4}), freePositionsOf(db_));
  const Positions before = entries(0, 20);
  EXPECT_EQ("37/6 Overflow", thrownBy([&] { db_.addRepository(2, 6); }));
  EXPECT_EQ("37/6 Overflow", thrownBy([&] { db_.addRepository(1, 8); }));
  EXPECT_EQ(before, entries(0, 20));
  EXPECT_EQ((Positions{1, 3, 4}), freePositionsOf(db_));
  EXPECT_EQ((Values{5, 6, 7}), list(1));
  EXPECT_EQ(Values{5}, list(2));
  // With room again it goes on.
  for (const int id : {3, 4, 5}) db_.addRepository(id, 5);
  EXPECT_EQ(1, db_.addRepository(1, 8));
  EXPECT_EQ((Values{5, 6, 7, 8}), list(1));
}

TEST_F(URLDBRepository, QueueOfOneTakesNothing) {
  open(1);
  EXPECT_EQ(1, db_.addRepository(1, 5));
  EXPECT_EQ("37/6 Overflow", thrownBy([&] { db_.addRepository(1, 6); }));
  EXPECT_EQ(0, db_.addRepository(1, 5));
  EXPECT_EQ(Values{5}, list(1));
}

TEST_F(URLDBRepository, OverflowingDatabaseCanStillBeSaved) {
  names_.addCateogry("a");
  names_.addCateogry("b");
  open(2);
  db_.add("one", pairOf(1, 1));
  db_.add("two", pairOf(1, 1));
  db_.add("one", pairOf(2, 2));
  EXPECT_EQ("37/6 Overflow", thrownBy([&] { db_.add("two", pairOf(2, 2)); }));
  const std::string file = folder_.path("db");
  EXPECT_EQ(0, db_.writeFile(file.c_str()));
  URLDB lookup;
  lookup.openFile(file.c_str(), nullptr, 0, true);
  EXPECT_EQ(Values{pairOf(1, 1)}, valuesOf(lookup.search("two")));
  EXPECT_EQ((Values{pairOf(1, 1), pairOf(2, 2)}),
            valuesOf(lookup.search("one")));
}

TEST_F(URLDBRepository, WithoutAQueueNoListGrows) {
  URLDB db;
  EXPECT_EQ(1, db.addRepository(1, 5));
  EXPECT_EQ("31/3004 Invalid Status: queue error",
            thrownBy([&] { db.addRepository(1, 6); }));
  EXPECT_EQ(Values{5}, valuesOf(db.searchRepository(1)));
}

TEST_F(URLDBRepository, WritesTheSectionByteForByte) {
  // IDs are given out by add alone: the section has the entries 0 to 1.
  db_.addRepository(1, 0x10001);
  db_.addRepository(1, 0x20002);
  EXPECT_EQ(words({2, 4, 1, 2}) + words({0, 2}) +
                words({-1, -1, 0x18001, 0x20002}) + words({1}),
            written());
}

TEST_F(URLDBRepository, EmptyRepositoryWritesItsUnusedEntries) {
  EXPECT_EQ(words({2, 1, 0, 0}) + words({0, 0}) + words({-1}), written());
}

TEST_F(URLDBRepository, WritingReversesTheFreePositions) {
  for (const int value : {5, 6, 7}) db_.addRepository(1, value);
  EXPECT_EQ((Positions{1, 2, 3}), freePositionsOf(db_));
  const std::string first = written();
  EXPECT_EQ(words({1, 2, 3}), first.substr(first.size() - 12));
  EXPECT_EQ((Positions{3, 2, 1}), freePositionsOf(db_));
  const std::string second = written();
  EXPECT_EQ(words({3, 2, 1}), second.substr(second.size() - 12));
  EXPECT_EQ((Positions{1, 2, 3}), freePositionsOf(db_));
}

TEST_F(URLDBRepository, ReadsArraysAsLongAsTheFileHasThem) {
  RingQueue<int> queue(5);
  read(words({3, 4, 1, 2}) + words({0, 2, 0}) +
           words({-1, -1, 0x18001, 0x20002}) + words({1}),
       &queue);
  const DatabaseView view = viewOf(db_);
  EXPECT_EQ(3, view.urlID);
  EXPECT_EQ(3, view.numIdxURLID);
  EXPECT_EQ(4, view.writeRepCateIDs);
  EXPECT_EQ(4, view.numRepCateIDs);
  EXPECT_EQ(2, view.maxCategoryChain);
  EXPECT_EQ((Values{0x10001, 0x20002}), list(1));
  ASSERT_EQ(1, queue.getSize());
  EXPECT_EQ(1, *queue.get());
  // The next position is behind what was read, and the arrays grow.
  db_.addRepository(3, 9);
  EXPECT_EQ(4, indexOf(3));
  EXPECT_EQ(50003, viewOf(db_).numIdxURLID);
  EXPECT_EQ(50005, viewOf(db_).numRepCateIDs);
}

TEST_F(URLDBRepository, WithoutAQueueTheFreePositionsAreNotRead) {
  read(words({2, 2, 1000000, 0}) + words({0, 1}) + words({-1, 7}), nullptr);
  EXPECT_EQ(Values{7}, list(1));
}

TEST_F(URLDBRepository, FaultsInsideListsAreNamed) {
  read(words({6, 5, 0, 0}) + words({0, 1, 3, 4, 5, -1}) +
           words({-1, 0x8001, -1, 0x8001, 0x8002}),
       nullptr);
  const struct {
    int id;
    const char* error;
  } cases[] = {
      {1,
       "31/3004 Invalid Status: value is clear(2)"},  // a free entry in a list
      {2,
       "31/3004 Invalid Status: value is clear(5)"},  // a list without an end
      {3, "31/3004 Invalid Status: value is clear(5)"},
      {4, "25/3004 Invalid Data: list of URL ID 4"},  // an entry behind the end
      {5, "25/3004 Invalid Data: list of URL ID 5"},  // and before the start
      {6, "25/3004 Invalid Data: URL ID 6"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.error, thrownBy([&] { db_.searchRepository(c.id); }));
    if (c.id < 6) {
      EXPECT_EQ(c.error, thrownBy([&] { db_.addRepository(c.id, 9); }));
    }
  }
}

TEST_F(URLDBRepository, RefusesCountsAndPositionsThatCannotBe) {
  const struct {
    const char* what;
    std::string section;
    const char* error;
  } cases[] = {
      {"no index", words({0, 1, 0, 0}) + words({-1}),
       "25/3004 Invalid Data: count in the repository"},
      {"no repository", words({1, 0, 0, 0}) + words({0}),
       "25/3004 Invalid Data: count in the repository"},
      {"negative index", words({-1, 1, 0, 0}) + words({0, 0}),
       "25/3004 Invalid Data: count in the repository"},
      {"negative repository", words({1, INT_MIN, 0, 0}) + words({0, 0}),
       "25/3004 Invalid Data: count in the repository"},
      {"negative free positions", words({1, 1, -1, 0}) + words({0, -1}),
       "25/3004 Invalid Data: count in the repository"},
      {"negative longest list", words({1, 1, 0, -1}) + words({0, -1}),
       "25/3004 Invalid Data: count in the repository"},
      {"index that the file cannot hold",
       words({INT_MAX, 1, 0, 0}) + words({0, 0}), "4/3004 Can't Read File"},
      {"repository that the file cannot hold",
       words({1, INT_MAX, 0, 0}) + words({0, 0}), "4/3004 Can't Read File"},
      {"free positions that the file cannot hold",
       words({1, 1, INT_MAX, 0}) + words({0, -1}), "4/3004 Can't Read File"},
      {"free position 0", words({1, 2, 1, 0}) + words({0, -1, -1, 0}),
       "25/3004 Invalid Data: free position 0"},
      {"free position behind the end",
       words({1, 2, 1, 0}) + words({0, -1, -1, 2}),
       "25/3004 Invalid Data: free position 2"},
      {"negative free position", words({1, 2, 1, 0}) + words({0, -1, -1, -5}),
       "25/3004 Invalid Data: free position -5"},
      {"more free positions than the queue takes",
       words({1, 9, 4, 0}) + words({0, -1, -1, -1, -1, -1, -1, -1, -1, -1}) +
           words({1, 2, 3, 4}),
       "37/6 Overflow"},
  };
  db_.addRepository(1, 5);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    RingQueue<int> queue(4);
    queue.put(77);
    EXPECT_EQ(c.error, thrownBy([&] { read(c.section, &queue); }));
    EXPECT_EQ(Values{5}, list(1));
    EXPECT_EQ(50000, viewOf(db_).numIdxURLID);
    EXPECT_EQ(1, queue.getSize());
  }
}

TEST_F(URLDBRepository, SectionCutAnywhereKeepsTheOldArrays) {
  const std::string section = words({3, 4, 1, 2}) + words({0, 2, 0}) +
                              words({-1, -1, 0x18001, 0x20002}) + words({1});
  db_.addRepository(1, 5);
  for (std::size_t size = 0; size < section.size(); ++size) {
    RingQueue<int> queue(4);
    EXPECT_EQ("4/3004 Can't Read File",
              thrownBy([&] { read(section.substr(0, size), &queue); }))
        << size;
    EXPECT_EQ(Values{5}, list(1));
    EXPECT_EQ(0, queue.getSize());
  }
}

TEST_F(URLDBRepository, FailedWriteLeavesTheArraysAsTheyWere) {
  for (const int value : {5, 6, 7}) db_.addRepository(1, value);
  const Positions before = entries(0, 20);
  const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
  ASSERT_TRUE(full.valid());
  EXPECT_EQ("5/3004 Can't Write File",
            thrownBy([&] { db_.writeURL2CateIDs(full.get()); }));
  EXPECT_EQ(before, entries(0, 20));
  EXPECT_EQ((Values{5, 6, 7}), list(1));
}

}  // namespace
}  // namespace urldb
