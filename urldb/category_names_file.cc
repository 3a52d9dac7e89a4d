// The section of the category names in a database file: docs/urldb-file.md.

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "common/error.h"
#include "common/file_io.h"
#include "urldb/category_names.h"

namespace urldb {
namespace {

constexpr int kSection = 3001;
constexpr int64_t kWord = sizeof(int32_t);

[[noreturn]] void throwInvalid(const char* what) {
  throw ErrException(ERR_INVALID_DATA, kSection, "%s", what);
}

// What the reader and the writer answer.
int measure(int64_t text, int64_t names, int64_t level1, int64_t level2) {
  return static_cast<int>(text + kWord * (names + level1 + level2) + kWord);
}

// The names that start at `positions` of `text`, which ends with a NUL. A
// writer lays them one behind the other; names that share bytes are accepted,
// but not so many that printing all of them is no longer linear in the size of
// the section.
std::vector<const char*> namesAt(const GrowableArray<int32_t>& positions,
                                 const GrowableArray<unsigned char>& text) {
  constexpr std::size_t kSharedBytes = 1 << 20;
  const std::size_t last = text.size() - 1;  // the NUL that was put behind
  std::size_t left = text.size() + kSharedBytes;
  std::vector<const char*> names;
  names.reserve(positions.size());
  for (std::size_t i = 0; i < positions.size(); ++i) {
    const auto position = static_cast<uint32_t>(positions[i]);
    if (position >= last) throwInvalid("position of a name");
    names.push_back(reinterpret_cast<const char*>(&text[position]));
    const std::size_t size = std::strlen(names.back()) + 1;
    if (size > left) throwInvalid("names overlap");
    left -= size;
  }
  return names;
}

// Refuses chains of level-2 nodes that leave the table or meet each other, so
// that every later walk ends.
void checkChains(const GrowableArray<int32_t>& level1,
                 const GrowableArray<int32_t>& level2) {
  std::vector<bool> seen(level2.size());
  for (std::size_t i = 0; i < level1.size(); ++i) {
    std::size_t node = static_cast<uint32_t>(level1[i]) & 0xFFFF;
    while (node != 0) {
      if (node >= level2.size() || seen[node])
        throwInvalid("link of a category");
      seen[node] = true;
      node = static_cast<uint32_t>(level2[node]) >> 16;
    }
  }
}

std::vector<int32_t> toVector(const GrowableArray<int32_t>& array,
                              std::size_t size) {
  std::vector<int32_t> result;
  result.reserve(size);
  result.assign(array.data(), array.data() + array.size());
  result.resize(size);
  return result;
}

}  // namespace

int CategoryNames::readFile(int fd) {
  try {
    const int32_t names = readInteger(fd, kSection);
    const int32_t textSize = readInteger(fd, kSection);
    if (names < 0 || textSize < 0) throwInvalid("count of names");
    const auto positions = readIntegers(fd, names, kSection);
    auto text = readBytes(fd, textSize, kSection);
    text.resize(text.size() + 1);  // the last name ends, whatever was read

    const int32_t level1Count = readInteger(fd, kSection);
    const int32_t level2Count = readInteger(fd, kSection);
    if (level1Count < 0 || level2Count < 0) throwInvalid("count of categories");
    const auto level1 = readIntegers(fd, level1Count, kSection);
    const auto level2 = readIntegers(fd, int64_t{level2Count} + 1, kSection);

    auto freshNames = namesAt(positions, text);
    checkChains(level1, level2);
    auto freshLevel1 = toVector(level1, level1.size());
    // One word more than was stored: a loaded table counts node 0 as a node.
    auto freshLevel2 = toVector(level2, level2.size() + 1);

    readText_.swap(text);
    names_.swap(freshNames);
    level1_.swap(freshLevel1);
    level2_.swap(freshLevel2);
    pool_->removeAll();
    return measure(textSize, names, level1Count, level2Count);
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
}

int CategoryNames::writeFile(int fd) const {
  try {
    std::vector<int32_t> positions;
    positions.reserve(names_.size());
    std::vector<char> text;
    for (const char* const name : names_) {
      positions.push_back(static_cast<int32_t>(text.size()));
      text.insert(text.end(), name, name + std::strlen(name) + 1);
      if (text.size() > INT_MAX) throw ErrException(ERR_OVERFLOW, kSection);
    }
    const auto textSize = static_cast<int32_t>(text.size());
    const auto names = static_cast<int32_t>(names_.size());
    writeInteger(fd, names, kSection);
    writeInteger(fd, textSize, kSection);
    writeIntegers(fd, positions.data(), positions.size(), kSection);
    writeFully(fd, text.data(), text.size(), kSection);

    // Copies, because they are swapped for writing.
    std::vector<int32_t> level1 = level1_;
    std::vector<int32_t> level2 = level2_;
    const auto level1Count = static_cast<int32_t>(level1.size());
    const auto level2Count = static_cast<int32_t>(level2.size()) - 1;
    writeInteger(fd, level1Count, kSection);
    writeInteger(fd, level2Count, kSection);
    writeIntegers(fd, level1.data(), level1.size(), kSection);
    writeIntegers(fd, level2.data(), level2.size(), kSection);
    return measure(textSize, names, level1Count, level2Count);
  } catch (const std::bad_alloc&) {
    throw ErrException(ERR_NO_MEMORY, kSection);
  }
}

}  // namespace urldb
