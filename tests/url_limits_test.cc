#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <string>

#include "tests/failing_new.h"
#include "tests/parsed_url.h"
#include "tests/thrown_by.h"
#include "url/url.h"

// The parser at its limits: long texts, deep paths, no memory.

namespace urldb {
namespace {

TEST(URLLimits, FullStackOfFoldersIsRefused) {
  std::string folders;
  for (int i = 0; i < 4095; ++i) folders += "a/";
  const auto url = parsed("http://h.example/" + folders + "x");
  EXPECT_EQ(folders, url->stPath + std::string("/"));
  EXPECT_STREQ("x", url->stFileName);
  EXPECT_EQ("40/3 No Space", errorOf("http://h.example/" + folders + "a/x"));
  EXPECT_EQ("", errorOf("http://h.example/" + folders + "../a/x"));
  EXPECT_EQ("40/3 No Space", errorOf("http://h.example/" + folders + "/x"));
}

// Each allocation fails once; the texts are too long for a common block.
TEST(URLLimits, OutOfMemoryKeepsTheFormerComponents) {
  const std::string part(2000, 'z');
  const std::string text =
      "http://www." + part + "/a/" + part + "/" + part + "." + part + "?q#f";
  URL url;
  parse(url, "http://www.example.org/a");
  const Parts before = partsOf(url);
  std::string error = "not tried";
  long failures = -1;
  while (!error.empty()) {
    ASSERT_LT(++failures, 100);
    error = thrownBy([&] {
      const FailingNew failing(failures + 1);
      url.parse(text.c_str(), 0);
    });
    if (!error.empty()) {
      EXPECT_EQ("1/8 No Memory", error);
      EXPECT_EQ(before, partsOf(url));
    }
  }
  EXPECT_GT(failures, 6);
  EXPECT_EQ(text, url.stNormal);
}

std::string repeated(const char* text, std::size_t size) {
  std::string result;
  while (result.size() < size) result += text;
  return result;
}

TEST(URLLimits, LongPathsParse) {
  constexpr std::size_t kSize = 1000000;
  const std::string climbs = repeated("../", kSize);
  EXPECT_EQ(climbs,
            parsed("http://h.example/" + climbs)->stPath + std::string("/"));
  EXPECT_STREQ(
      "http://h.example/x",
      parsed("http://h.example/" + repeated("a/../", kSize) + "x")->stNormal);
  EXPECT_STREQ(
      "http://h.example/x",
      parsed("http://h.example/" + repeated("./", kSize) + "x")->stNormal);
  EXPECT_EQ("40/3 No Space",
            errorOf("http://h.example/" + repeated("a/", kSize)));
  const std::string folder(kSize, 'f');
  EXPECT_EQ(folder, parsed("http://h.example/" + folder + "/x")->stPath);
  const std::string escapes = repeated("%4", kSize);
  EXPECT_EQ("." + escapes,
            parsed("http://h.example/a." + escapes)->stExtension);
  const std::string dots(kSize, '.');
  EXPECT_STREQ(".", parsed("http://h.example/" + dots)->stExtension);
}

TEST(URLLimits, TenMegabytesParse) {
  constexpr std::size_t kSize = 10000000;
  const std::string query = repeated("a=b&", kSize);
  const auto url = parsed("http://h.example/x?" + query + "#" + query);
  EXPECT_EQ(query, url->stQuery);
  EXPECT_EQ(query, url->stFragment);
  EXPECT_FALSE(url->isQueryValue(url->stQuery));
  EXPECT_TRUE(url->isQueryValue((query + "a=b").c_str()));
  const std::string labels = repeated("www.", kSize) + "example";
  EXPECT_EQ(labels, parsed("http://" + labels + "/")->stHost);
  const std::string word(kSize, 'w');
  const std::string userURL = "s://" + word + "@h.example/";
  EXPECT_EQ(userURL, parsed(userURL)->stNormal);
  EXPECT_EQ(word + "://h.example/", parsed(word + "://h.example")->stNormal);
  EXPECT_EQ(2147483647, parsed("h.example:" + std::string(kSize, '1'))->nPort);
  EXPECT_EQ(7, parsed("h.example:" + std::string(kSize, '0') + "7")->nPort);
  EXPECT_EQ(511u + 5, errorOf(word).size());  // "25/8 " and a full message
  EXPECT_EQ(511u + 5, errorOf(std::string(kSize, '1')).size());
}

// One small file mapped again and again makes a text of 4 GiB.
TEST(URLLimits, TextBeyondThePoolIsOutOfMemory) {
  constexpr std::size_t kPiece = std::size_t{1} << 24;
  constexpr std::size_t kLength = std::size_t{1} << 32;
  const int file = memfd_create("text", MFD_CLOEXEC);
  ASSERT_GE(file, 0);
  const std::string letters(kPiece, 'a');
  ASSERT_EQ(static_cast<ssize_t>(kPiece),
            ::write(file, letters.data(), kPiece));
  void* const place =
      ::mmap(nullptr, kLength + kPiece, PROT_READ,
             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(MAP_FAILED, place);
  char* const text = static_cast<char*>(place);
  for (std::size_t at = 0; at < kLength; at += kPiece)
    ASSERT_NE(MAP_FAILED, ::mmap(text + at, kPiece, PROT_READ,
                                 MAP_SHARED | MAP_FIXED, file, 0));
  URL url;
  EXPECT_EQ("1/8 No Memory", thrownBy([&] { url.parse(text, 1); }));
  ::munmap(place, kLength + kPiece);
  ::close(file);
}

}  // namespace
}  // namespace urldb
