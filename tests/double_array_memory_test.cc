#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/failing_new.h"
#include "tests/random_keys.h"
#include "tests/trie_section.h"
#include "urldb/double_array.h"
#include "urldb/key_enumerator.h"
#include "urldb/trie_check.h"

// Every allocation that a trie makes fails once. Those with new do in every
// build; its arrays come from realloc, which a compiler may turn into malloc or
// calloc. These are replaced here unless a sanitizer needs them for itself.

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kCountsArrays = false;
#else
constexpr bool kCountsArrays = true;
#endif

namespace {

bool countArrays = false;

[[maybe_unused]] bool mayAllocateArray() {
  return !countArrays || urldb::FailingNew::mayAllocate();
}

}  // namespace

#if !defined(__SANITIZE_ADDRESS__)
extern "C" {
// The C library's own functions, under the names that stay.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

void* malloc(std::size_t size) noexcept {
  return mayAllocateArray() ? __libc_malloc(size) : nullptr;
}
void* calloc(std::size_t count, std::size_t size) noexcept {
  return mayAllocateArray() ? __libc_calloc(count, size) : nullptr;
}
void* realloc(void* memory, std::size_t size) noexcept {
  return mayAllocateArray() ? __libc_realloc(memory, size) : nullptr;
}
}
#endif

namespace urldb {
namespace {

// The n-th allocation and all after it fail while this lives.
class NoMemory {
 public:
  explicit NoMemory(long n) : limit_(n) { countArrays = true; }
  NoMemory(const NoMemory&) = delete;
  NoMemory& operator=(const NoMemory&) = delete;
  ~NoMemory() { countArrays = false; }

 private:
  FailingNew limit_;
};

// Runs `action` with ever more memory until it is done. Every failure on the
// way must be code 1, section 60 or 61, and `after` is called behind it.
// Returns the number of failures.
template <class Action, class After>
int failEachAllocation(const Action& action, const After& after) {
  for (int failures = 0;; ++failures) {
    int code = 0;
    int section = 60;
    bool other = false;
    try {
      const NoMemory limit(failures + 1);
      action();
    } catch (const ErrException& error) {
      code = error.getErrCode();
      section = error.getSection();
    } catch (...) {
      other = true;
    }
    EXPECT_FALSE(other) << "another exception at allocation " << failures + 1;
    if (code == 0 && !other) return failures;
    if (!other) {
      EXPECT_EQ(ERR_NO_MEMORY, code);
    }
    EXPECT_TRUE(section == 60 || section == 61 || section == 62) << section;
    after();
    if (failures > 1000) {
      ADD_FAILURE() << "no end";
      return failures;
    }
  }
}

TEST(DoubleArrayMemory, ConstructionFailsCleanly) {
  EXPECT_GT(failEachAllocation([] { const DoubleArray trie(1024, 0); }, [] {}),
            2);
}

TEST(DoubleArrayMemory, FailedReadKeepsTheOldTrie) {
  DoubleArray source(64, 0);
  for (const char* key : {"abc", "abd", "x"}) source.add(key, 5);
  const std::string section = sectionOf(source);
  DoubleArray trie(64, 0);
  trie.add("old", 1);
  const FileDescriptor file = memoryFile(section);
  const int failures = failEachAllocation(
      [&] {
        lseek(file.get(), 0, SEEK_SET);
        trie.readFile(file.get());
      },
      [&] {
        EXPECT_EQ(Keys({{"old", 1}}), keysOf(trie));
      });
  EXPECT_GE(failures, kCountsArrays ? 4 : 0);
  EXPECT_EQ(keysOf(source), keysOf(trie));
}

TEST(DoubleArrayMemory, FailedWriteKeepsTheTrie) {
  DoubleArray trie(64, 0);
  Keys keys;
  for (const char* key : {"abc", "abd", "x"}) {
    trie.add(key, 5);
    keys[key] = 5;
  }
  const FileDescriptor file = memoryFile();
  const int failures =
      failEachAllocation([&] { trie.writeFile(file.get()); },
                         [&] { EXPECT_EQ(keys, keysOf(trie)); });
  EXPECT_GE(failures, kCountsArrays ? 2 : 0);
  EXPECT_EQ(keys, keysOf(trie));
}

TEST(DoubleArrayMemory, FirstInsertionAfterAReadFailsCleanly) {
  DoubleArray source(64, 0);
  for (const char* key : {"abc", "abd", "x"}) source.add(key, 5);
  DoubleArray trie(64, 0);
  readSection(&trie, sectionOf(source));
  EXPECT_GT(failEachAllocation([&] { trie.add("xy", 6); }, [] {}), 3);
  EXPECT_EQ(6, trie.search("xy"));
  EXPECT_EQ(5, trie.search("abd"));
}

// After a failed insertion no key answers that was not stored, no other key has
// changed, and insertion goes on.
TEST(DoubleArrayMemory, FailedInsertionLeavesTheOtherKeys) {
  const std::string far(3000, 'f');
  const struct {
    const char* name;
    std::vector<std::string> before;
    std::string key;
  } cases[] = {
      {"first key", {}, "k"},
      {"new branch", {"a"}, "\xFFz"},
      {"long record", {"a"}, "b" + far},
      {"long key that splits a long record", {far + "a"}, far + "b"},
  };
  for (const auto& c : cases) {
    for (long n = 1;; ++n) {
      SCOPED_TRACE(c.name + (", allocation " + std::to_string(n)));
      DoubleArray trie(8, 0);
      Keys keys;
      for (const std::string& key : c.before) {
        const int id = static_cast<int>(keys.size()) + 1;
        trie.add(key.c_str(), id);
        keys[key] = id;
      }
      int code = 0;
      try {
        const NoMemory limit(n);
        trie.add(c.key.c_str(), 77);
      } catch (const ErrException& error) {
        code = error.getErrCode();
      }
      if (code == 0) {
        EXPECT_GT(n, kCountsArrays ? 1 : 0);
        break;
      }
      EXPECT_EQ(ERR_NO_MEMORY, code);
      EXPECT_EQ(keys, keysOf(trie));
      // Memory is back.
      EXPECT_EQ(0, trie.add("other", 88));
      keys["other"] = 88;
      EXPECT_EQ(keys, keysOf(trie));
      EXPECT_EQ(0, trie.search(c.key.c_str()));
      EXPECT_EQ(0, trie.add(c.key.c_str(), 99));
      keys[c.key] = 99;
      EXPECT_EQ(keys, keysOf(trie));
      EXPECT_EQ(std::vector<std::string>(), checkTrie(trie, 2));
      if (HasFailure()) break;
    }
  }
}

TEST(DoubleArrayMemory, EnumerationFailsCleanly) {
  DoubleArray trie(64, 0);
  for (const char* key : {"abc", "abd", "x"}) trie.add(key, 5);
  EXPECT_GT(failEachAllocation(
                [&] {
                  KeyEnumerator all(trie);
                  while (all.next()) continue;
                },
                [] {}),
            2);
}

}  // namespace
}  // namespace urldb
