#include "bench/keys.h"

#include <zlib.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string_view>
#include <unordered_set>

#include "tools/list_entry.h"
#include "urldb/double_array.h"
#include "urldb/key_match.h"

namespace urldb {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> readLines(const fs::path& path) {
  const std::unique_ptr<gzFile_s, int (*)(gzFile)> file(
      gzopen(path.c_str(), "rb"), gzclose);
  if (file == nullptr) throw std::runtime_error("cannot read " + path.string());
  std::string text;
  char piece[1 << 16];
  int count = 0;
  while ((count = gzread(file.get(), piece, sizeof piece)) > 0)
    text.append(piece, static_cast<std::size_t>(count));
  if (count < 0) throw std::runtime_error("cannot read " + path.string());

  std::vector<std::string> lines;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    std::string line = text.substr(begin, end - begin);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty()) lines.push_back(std::move(line));
    begin = end + 1;
  }
  return lines;
}

// The files called `name` in the folders of `folder`, in the order of those.
std::vector<fs::path> listsIn(const fs::path& folder, const char* name) {
  std::vector<fs::path> lists;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    fs::path list = entry.path() / name;
    if (fs::is_regular_file(list)) lists.push_back(std::move(list));
  }
  std::sort(lists.begin(), lists.end());
  return lists;
}

struct Host {
  std::string name;
  int category;
};

std::vector<Host> readHosts(const std::string& lists, KeySet* set) {
  std::vector<fs::path> files;
  if (fs::is_directory(lists)) {
    files = listsIn(lists, "domains");
    for (const fs::path& file : files)
      set->names.push_back(file.parent_path().filename().string());
  } else {
    files.emplace_back(lists);
    set->names.emplace_back("domains");
  }
  std::vector<Host> hosts;
  std::unordered_set<std::string> seen;
  int category = 0;
  for (const fs::path& file : files) {
    ++category;
    for (std::string& line : readLines(file)) {
      if (seen.insert(line).second)
        hosts.push_back({std::move(line), category});
    }
  }
  return hosts;
}

}  // namespace

std::string comparedKey(const std::string& key) {
  static const DoubleArray kTrie(0, 3);  // with the key form of a database
  std::string compared = normalisedKey(kTrie, key.c_str());
  for (char& c : compared) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return compared;
}

KeySet readKeys(const std::string& lists, std::size_t mostKeys) {
  KeySet set;
  const std::vector<Host> hosts = readHosts(lists, &set);
  const std::size_t mostHosts = mostKeys / 3;
  const std::size_t wanted = mostKeys == 0 || mostHosts > hosts.size()
                                 ? hosts.size()
                                 : std::max<std::size_t>(mostHosts, 1);
  std::unordered_set<std::string> seen;
  for (std::size_t i = 0; i < wanted; ++i) {
    const Host& host = hosts[i * hosts.size() / wanted];
    const ListEntry entry = parseListEntry(host.name);
    if (entry.keys.empty()) continue;
    ++set.hosts;
    for (const std::string& key : entry.keys) {
      std::string compared = comparedKey(key);
      if (!seen.insert(compared).second) continue;
      set.keys.add(compared, static_cast<int>(set.keys.size()) + 1);
      set.categories.push_back(host.category);
    }
  }
  if (set.keys.empty()) throw std::runtime_error("no hosts in " + lists);
  return set;
}

TextList arranged(const TextList& keys, Order order) {
  std::vector<std::size_t> places(keys.size());
  std::iota(places.begin(), places.end(), std::size_t{0});
  if (order == Order::kSorted) {
    std::sort(places.begin(), places.end(),
              [&keys](std::size_t a, std::size_t b) {
                return keys[a].view() < keys[b].view();
              });
  } else if (order == Order::kRandom) {
    std::mt19937 random(20240229);
    std::shuffle(places.begin(), places.end(), random);
  }
  TextList list;
  for (const std::size_t place : places)
    list.add(keys[place].view(), keys[place].id);
  return list;
}

std::vector<std::string> readUrls(const std::string& path) {
  if (!fs::is_directory(path)) return readLines(path);
  std::vector<std::string> urls;
  for (const fs::path& file : listsIn(path, "urls")) {
    std::vector<std::string> lines = readLines(file);
    std::move(lines.begin(), lines.end(), std::back_inserter(urls));
  }
  return urls;
}

}  // namespace urldb
