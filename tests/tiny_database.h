#ifndef URLDB_TESTS_TINY_DATABASE_H_
#define URLDB_TESTS_TINY_DATABASE_H_

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "urldb/category_names.h"
#include "urldb/urldb.h"

namespace urldb {

using Values = std::vector<int>;

// The category value of a level-1 and a level-2 ID.
constexpr int pairOf(int level1, int level2) { return level1 << 16 | level2; }

// The values of a category list, which is released; none for a null one.
inline Values valuesOf(int* list) {
  const std::unique_ptr<int[]> owned(list);
  return list == nullptr ? Values() : Values(list + 1, list + 1 + list[0]);
}

// An integer as a file holds it.
inline std::string word(int64_t value) {
  const auto bits = static_cast<uint32_t>(value);
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8)
    bytes += static_cast<char>(bits >> shift & 0xFF);
  return bytes;
}

inline std::string words(std::initializer_list<int64_t> values) {
  std::string bytes;
  for (const int64_t value : values) bytes += word(value);
  return bytes;
}

// The bytes of a file in which two databases of the same content differ: time
// stamp and freshness date.
constexpr std::size_t kDatesAt = 64;
constexpr std::size_t kDatesSize = 24;

inline std::string withoutDates(std::string file) {
  for (std::size_t i = kDatesAt; i < kDatesAt + kDatesSize && i < file.size();
       ++i)
    file[i] = '#';
  return file;
}

// The database that the tests of the file know byte by byte: three names, three
// keys, lists that have moved, and free positions.
class TinyDatabase {
 public:
  static constexpr int kNews = 1;
  static constexpr int kSport = 2;
  static constexpr int kBall = 3;

  CategoryNames names;
  URLDB db;

  TinyDatabase() {
    for (const char* name : {"news", "sport", "ball"}) names.addCateogry(name);
    names.setHierarchical(pairOf(kSport, kBall));
    names.setHierarchical(pairOf(kNews, kNews));
    names.setHierarchical(pairOf(kSport, kSport));
    db.openFile("", &names, 100, false);
    db.add("ab", pairOf(kNews, kNews));    // ID 1 at position 1
    db.add("ac", pairOf(kSport, kBall));   // ID 2 at 2
    db.add("ab", pairOf(kSport, kSport));  // to 3 and 4; 1 is free
    db.add("b", pairOf(kNews, kNews));     // ID 3 at 1
    db.add("ac", pairOf(kNews, kNews));    // to 5 and 6; 2 is free
    db.add("ab", pairOf(kBall, kBall));    // to 7, 8 and 9; 2, 3 and 4 are free
  }

  // Its file: what the layout says about the calls above.
  static std::string bytes() {
    std::string file = "_URL_DATABASE_" + word(2) + std::string(14, '\0') +
                       words({1, 0, 0, 0, 0, 0, 0, 0}) +
                       std::string(kDatesSize, '#');
    // Names, their positions, the hierarchy.
    file += words({3, 16}) + words({0, 5, 11});
    file += std::string("news\0sport\0ball\0", 16);
    file += words({2, 3}) + words({0x10002, 0x20001});
    file += words({0, 0x30003, 1, 2});
    // The trie. Keys are in upper case: 'A' is 65, 'B' 66, 'C' 67, the terminal
    // 127. "B" met the children of "A" in cell 67, and they moved on to 69
    // and 70.
    constexpr int kSize = 70;
    file += "_DYNAMIC_AC_" + words({1, 4, 0x21, 3}) + words({kSize, 1, 68, 19});
    std::vector<int64_t> base(kSize + 1);
    std::vector<int64_t> check(kSize + 1);
    base[0] = kSize;
    for (int cell = 1; cell <= 68; ++cell)
      check[static_cast<std::size_t>(cell)] = -(cell + 1);  // free
    check[65] = -68;
    check[68] = -71;
    base[1] = 1;                     // the root
    base[66] = 3, check[66] = 1;     // A
    base[67] = -1, check[67] = 1;    // B
    base[69] = -7, check[69] = 66;   // AB
    base[70] = -13, check[70] = 66;  // AC
    for (const int64_t v : base) file += word(v);
    for (const int64_t v : check) file += word(v);
    file += '\0';
    for (const int id : {3, 1, 2}) file += std::string("\x7F\0", 2) + word(id);
    file += '\0';
    // URL index, lists, free positions.
    file += words({5, 10, 3, 3}) + words({0, 7, 5, 1, 0});
    file += words({-1, 0x10001, -1, -1, -1, 0x28003, 0x10001});
    file += words({0x18001, 0x28002, 0x30003});
    file += words({4, 3, 2});
    return file;
  }
};

}  // namespace urldb

#endif  // URLDB_TESTS_TINY_DATABASE_H_
