#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/real_domains.h"
#include "tests/trie_model.h"
#include "urldb/double_array.h"

// The engine against the plain transcription of insertion, cell by cell.
// Options:
// --seeds=N (20) and --first-seed=N (1); a failure names its seed.

namespace urldb {
namespace {

unsigned firstSeed = 1;
unsigned seeds = 20;

using Random = std::mt19937_64;

int below(Random* random, int n) {
  return static_cast<int>((*random)() % static_cast<uint64_t>(n));
}

std::string written(DoubleArray* trie) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::tmpfile(),
                                                   &std::fclose);
  trie->writeFile(fileno(file.get()));
  std::string bytes(
      static_cast<std::size_t>(lseek(fileno(file.get()), 0, SEEK_CUR)), '\0');
  EXPECT_EQ(static_cast<ssize_t>(bytes.size()),
            pread(fileno(file.get()), bytes.data(), bytes.size(), 0));
  return bytes;
}

// The capacities that only the dump tells.
int dumped(const DoubleArray& trie, const std::string& label) {
  std::ostringstream os;
  os << trie;
  const std::string text = os.str();
  return std::atoi(text.c_str() + text.find(label) + label.size());
}

// A trie and its model side by side. Both get every key; keys are already as
// the trie stores them.
class Pair {
 public:
  DoubleArray engine;
  model::PlainTrie model;

  explicit Pair(int gain, int convMode = 0)
      : engine(gain, convMode), model(gain), convMode_(convMode) {}

  void add(const std::string& key, int id) {
    ASSERT_EQ(model.add(key, id), engine.add(key.c_str(), id)) << "key " << key;
  }

  // Every cell, every byte of TAIL in use, the ends of the free list.
  void expectSame() const {
    const TrieView cells = engine.view();
    ASSERT_EQ(model.base[0], cells.size);
    EXPECT_EQ(model.emptyHead, cells.emptyHead);
    EXPECT_EQ(model.emptyTail, cells.emptyTail);
    ASSERT_EQ(model.posTail, cells.posTail);
    for (int s = 0; s <= cells.size; ++s) {
      ASSERT_EQ(model.base[s], cells.base[s]) << "BASE of cell " << s;
      ASSERT_EQ(model.check[s], cells.check[s]) << "CHECK of cell " << s;
    }
    for (int p = 1; p < cells.posTail; ++p) {
      ASSERT_EQ(model.tail[p], cells.tail[p]) << "TAIL at " << p;
    }
  }

  void expectSameCapacities() const {
    EXPECT_EQ(model.base.size(), dumped(engine, "      szBC = "));
    EXPECT_EQ(model.tail.size(), dumped(engine, "    szTail = "));
  }

  void expectSameFile() {
    model.compact();
    EXPECT_EQ(model.section(convMode_), written(&engine))
        << "the file sections differ";
    expectSame();
  }

 private:
  int convMode_;
};

std::string randomKey(Random* random, const std::string& alphabet,
                      int longest) {
  std::string key;
  for (int n = below(random, longest + 1); n > 0; --n) {
    key += alphabet[static_cast<std::size_t>(
        below(random, static_cast<int>(alphabet.size())))];
  }
  return key;
}

// Labels 1 to 255 but for the terminal byte.
std::string everyByte() {
  std::string bytes;
  for (int c = 1; c < 256; ++c) {
    if (c != 127) bytes += static_cast<char>(c);
  }
  return bytes;
}

void sumUp(const model::PlainTrie::Steps& from, model::PlainTrie::Steps* to) {
  to->relocatedSelf += from.relocatedSelf;
  to->relocatedOther += from.relocatedOther;
  to->ties += from.ties;
  to->movedCurrent += from.movedCurrent;
  to->reparented += from.reparented;
  to->beyondList += from.beyondList;
  to->insideList += from.insideList;
  to->freedCells += from.freedCells;
}

class DoubleArrayModel : public testing::Test {
 protected:
  // `keys` random keys, compared often while the trie is small and at the end.
  void compareRandom(unsigned seed, const std::string& alphabet, int longest,
                     int keys, int gain) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    Pair pair(gain);
    for (int i = 1; i <= keys; ++i) {
      pair.add(randomKey(&random, alphabet, longest), i);
      if (HasFatalFailure()) return;
      if (i < 30 || i % 97 == 0) pair.expectSame();
      if (i % 397 == 0) {
        pair.expectSameCapacities();
        pair.expectSameFile();  // and goes on after the compaction
      }
      if (HasFatalFailure()) return;
    }
    pair.expectSameFile();
    sumUp(pair.model.steps, &steps_);
  }

  model::PlainTrie::Steps steps_;
};

