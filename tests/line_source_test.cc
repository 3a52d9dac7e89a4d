#include "tools/line_source.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "common/error.h"
#include "common/file_descriptor.h"
#include "tests/temporary_folder.h"

namespace urldb {
namespace {

class LineSourceTest : public testing::Test {
 protected:
  std::vector<std::string> linesOf(const std::string& bytes) {
    const std::string path = folder_.write("input", bytes);
    const FileDescriptor file(::open(path.c_str(), O_RDONLY));
    LineSource source(file.get());
    std::vector<std::string> lines;
    std::string line;
    while (source.next(&line)) lines.push_back(line);
    EXPECT_FALSE(source.next(&line));  // the end stays the end
    return lines;
  }

  using Lines = std::vector<std::string>;
  TemporaryFolder folder_;
};

TEST_F(LineSourceTest, EndsOfLines) {
  EXPECT_EQ(Lines{}, linesOf(""));
  EXPECT_EQ(Lines{""}, linesOf("\n"));
  EXPECT_EQ((Lines{"a", "b"}), linesOf("a\nb\n"));
  EXPECT_EQ((Lines{"a", "b"}), linesOf("a\nb"));
  EXPECT_EQ((Lines{"a", "", "b"}), linesOf("a\r\n\r\nb\r\n"));
  EXPECT_EQ((Lines{"a", "b"}), linesOf("a\nb\r"));
  EXPECT_EQ((Lines{"a\rb", "c\r"}), linesOf("a\rb\nc\r\r\n"));
}

TEST_F(LineSourceTest, NulBytesAreKept) {
  EXPECT_EQ((Lines{std::string("a\0b", 3), std::string("\0", 1)}),
            linesOf(std::string("a\0b\n\0\n", 6)));
}

TEST_F(LineSourceTest, LinesHaveAnyLength) {
  // Around the sizes at which a buffer may end, and far beyond them.
  for (const std::size_t size :
       {(1U << 18) - 1, 1U << 18, (1U << 18) + 1, (1U << 19) - 1, 10U << 20}) {
    SCOPED_TRACE(size);
    const std::string longLine(size, 'x');
    EXPECT_EQ((Lines{"a", longLine, "b"}), linesOf("a\n" + longLine + "\nb"));
    EXPECT_EQ((Lines{longLine, "b"}), linesOf(longLine + "\r\nb"));
  }
}

TEST_F(LineSourceTest, TellsBeforeItWaitsForInput) {
  int ends[2];
  ASSERT_EQ(0, ::pipe(ends));
  const FileDescriptor in(ends[0]);
  FileDescriptor out(ends[1]);
  int reads = 0;
  LineSource source(in.get(), [&reads] { ++reads; });
  std::string line;
  ASSERT_EQ(4, ::write(out.get(), "a\nb\n", 4));
  EXPECT_TRUE(source.next(&line));
  EXPECT_EQ(1, reads);
  EXPECT_TRUE(source.next(&line));
  EXPECT_EQ(1, reads);  // was there already
  ASSERT_EQ(2, ::write(out.get(), "c\n", 2));
  EXPECT_TRUE(source.next(&line));
  EXPECT_EQ("c", line);
  EXPECT_EQ(2, reads);
  out.close();
  EXPECT_FALSE(source.next(&line));
  EXPECT_EQ(3, reads);
}

TEST_F(LineSourceTest, AFailedReadIsAnError) {
  const FileDescriptor directory(::open(folder_.path().c_str(), O_RDONLY));
  LineSource source(directory.get());
  std::string line;
  try {
    source.next(&line);
    FAIL() << "no error";
  } catch (const ErrException& error) {
    EXPECT_EQ(ERR_CANT_READ_FILE, error.getErrCode());
    EXPECT_EQ(0, error.getSection());
    EXPECT_STREQ("Can't Read File: Is a directory", error.getMessage());
  }
}

}  // namespace
}  // namespace urldb
