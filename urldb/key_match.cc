#include "urldb/key_match.h"

#include <array>

#include "common/error.h"
#include "urldb/double_array.h"
#include "urldb/trie_search.h"

namespace urldb {
namespace {

constexpr int kSection = 60;  // that of the trie, whose lookups these are

constexpr std::array<bool, 256> makeEdges() {
  std::array<bool, 256> edges{};
  for (const char c : {'/', '.', ':', '?', '#', '&', '=', ';'}) {
    edges[static_cast<unsigned char>(c)] = true;
  }
  return edges;
}
constexpr std::array<bool, 256> kEdges = makeEdges();

bool isEdge(char c) { return kEdges[static_cast<unsigned char>(c)]; }

InnerString innerKey(const TrieView& trie, const char* key) {
  if (key == nullptr) {
    throw ErrException(ERR_INVALID_ARGUMENT, kSection, "key is NULL");
  }
  return {reinterpret_cast<const unsigned char*>(key), trie.convMode};
}

}  // namespace

KeyMatch matchKey(const DoubleArray& trie, const char* key, MatchMode mode) {
  const TrieView cells = trie.view();
  const InnerString text = innerKey(cells, key);
  const unsigned char* const start = text.rest();
  switch (mode) {
    case MatchMode::kExact: {
      const int id = findExact(cells, start);
      return {id, id == 0 ? 0 : text.keyLength()};
    }
    case MatchMode::kAnyByte:
      return findLongestPrefix(cells, start,
                               [](const unsigned char*) { return true; });
    case MatchMode::kEdge:
      break;
  }
  const auto atEdge = [start](const unsigned char* next) {
    return kEdges[*next] || *next == InnerString::TERM_CHAR ||
           (next > start && kEdges[next[-1]]);
  };
  return findLongestPrefix(cells, start, atEdge);
}

std::string normalisedKey(const DoubleArray& trie, const char* key) {
  const InnerString text = innerKey(trie.view(), key);
  return {reinterpret_cast<const char*>(text.rest()), text.keyLength()};
}

bool endsAtEdge(std::string_view stored, std::string_view asked) {
  return stored.size() == asked.size() || isEdge(asked[stored.size()]) ||
         (!stored.empty() && isEdge(stored.back()));
}

}  // namespace urldb
