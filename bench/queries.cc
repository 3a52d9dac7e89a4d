#include "bench/queries.h"

#include <algorithm>
#include <random>
#include <stdexcept>
#include <string_view>
#include <unordered_map>

#include "common/error.h"
#include "tools/lookup_key.h"

namespace urldb {
namespace {

// The right answers, found in the plainest way: every beginning of a query is
// looked up.
class Oracle {
 public:
  explicit Oracle(const TextList& keys) {
    for (std::size_t i = 0; i < keys.size(); ++i)
      ids_.emplace(keys[i].view(), keys[i].id);
  }
  int exact(std::string_view key) const {
    const auto found = ids_.find(key);
    return found == ids_.end() ? 0 : found->second;
  }
  int longestPrefix(std::string_view key) const {
    for (; !key.empty(); key.remove_suffix(1)) {
      if (const int id = exact(key); id != 0) return id;
    }
    return 0;
  }

 private:
  std::unordered_map<std::string_view, int> ids_;
};

// The lookup keys of those of the URLs that have one.
std::vector<std::string> keysOf(const std::vector<std::string>& urls) {
  std::vector<std::string> keys;
  for (const std::string& url : urls) {
    try {
      keys.push_back(comparedKey(lookupKey(url)));
    } catch (const ErrException& error) {
      if (error.getErrCode() == ERR_NO_MEMORY) throw;
    }
  }
  return keys;
}

bool isNumeric(std::string_view key) {
  return key.find_first_not_of("0123456789./:") == std::string_view::npos;
}

}  // namespace

Queries makeQueries(const TextList& keys,
                    const std::vector<std::string>& urls) {
  const Oracle oracle(keys);
  const std::vector<std::string> urlKeys = keysOf(urls);
  if (urlKeys.empty()) throw std::runtime_error("no usable URLs");

  Queries queries;
  queries.exactHit = keys;
  queries.urls = urlKeys.size();
  for (const std::string& key : urlKeys) {
    if (oracle.exact(key) == 0) queries.exactMiss.add(key, 0);
    const int id = oracle.longestPrefix(key);
    (id != 0 ? queries.prefixHit : queries.prefixMiss).add(key, id);
  }
  queries.answeredUrls = queries.prefixHit.size();

  std::vector<std::string_view> pages;  // what follows the '/' behind the host
  pages.reserve(urlKeys.size());
  for (const std::string_view key : urlKeys)
    pages.push_back(key.substr(key.find('/') + 1));
  std::vector<std::string_view> hosts;  // without the '/'
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const std::string_view key = keys[i].view();
    if (key.back() == '/') hosts.push_back(key.substr(0, key.size() - 1));
  }
  std::mt19937 random(20240331);
  std::shuffle(hosts.begin(), hosts.end(), random);

  for (std::size_t i = 0; i < hosts.size(); ++i) {
    const std::string_view page = pages[i % pages.size()];
    const std::string_view host = hosts[i];
    std::string text(host);
    if (i % 2 == 1 && !isNumeric(host)) text += ".www";
    text.append("/").append(page);
    queries.prefixHit.add(text, oracle.longestPrefix(text));

    const std::string_view other = hosts[(i + 1) % hosts.size()];
    if (isNumeric(host) || isNumeric(other)) continue;
    // Hosts stand reversed: the outermost label is the last one.
    std::string stranger(host.substr(0, host.rfind('.') + 1));
    stranger += other.substr(other.rfind('.') + 1);
    if (oracle.longestPrefix(stranger + '/') != 0) continue;
    queries.exactMiss.add(stranger + "/.:"[i % 3], 0);
    stranger.append("/").append(page);
    queries.prefixMiss.add(stranger, 0);
  }
  for (TextList* list : {&queries.exactHit, &queries.exactMiss,
                         &queries.prefixHit, &queries.prefixMiss})
    *list = arranged(*list, Order::kRandom);
  return queries;
}

}  // namespace urldb
