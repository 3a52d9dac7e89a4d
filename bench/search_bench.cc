#include <benchmark/benchmark.h>

#include <string>

#include "bench/benches.h"

namespace urldb {
namespace {

template <class Find>
void registerSearch(const std::string& lookup, const char* contender,
                    const TextList& queries, Find find) {
  const std::string name = "BM_Search/" + lookup + '/' + contender;
  benchmark::RegisterBenchmark(name.c_str(), [contender, &queries,
                                              find](benchmark::State& state) {
    std::size_t next = 0;
    for (auto unused : state) {
      const TextList::Item query = queries[next];
      if (++next == queries.size()) next = 0;
      checkAnswer(contender, query, find(query));
    }
  })->Iterations(static_cast<int64_t>(queries.size()));
}

// The two lookups of a peer as functions of a query.
template <class Peer>
auto exactOf(Peer* peer) {
  return [peer](const TextList::Item& query) { return peer->exact(query); };
}
template <class Peer>
auto longestPrefixOf(Peer* peer) {
  return [peer](const TextList::Item& query) {
    return peer->longestPrefix(query);
  };
}

}  // namespace

void registerSearchBenches(const Queries& queries, Contenders* contenders) {
  Contenders& all = *contenders;
  const std::pair<const char*, const TextList*> exact[] = {
      {"exact_hit", &queries.exactHit}, {"exact_miss", &queries.exactMiss}};
  for (const auto& [lookup, list] : exact) {
    registerSearch(lookup, "double_array", *list, exactOf(&all.trie));
    registerSearch(lookup, "urldb", *list, exactOf(&all.database));
    registerSearch(lookup, "flat_hash_map", *list, exactOf(&all.flatHashMap));
    registerSearch(lookup, "marisa", *list, exactOf(&all.marisa));
    registerSearch(lookup, "tinycdb", *list, exactOf(&all.tinycdb));
    if (all.datrie)
      registerSearch(lookup, "libdatrie", *list, exactOf(all.datrie.get()));
  }
  const std::pair<const char*, const TextList*> prefix[] = {
      {"prefix_hit", &queries.prefixHit}, {"prefix_miss", &queries.prefixMiss}};
  for (const auto& [lookup, list] : prefix) {
    registerSearch(lookup, "double_array", *list, longestPrefixOf(&all.trie));
    registerSearch(lookup, "edge_aware", *list,
                   [trie = &all.trie](const TextList::Item& query) {
                     return trie->longestAtEdge(query);
                   });
    registerSearch(lookup, "urldb", *list, longestPrefixOf(&all.database));
    registerSearch(lookup, "flat_hash_map", *list,
                   longestPrefixOf(&all.flatHashMap));
    registerSearch(lookup, "marisa", *list, longestPrefixOf(&all.marisa));
    registerSearch(lookup, "tinycdb", *list, longestPrefixOf(&all.tinycdb));
    if (all.datrie) {
      registerSearch(lookup, "libdatrie", *list,
                     longestPrefixOf(all.datrie.get()));
    }
  }
}

}  // namespace urldb
