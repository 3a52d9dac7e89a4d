#ifndef URLDB_BENCH_QUERIES_H_
#define URLDB_BENCH_QUERIES_H_

#include <cstddef>
#include <string>
#include <vector>

#include "bench/keys.h"
#include "bench/text_list.h"

namespace urldb {

// What is looked up, in random order, with the ID that answers it (0 for a
// miss).
//   exactHit    every stored key
//   exactMiss   strangers, in the three forms of a key, and the keys of the
//               real URLs
//   prefixHit   a page on every stored host, on every second one below "www.",
//               and those real URLs that have an answer
//   prefixMiss  a page on every stranger, and the other real URLs
// A stranger is a host that is not stored, neither it nor what it lies below,
// made of real labels: the outermost one of one stored host before the rest of
// another. Pages have paths and queries of the real URLs.
struct Queries {
  TextList exactHit;
  TextList exactMiss;
  TextList prefixHit;
  TextList prefixMiss;
  std::size_t urls = 0;          // real ones that have a key
  std::size_t answeredUrls = 0;  // by a prefix
};

Queries makeQueries(const TextList& keys, const std::vector<std::string>& urls);

}  // namespace urldb

#endif  // URLDB_BENCH_QUERIES_H_
