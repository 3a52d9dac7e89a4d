#ifndef URLDB_BENCH_TEXT_LIST_H_
#define URLDB_BENCH_TEXT_LIST_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace urldb {

// Texts with a number each, one behind the other in memory in the order in
// which they are used: who runs through them measures what he does with them,
// and not where they lie.
class TextList {
 public:
  struct Item {
    const char* text;  // ends with a NUL
    std::size_t length;
    int id;

    std::string_view view() const { return {text, length}; }
  };

  void add(std::string_view text, int id) {
    places_.push_back({bytes_.size(), static_cast<uint32_t>(text.size()), id});
    bytes_.append(text).push_back('\0');
  }

  std::size_t size() const { return places_.size(); }
  bool empty() const { return places_.empty(); }

  // Valid until the next add().
  Item operator[](std::size_t i) const {
    const Place& place = places_[i];
    return {bytes_.data() + place.offset, place.length, place.id};
  }

 private:
  struct Place {
    std::size_t offset;
    uint32_t length;
    int id;
  };

  std::string bytes_;
  std::vector<Place> places_;
};

}  // namespace urldb

#endif  // URLDB_BENCH_TEXT_LIST_H_
