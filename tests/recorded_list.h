#ifndef URLDB_TESTS_RECORDED_LIST_H_
#define URLDB_TESTS_RECORDED_LIST_H_

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "common/file_descriptor.h"
#include "tools/list_reader.h"

namespace urldb {

// An open file in memory that holds `bytes`, read from its start.
inline FileDescriptor memoryFile(std::string_view bytes) {
  FileDescriptor file(::memfd_create("urldb-test", MFD_CLOEXEC));
  if (!file.valid()) throw std::runtime_error("memfd_create");
  while (!bytes.empty()) {
    const ssize_t put = ::write(file.get(), bytes.data(), bytes.size());
    if (put <= 0) throw std::runtime_error("write");
    bytes.remove_prefix(static_cast<std::size_t>(put));
  }
  ::lseek(file.get(), 0, SEEK_SET);
  return file;
}

// Everything that a list gave, in its order.
class RecordedList : public ListSink {
 public:
  struct Entry {
    std::vector<std::string> keys;
    std::vector<std::string> categories;  // "name" or "level1/name", EUC-JP
    bool operator==(const Entry&) const = default;
  };
  struct Refusal {
    uint64_t line;
    std::string entry;
    std::string reason;
    bool operator==(const Refusal&) const = default;
  };

  RecordedList(std::string_view bytes,
               const std::optional<Category>& category) {
    const FileDescriptor file = memoryFile(bytes);
    LineSource lines(file.get());
    counts = readList(lines, category, *this);
  }

  void take(std::span<const std::string> keys,
            std::span<const Category> categories) override {
    Entry& entry = entries.emplace_back();
    entry.keys.assign(keys.begin(), keys.end());
    for (const Category& category : categories)
      entry.categories.push_back(category.level1.empty()
                                     ? category.name
                                     : category.level1 + "/" + category.name);
  }

  void refuse(uint64_t line, std::string_view entry,
              std::string_view reason) override {
    refusals.push_back({line, std::string(entry), std::string(reason)});
  }

  ListCounts counts;
  std::vector<Entry> entries;
  std::vector<Refusal> refusals;
};

}  // namespace urldb

#endif  // URLDB_TESTS_RECORDED_LIST_H_
