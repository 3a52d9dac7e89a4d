#include "tools/list_reader.h"

#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tools/list_entry.h"

namespace urldb {

namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kDumpMark = "#key";

bool isCommentLine(std::string_view text) {
  return !text.empty() && (text.front() == '#' || text.front() == '!');
}

// Reads the names in the lines of one list. Most lists have few different
// categories, so each text is converted once.
class CategoryField {
 public:
  explicit CategoryField(bool escaped) : escaped_(escaped) {}

  // Fills `categories`; returns why it cannot, or "".
  std::string read(std::string_view field, std::vector<Category>* categories) {
    categories->clear();
    for (;;) {
      const std::size_t comma = field.find(',');
      std::string_view text = field.substr(0, comma);
      if (!escaped_) text = trimBlanks(text);
      const std::optional<Category>& category = find(text);
      if (!category) return "unusable category";
      categories->push_back(*category);
      if (comma == std::string_view::npos) return {};
      field.remove_prefix(comma + 1);
    }
  }

 private:
  const std::optional<Category>& find(std::string_view text) {
    const auto [place, added] = known_.try_emplace(std::string(text));
    if (added) place->second = parseCategory(text, escaped_);
    return place->second;
  }

  const bool escaped_;
  std::unordered_map<std::string, std::optional<Category>> known_;
};

// Hands entries on and counts them.
class Entries {
 public:
  Entries(ListSink& sink, ListCounts& counts) : sink_(sink), counts_(counts) {}

  void give(const ListEntry& entry, std::string_view text,
            std::span<const Category> categories) {
    if (!entry.refusal.empty()) return refuse(text, entry.refusal);
    sink_.take(entry.keys, categories);
    ++counts_.taken;
  }

  void refuse(std::string_view text, std::string_view reason) {
    sink_.refuse(counts_.lines, text, reason);
    ++counts_.refused;
  }

  // One entry, or the names of a hosts line.
  void giveText(std::string_view text, std::span<const Category> categories) {
    const auto names = hostsLineNames(text);
    if (!names) return give(parseListEntry(text), text, categories);
    for (const std::string_view name : *names)
      give(parseHostsName(name), name, categories);
  }

 private:
  ListSink& sink_;
  ListCounts& counts_;
};

void readDump(LineSource& source, ListCounts& counts, Entries& entries) {
  CategoryField field(true);
  std::vector<Category> categories;
  for (std::string line; source.next(&line);) {
    ++counts.lines;
    const std::string_view text = line;
    if (trimBlanks(text).empty()) continue;
    const std::size_t tab = text.find('\t');
    if (tab == std::string_view::npos) {
      if (!isCommentLine(text)) entries.refuse(text, "no category");
      continue;
    }
    const std::string fault = field.read(text.substr(tab + 1), &categories);
    if (fault.empty()) {
      entries.give(parseStoredKey(text.substr(0, tab)), text, categories);
    } else {
      entries.refuse(text, fault);
    }
  }
}

}  // namespace

std::string_view withoutComment(std::string_view line) {
  line = trimBlanks(line);
  if (isCommentLine(line)) return {};
  for (std::size_t i = line.find('#'); i != std::string_view::npos;
       i = line.find('#', i + 1)) {
    if (kBlanks.find(line[i - 1]) != std::string_view::npos)
      return trimBlanks(line.substr(0, i));
  }
  return line;
}

void dropByteOrderMark(std::string* line) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  if (line->compare(0, kMark.size(), kMark) == 0) line->erase(0, kMark.size());
}

ListCounts readList(LineSource& source, const std::optional<Category>& category,
                    ListSink& sink) {
  ListCounts counts;
  Entries entries(sink, counts);
  CategoryField field(false);
  std::vector<Category> categories;
  if (category) categories.push_back(*category);
  for (std::string line; source.next(&line);) {
    if (++counts.lines == 1) {
      dropByteOrderMark(&line);
      if (!category && trimBlanks(line) == kDumpMark) {
        readDump(source, counts, entries);
        return counts;
      }
    }
    const std::string_view text = withoutComment(line);
    if (text.empty()) continue;
    if (category) {
      entries.giveText(text, categories);
      continue;
    }
    // The last tab: a hosts line may have one between address and name.
    const std::size_t tab = text.rfind('\t');
    if (tab == std::string_view::npos) {
      entries.refuse(text, "no tab and category behind the entry");
      continue;
    }
    const std::string_view entry = trimBlanks(text.substr(0, tab));
    std::string fault = field.read(text.substr(tab + 1), &categories);
    if (isLocalAddress(entry))
      fault = "a hosts line: give the file as CATEGORY=FILE";
    if (fault.empty()) {
      entries.giveText(entry, categories);
    } else {
      entries.refuse(text, fault);
    }
  }
  return counts;
}

}  // namespace urldb
