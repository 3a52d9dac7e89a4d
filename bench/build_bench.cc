#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "bench/benches.h"

namespace urldb {
namespace {

template <class Peer>
void registerBuild(const std::string& order, const char* contender,
                   const KeySet& set,
                   const std::shared_ptr<const TextList>& keys) {
  const std::string name = "BM_Build/" + order + '/' + contender;
  benchmark::RegisterBenchmark(name.c_str(), [contender, &set,
                                              keys](benchmark::State& state) {
    for (auto unused : state) {
      auto peer = std::make_unique<Peer>(set);
      addAll(peer.get(), *keys);
      state.PauseTiming();
      for (std::size_t i = 0; i < keys->size(); i += 97)
        checkAnswer(contender, (*keys)[i], peer->exact((*keys)[i]));
      peer.reset();
      state.ResumeTiming();
    }
  })->Iterations(1);
}

}  // namespace

void registerBuildBenches(const KeySet& set) {
  const std::pair<const char*, Order> orders[] = {
      {"list_order", Order::kList},
      {"sorted_order", Order::kSorted},
      {"random_order", Order::kRandom}};
  for (const auto& [name, order] : orders) {
    const auto keys =
        std::make_shared<const TextList>(arranged(set.keys, order));
    registerBuild<FlatHashMapPeer>(name, "flat_hash_map", set, keys);
    registerBuild<TriePeer>(name, "double_array", set, keys);
    registerBuild<DatabasePeer>(name, "urldb", set, keys);
    registerBuild<MarisaPeer>(name, "marisa", set, keys);
    registerBuild<TinycdbPeer>(name, "tinycdb", set, keys);
  }
}

}  // namespace urldb
