#ifndef URLDB_BENCH_BENCHES_H_
#define URLDB_BENCH_BENCHES_H_

#include <time.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/datrie_peer.h"
#include "bench/keys.h"
#include "bench/own_tries.h"
#include "bench/peers.h"
#include "bench/queries.h"
#include "bench/text_list.h"

namespace urldb {

// Registers BM_Build/ORDER/CONTENDER: from nothing to all keys. Every 97th
// answer is checked behind it, out of the time.
void registerBuildBenches(const KeySet& set);

// What is searched: every contender holds all keys, added in list order. The
// project's own two have been written to files and read back, as a lookup
// process has them.
struct Contenders {
  explicit Contenders(const KeySet& set)
      : trie(set), database(set), flatHashMap(set), marisa(set), tinycdb(set) {}

  TriePeer trie;
  DatabasePeer database;
  FlatHashMapPeer flatHashMap;
  MarisaPeer marisa;
  TinycdbPeer tinycdb;
  std::unique_ptr<DatriePeer> datrie;  // null when it does not take part
};

// Registers BM_Search/LOOKUP/CONTENDER: one iteration is one lookup, and every
// answer is compared with the right one.
void registerSearchBenches(const Queries& queries, Contenders* contenders);

// Registers BM_Open/FILE/CONTENDER: a file made ready for lookups, against
// reading it with one read() and reversing the bytes of all its words.
void registerOpenBenches(const std::string& triePath,
                         const std::string& databasePath);

template <class Peer>
void addAll(Peer* peer, const TextList& keys) {
  for (std::size_t i = 0; i < keys.size(); ++i) peer->add(keys[i]);
  peer->finish();
}

// Ends the program when `found` is not the answer to `query`.
inline void checkAnswer(const char* contender, const TextList::Item& query,
                        int found) {
  if (found == query.id) return;
  std::fprintf(stderr, "%s: %s gives %d instead of %d\n", contender, query.text,
               found, query.id);
  std::abort();
}

// Nanoseconds of processor time that this thread has used: the clock of all
// figures.
inline double threadNanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e9 +
         static_cast<double>(now.tv_nsec);
}

}  // namespace urldb

#endif  // URLDB_BENCH_BENCHES_H_