TEST_F(DoubleArrayModel, SmallAlphabetsForceEveryBranchOfRelocation) {
  const std::string alphabets[] = {"ab", "abc", "abcdefgh",
                                   "\x01\x02\x7E\x80\xFF", "\x01\xFF"};
  for (unsigned seed = firstSeed; seed < firstSeed + seeds; ++seed) {
    for (const std::string& alphabet : alphabets) {
      compareRandom(seed, alphabet, 12, 600, 64);
      if (HasFatalFailure()) return;
    }
  }
  EXPECT_GT(steps_.relocatedSelf, 0);
  EXPECT_GT(steps_.relocatedOther, 0);
  EXPECT_GT(steps_.ties, 0);
  EXPECT_GT(steps_.movedCurrent, 0);
  EXPECT_GT(steps_.reparented, 0);
  EXPECT_GT(steps_.beyondList, 0);
  EXPECT_GT(steps_.insideList, 0);
  EXPECT_GT(steps_.freedCells, 0);
}

TEST_F(DoubleArrayModel, KeysOfAllByteValuesGiveTheSameCells) {
  for (unsigned seed = firstSeed; seed < firstSeed + seeds; ++seed) {
    compareRandom(seed, everyByte(), 5, 1500, 1024);
    if (HasFatalFailure()) return;
  }
}

TEST_F(DoubleArrayModel, KeysReadFromAFileAndExtendedGiveTheSameCells) {
  for (unsigned seed = firstSeed; seed < firstSeed + seeds; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    Pair pair(256);
    for (int i = 1; i <= 300; ++i) pair.add(randomKey(&random, "abcd/.", 9), i);
    pair.model.compact();
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::tmpfile(),
                                                     &std::fclose);
    pair.engine.writeFile(fileno(file.get()));
    ASSERT_EQ(0, lseek(fileno(file.get()), 0, SEEK_SET));
    pair.engine.readFile(fileno(file.get()));
    pair.expectSame();
    for (int i = 301; i <= 700; ++i)
      pair.add(randomKey(&random, "abcd/.", 9), i);
    pair.expectSame();
    pair.expectSameFile();
    if (HasFatalFailure()) return;
  }
}

std::vector<std::string> hostKeys(const std::vector<std::string>& domains) {
  std::vector<std::string> keys;
  for (const std::string& domain : domains) {
    std::string key(domain.rbegin(), domain.rend());
    // As the trie's normaliser folds them: the model takes keys as they are.
    for (char& c : key) {
      if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    for (const char end : {'/', '.', ':'}) keys.push_back(key + end);
  }
  return keys;
}

TEST_F(DoubleArrayModel, FiftyThousandRealDomainsGiveTheSameCells) {
  const std::vector<std::string> keys = hostKeys(realDomains());
  ASSERT_EQ(150000U, keys.size());
  Pair pair(10240, 3);
  int id = 0;
  for (const std::string& key : keys) {
    pair.add(key, ++id);
    if (HasFatalFailure()) return;
  }
  pair.expectSameCapacities();
  pair.expectSameFile();
}

TEST_F(DoubleArrayModel, RealDomainsInRandomOrderGiveTheSameCells) {
  const std::vector<std::string> domains = realDomains();
  ASSERT_FALSE(domains.empty());
  for (unsigned seed = firstSeed; seed < firstSeed + seeds; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    std::vector<std::string> some = domains;
    std::shuffle(some.begin(), some.end(), random);
    some.resize(2000);
    std::vector<std::string> keys = hostKeys(some);
    std::shuffle(keys.begin(), keys.end(), random);
    Pair pair(10240, 3);
    int id = 0;
    for (const std::string& key : keys) {
      pair.add(key, ++id);
      if (HasFatalFailure()) return;
    }
    pair.expectSameFile();
    if (HasFatalFailure()) return;
  }
}

bool numberOption(const char* argument, const char* name, unsigned* value) {
  const std::size_t length = std::strlen(name);
  if (std::strncmp(argument, name, length) != 0) return false;
  *value = static_cast<unsigned>(std::strtoul(argument + length, nullptr, 10));
  return true;
}

}  // namespace
}  // namespace urldb

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  for (int i = 1; i < argc; ++i) {
    if (!urldb::numberOption(argv[i], "--seeds=", &urldb::seeds) &&
        !urldb::numberOption(argv[i], "--first-seed=", &urldb::firstSeed)) {
      std::cerr << "unknown option " << argv[i] << '\n';
      return 2;
    }
  }
  return RUN_ALL_TESTS();
}
