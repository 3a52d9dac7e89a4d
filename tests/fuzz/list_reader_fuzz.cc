// Any bytes as a list of each kind and as a hierarchy file. Reading must end,
// count right, give the same twice, and give only keys that a trie takes and
// finds again.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/recorded_list.h"
#include "tools/hierarchy_file.h"
#include "urldb/double_array.h"
#include "urldb/key_match.h"

namespace urldb {
namespace {

void require(bool condition, const char* what) {
  if (condition) return;
  std::cerr << "disagreement: " << what << std::endl;
  std::abort();
}

std::size_t linesIn(std::string_view text) {
  std::size_t lines = 0;
  for (const char c : text) lines += c == '\n' ? 1 : 0;
  return lines + (text.empty() || text.back() == '\n' ? 0 : 1);
}

void checkKeys(const RecordedList& list) {
  // As a database makes its trie.
  DoubleArray trie(10240, 3);
  std::map<std::string, int> stored;  // by the key as it is compared
  int id = 0;
  for (const RecordedList::Entry& entry : list.entries) {
    require(!entry.keys.empty(), "an entry without keys");
    for (const std::string& key : entry.keys) {
      require(!key.empty(), "an empty key");
      require(key.find('\0') == std::string::npos, "a NUL in a key");
      const std::string compared = normalisedKey(trie, key.c_str());
      const auto [place, added] = stored.try_emplace(compared, ++id);
      require(trie.add(key.c_str(), id) == (added ? 0 : place->second),
              "what the trie says of a key");
    }
  }
  for (const auto& [key, expected] : stored)
    require(trie.search(key.c_str()) == expected, "a stored key is not found");
}

void checkList(std::string_view text, const std::optional<Category>& category) {
  const RecordedList list(text, category);
  require(list.counts.lines == linesIn(text), "number of lines");
  require(list.counts.taken == list.entries.size(), "entries taken");
  require(list.counts.refused == list.refusals.size(), "entries refused");
  for (const RecordedList::Refusal& refusal : list.refusals) {
    require(refusal.line >= 1 && refusal.line <= list.counts.lines,
            "line of a refusal");
    require(!refusal.reason.empty(), "refused without a reason");
  }
  for (const RecordedList::Entry& entry : list.entries)
    require(!entry.categories.empty(), "an entry without categories");
  checkKeys(list);

  const RecordedList again(text, category);
  require(again.entries == list.entries, "other entries at the second time");
  require(again.refusals == list.refusals, "other refusals at the second time");
}

void checkHierarchy(std::string_view text) {
  std::size_t refused = 0;
  const FileDescriptor file = memoryFile(text);
  LineSource lines(file.get());
  const Hierarchy hierarchy = readHierarchy(
      lines,
      [&](uint64_t line, std::string_view entry, std::string_view reason) {
        ++refused;
        require(line >= 1 && line <= linesIn(text), "line of a refusal");
        require(!entry.empty() && !reason.empty(), "an empty refusal");
      });
  require(hierarchy.size() + refused <= linesIn(text), "more pairs than lines");
}

}  // namespace
}  // namespace urldb

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  urldb::checkList(text, urldb::Category{"", "news"});
  urldb::checkList(text, std::nullopt);
  // Behind its mark, so that every input is also read as a dump.
  urldb::checkList("#key\n" + std::string(text), std::nullopt);
  urldb::checkHierarchy(text);
  return 0;
}
