#include "common/file_descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <type_traits>
#include <utility>

namespace urldb {
namespace {

static_assert(!std::is_copy_constructible_v<FileDescriptor>);
static_assert(!std::is_copy_assignable_v<FileDescriptor>);

int openNull() { return ::open("/dev/null", O_RDONLY | O_CLOEXEC); }

bool isOpen(int fd) { return ::fcntl(fd, F_GETFD) >= 0; }

TEST(FileDescriptor, OwnsNothingAtFirst) {
  const FileDescriptor none;
  EXPECT_FALSE(none.valid());
  EXPECT_EQ(-1, none.get());
  EXPECT_FALSE(FileDescriptor(-1).valid());
}

TEST(FileDescriptor, ClosesAtTheEndOfItsLife) {
  int fd = -1;
  {
    const FileDescriptor owner(openNull());
    fd = owner.get();
    EXPECT_TRUE(owner.valid());
    EXPECT_TRUE(isOpen(fd));
  }
  EXPECT_FALSE(isOpen(fd));
}

TEST(FileDescriptor, DescriptorZeroIsOneToo) {
  const int kept = ::fcntl(0, F_DUPFD_CLOEXEC, 3);
  ::close(0);
  {
    const FileDescriptor owner(openNull());
    EXPECT_EQ(0, owner.get());
    EXPECT_TRUE(owner.valid());
  }
  EXPECT_FALSE(isOpen(0));
  if (kept >= 0) {
    ::dup2(kept, 0);
    ::close(kept);
  }
}

TEST(FileDescriptor, CloseTellsWhetherItWorked) {
  FileDescriptor owner(openNull());
  const int fd = owner.get();
  EXPECT_EQ(0, owner.close());
  EXPECT_FALSE(owner.valid());
  EXPECT_EQ(-1, owner.get());
  EXPECT_FALSE(isOpen(fd));

  errno = 0;
  EXPECT_EQ(-1, owner.close());
  EXPECT_EQ(EBADF, errno);

  FileDescriptor stale(fd);  // closed above
  EXPECT_EQ(-1, stale.close());
  EXPECT_FALSE(stale.valid());
}

TEST(FileDescriptor, ReleaseHandsOver) {
  int fd = -1;
  {
    FileDescriptor owner(openNull());
    fd = owner.release();
    EXPECT_FALSE(owner.valid());
  }
  EXPECT_TRUE(isOpen(fd));
  EXPECT_EQ(0, ::close(fd));
}

TEST(FileDescriptor, MovesTakeTheDescriptorAlong) {
  FileDescriptor first(openNull());
  const int fd = first.get();
  FileDescriptor second(std::move(first));
  EXPECT_FALSE(first.valid());  // NOLINT: on purpose
  EXPECT_EQ(fd, second.get());

  FileDescriptor third(openNull());
  const int replaced = third.get();
  third = std::move(second);
  EXPECT_FALSE(second.valid());  // NOLINT: on purpose
  EXPECT_EQ(fd, third.get());
  EXPECT_TRUE(isOpen(fd));
  EXPECT_FALSE(isOpen(replaced));
}

TEST(FileDescriptor, AssignmentToItselfKeepsTheDescriptor) {
  FileDescriptor owner(openNull());
  const int fd = owner.get();
  FileDescriptor& same = owner;
  owner = std::move(same);
  EXPECT_EQ(fd, owner.get());
  EXPECT_TRUE(isOpen(fd));
}

}  // namespace
}  // namespace urldb
